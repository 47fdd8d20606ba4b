// cblxml-bench-read: READ and READ NEXT over every record of a generated
// record-shaped document, against the raw parse of the same document. It
// measures and prints; it never fails a build.
//
//   cblxml-bench-read [--sizes 10,100] [--repeat N] [--no-memory]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "corpus.h"
#include "memory_probe.h"
#include "raw_parse.h"
#include "record_layout.h"

namespace cblxml_bench {
namespace {

constexpr double kMiB = 1024.0 * 1024.0;

// The record of the "records" shape, every field mapped; amounts through
// the data map into a numeric item.
const char *kLayout = R"(01 batch
  05 record
    10 id attrs pic=9(8)
    10 kind attrs pic=X(8)
    10 status attrs pic=X(6)
    10 name pic=X(30)
    10 city pic=X(20)
    10 amount
      15 currency attrs pic=X(3)
      15 - pic=9(7)V99
    10 note pic=X(60))";

double cpu_seconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// OPEN, READ, READ NEXT to the end of file, CLOSE; the records read, or 0
// when a status was not the expected one.
size_t read_all(const std::string &document)
{
    cblxml::layout::File file{kLayout};
    file.use_document(document);
    file.fcb().key_item = file.record(1).item("record");
    if (file.open(XMLIO_INPUT) != 0 || file.call(XMLIO_OP_READ) != 1)
        return 0;
    size_t records = 1;
    int32_t status;
    while ((status = file.call(XMLIO_OP_READ_NEXT)) == 0)
        ++records;
    file.close();
    return status == XMLIO_ST_NO_CURRENT ? records : 0;
}

template <typename Work>
double best_seconds(int repeat, Work work)
{
    double best = 0;
    for (int i = 0; i < repeat; ++i) {
        const double start = cpu_seconds();
        work();
        const double took = cpu_seconds() - start;
        if (i == 0 || took < best)
            best = took;
    }
    return best;
}

std::vector<size_t> size_list(const char *text)
{
    std::vector<size_t> sizes;
    for (const char *p = text; *p != '\0';) {
        char *end = nullptr;
        const unsigned long value = std::strtoul(p, &end, 10);
        if (end == p || value == 0)
            return {};
        sizes.push_back(value);
        p = *end == ',' ? end + 1 : end;
    }
    return sizes;
}

}  // namespace
}  // namespace cblxml_bench

int main(int argc, char **argv)
{
    using namespace cblxml_bench;
    std::vector<size_t> sizes{10, 100};
    int repeat = 2;
    bool memory = true;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--sizes" && i + 1 < argc) {
            sizes = size_list(argv[++i]);
        } else if (arg == "--repeat" && i + 1 < argc) {
            repeat = std::atoi(argv[++i]) > 0 ? std::atoi(argv[i]) : 1;
        } else if (arg == "--no-memory") {
            memory = false;
        } else {
            std::puts("usage: cblxml-bench-read [--sizes 10,100] [--repeat N] [--no-memory]");
            return 2;
        }
    }
    if (sizes.empty() || !init_raw_parser())
        return 2;
    std::printf("cblxml-bench-read: records shape, best of %d by processor time; MB = 2^20 bytes\n",
                repeat);
    std::printf("%5s %9s %9s %9s %7s %9s %8s %8s\n", "MB", "records", "raw ms", "read ms",
                "read/raw", "read MB/s", "heap/doc", "rss/doc");
    double previous_seconds = 0;
    size_t previous_bytes = 0;
    for (const size_t size : sizes) {
        const std::string document =
            make_document(Shape::Records, size * static_cast<size_t>(kMiB));
        size_t records = 0;
        const double raw = best_seconds(repeat, [&] { raw_parse(document); });
        const double read = best_seconds(repeat, [&] { records = read_all(document); });
        MemoryUse use;
        if (memory)
            use = measure_memory([&] { read_all(document); });
        const double bytes = static_cast<double>(document.size());
        std::printf("%5zu %9zu %9.1f %9.1f %7.2f %9.1f %8.2f %8.2f\n", size, records, raw * 1e3,
                    read * 1e3, read / raw, bytes / kMiB / read,
                    use.heapCounted ? static_cast<double>(use.heapGrowth) / bytes : 0.0,
                    use.measured ? static_cast<double>(use.rssGrowth) / bytes : 0.0);
        if (previous_bytes != 0)
            std::printf("      time ratio %zu MB / previous: %.2f (size ratio %.2f)\n", size,
                        read / previous_seconds, bytes / static_cast<double>(previous_bytes));
        previous_seconds = read;
        previous_bytes = document.size();
    }
    return 0;
}
