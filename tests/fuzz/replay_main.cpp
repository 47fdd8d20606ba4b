// Replays fuzz inputs without the fuzzing engine: every file named on the
// command line, or every file in a named directory, goes once through the
// target. Lets any build (gcc included) run the committed corpora as tests.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

int replay_file(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
        return 1;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    return 0;
}

}  // namespace

int main(int argc, char **argv)
{
    int failures = 0;
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            std::vector<std::filesystem::path> files;
            for (const auto &entry : std::filesystem::directory_iterator(path))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
            std::sort(files.begin(), files.end());
            for (const auto &file : files) {
                failures += replay_file(file);
                ++count;
            }
        } else {
            failures += replay_file(path);
            ++count;
        }
    }
    std::printf("replay: %zu inputs\n", count);
    return failures == 0 && count > 0 ? 0 : 1;
}
