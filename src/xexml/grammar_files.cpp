#include "xexml/grammar_files.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/platform.h"

namespace cblxml {
namespace {

// The canonical form of an existing path; empty when it cannot be resolved.
std::string canonical(const std::string &path)
{
    char *resolved = realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return {};
    std::string out = resolved;
    std::free(resolved);
    return out;
}

std::string current_directory()
{
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string();
}

int hex_value(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// %XX escapes of a URL path decoded; a NUL byte makes the path unusable.
bool percent_decode(const std::string &in, std::string &out)
{
    out.clear();
    for (size_t i = 0; i < in.size(); ++i) {
        if (in[i] == '%' && i + 2 < in.size()) {
            const int high = hex_value(in[i + 1]);
            const int low = hex_value(in[i + 2]);
            if (high >= 0 && low >= 0) {
                const char c = static_cast<char>(high * 16 + low);
                if (c == '\0')
                    return false;
                out += c;
                i += 2;
                continue;
            }
        }
        out += in[i];
    }
    return true;
}

// Length of a URL scheme and its colon at the start of `id` ("file:" gives
// 5), or 0 when `id` does not start with one. One letter before the colon is
// not taken for a scheme, so that nothing mistakes a drive letter for one.
size_t scheme_length(const std::string &id)
{
    size_t i = 0;
    while (i < id.size() && (std::isalnum(static_cast<unsigned char>(id[i])) || id[i] == '+' ||
                             id[i] == '-' || id[i] == '.'))
        ++i;
    if (i < 2 || i >= id.size() || id[i] != ':' || !std::isalpha(static_cast<unsigned char>(id[0])))
        return 0;
    return i + 1;
}

bool is_file_scheme(const std::string &id, size_t length)
{
    return length == 5 && strncasecmp(id.c_str(), "file:", 5) == 0;
}

// The local path of a file: URL; empty when it names another host.
std::string file_url_path(const std::string &url)
{
    std::string rest = url.substr(5);
    if (rest.compare(0, 2, "//") == 0) {
        const size_t slash = rest.find('/', 2);
        const std::string host =
            rest.substr(2, slash == std::string::npos ? std::string::npos : slash - 2);
        if (!host.empty() && strcasecmp(host.c_str(), "localhost") != 0)
            return {};
        rest = slash == std::string::npos ? std::string() : rest.substr(slash);
    }
    std::string path;
    if (rest.empty() || !percent_decode(rest, path))
        return {};
    return path;
}

// The local form of an identifier: a path as written, or a file: URL's path.
// Empty for any other scheme.
std::string local_form(const std::string &id)
{
    const size_t scheme = scheme_length(id);
    if (scheme == 0)
        return id;
    return is_file_scheme(id, scheme) ? file_url_path(id) : std::string();
}

bool inside(const std::string &path, const std::string &directory)
{
    if (directory == "/")
        return path.size() > 1 && path[0] == '/';
    return path.size() > directory.size() && path.compare(0, directory.size(), directory) == 0 &&
           path[directory.size()] == '/';
}

}  // namespace

std::vector<std::string> grammar_directories()
{
    std::vector<std::string> out;
    const char *setting = platform::get_env("CBLXML_GRAMMAR_PATH");
    const std::string list = setting != nullptr ? setting : current_directory();
    size_t start = 0;
    while (start <= list.size()) {
        size_t end = list.find(':', start);
        if (end == std::string::npos)
            end = list.size();
        if (end > start) {
            std::string directory = canonical(list.substr(start, end - start));
            if (!directory.empty())
                out.push_back(std::move(directory));
        }
        start = end + 1;
    }
    return out;
}

std::string grammar_path(const std::string &systemId, const std::string &base)
{
    if (systemId.empty() || systemId.find('\0') != std::string::npos)
        return {};
    std::string path = local_form(systemId);
    if (path.empty() || path[0] == '/')
        return path;
    // Relative: beside the naming file when that is local, else in the
    // current directory (the document itself is held in memory).
    std::string directory;
    const std::string baseLocal = base.empty() ? std::string() : local_form(base);
    if (!baseLocal.empty() && baseLocal[0] == '/')
        directory = baseLocal.substr(0, baseLocal.rfind('/') + 1);
    else
        directory = current_directory() + "/";
    return directory + path;
}

bool read_grammar(const std::string &path, const std::vector<std::string> &directories,
                  GrammarFile &out)
{
    if (path.empty())
        return false;
    const std::string real = canonical(path);
    if (real.empty())
        return false;
    bool allowed = false;
    for (const std::string &directory : directories)
        allowed = allowed || inside(real, directory);
    if (!allowed)
        return false;

    struct stat info {};
    // Checked before opening so that a FIFO is never opened (an open for
    // reading would wait for a writer); checked again on the descriptor in
    // case the file was replaced in between.
    if (stat(real.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    const int fd = open(real.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (fd < 0)
        return false;
    bool ok = fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
              static_cast<uint64_t>(info.st_size) <= kGrammarMaxBytes;
    std::string bytes;
    if (ok) {
        bytes.resize(static_cast<size_t>(info.st_size));
        size_t done = 0;
        while (ok && done < bytes.size()) {
            const ssize_t n = read(fd, &bytes[done], bytes.size() - done);
            if (n < 0 && errno == EINTR)
                continue;
            ok = n > 0;
            if (ok)
                done += static_cast<size_t>(n);
        }
    }
    close(fd);
    if (!ok)
        return false;
    out.path = real;
    out.bytes = std::move(bytes);
    return true;
}

}  // namespace cblxml
