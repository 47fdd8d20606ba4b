// cblxml-bench-read: READ and READ NEXT over every record of generated
// documents of four shapes, against the raw parse of the same document and,
// where the build found it, pugixml's tree of it (loaded from a memory
// buffer). It measures and prints; it never fails a build.
//
//   cblxml-bench-read [--sizes 10,100] [--repeat N] [--no-memory] [--shape NAME]
//                     [--only-read]
//
// --only-read times READ and READ NEXT alone (for a profiler).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#ifdef CBLXML_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include "corpus.h"
#include "memory_probe.h"
#include "raw_parse.h"
#include "record_layout.h"

namespace cblxml_bench {
namespace {

constexpr double kMiB = 1024.0 * 1024.0;

// One record layout per shape, every field mapped; the key item is the
// element that READ NEXT walks. Amounts go through the data map into a
// numeric item.
struct ShapeLayout {
    Shape shape;
    const char *key;
    const char *layout;
};

const ShapeLayout kLayouts[] = {
    {Shape::Records, "record", R"(01 batch
  05 record
    10 id attrs pic=9(8)
    10 kind attrs pic=X(8)
    10 status attrs pic=X(6)
    10 name pic=X(30)
    10 city pic=X(20)
    10 amount
      15 currency attrs pic=X(3)
      15 - pic=9(7)V99
    10 note pic=X(60))"},
    {Shape::References, "para", R"(01 batch
  05 para
    10 title attrs pic=X(40)
    10 - pic=X(400))"},
    {Shape::Deep, "level", R"(01 batch
  05 level
    10 n attrs pic=9(3)
    10 - pic=X(10)
    10 level
      15 n attrs pic=9(3)
      15 - pic=X(10))"},
    {Shape::Lines, "v", R"(01 batch
  05 v pic=9(5)
  05 w
    10 k attrs pic=X(1)
    10 - pic=9(5))"},
};

double cpu_seconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// OPEN, READ, READ NEXT to the end of file, CLOSE; the records read, or 0
// when a status was not the expected one.
size_t read_all(const ShapeLayout &shape, const std::string &document)
{
    cblxml::layout::File file{shape.layout};
    file.use_document(document);
    file.fcb().key_item = file.record(1).item(shape.key);
    if (file.open(XMLIO_INPUT) != 0 || file.call(XMLIO_OP_READ) != 1)
        return 0;
    size_t records = 1;
    int32_t status;
    while ((status = file.call(XMLIO_OP_READ_NEXT)) == 0)
        ++records;
    file.close();
    return status == XMLIO_ST_NO_CURRENT ? records : 0;
}

// OPEN, READ, START at the record `from_end` records before the last, READ
// NEXT to the end of file, CLOSE; the records read after START, or 0 when a
// status was not the expected one.
size_t start_near_end(const ShapeLayout &shape, const std::string &document, size_t records)
{
    constexpr size_t from_end = 5;
    cblxml::layout::File file{shape.layout};
    file.use_document(document);
    file.fcb().key_item = file.record(1).item(shape.key);
    if (records <= from_end || file.open(XMLIO_INPUT) != 0 || file.call(XMLIO_OP_READ) != 1)
        return 0;
    // The occurrence counts the elements of the key's run, other elements
    // among them (the lines shape alternates two): the next one is tried
    // when the first lands on another element.
    file.fcb().key_occurrence = static_cast<uint32_t>(records - from_end);
    if (file.call(XMLIO_OP_START) != 0) {
        file.fcb().key_occurrence -= 1;
        if (file.call(XMLIO_OP_START) != 0)
            return 0;
    }
    size_t read = 0;
    int32_t status;
    while ((status = file.call(XMLIO_OP_READ_NEXT)) == 0)
        ++read;
    file.close();
    return status == XMLIO_ST_NO_CURRENT ? read : 0;
}

#ifdef CBLXML_BENCH_PUGIXML
// pugixml's whole tree of the document from a memory buffer (it copies the
// buffer, as the library copies the document), then every element visited.
size_t pugixml_tree(const std::string &document)
{
    pugi::xml_document tree;
    if (!tree.load_buffer(document.data(), document.size()))
        return 0;
    size_t elements = 0;
    for (pugi::xml_node n = tree.first_child(); n;) {
        elements += n.type() == pugi::node_element ? 1 : 0;
        if (n.first_child()) {
            n = n.first_child();
            continue;
        }
        while (n && !n.next_sibling())
            n = n.parent();
        if (n)
            n = n.next_sibling();
    }
    return elements;
}
#endif

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

const char *name_of(Shape shape)
{
    for (const ShapeInfo &info : all_shapes()) {
        if (info.shape == shape)
            return info.name;
    }
    return "?";
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
    bool memory = true, only_read = false;
    const char *only_shape = nullptr;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--sizes" && i + 1 < argc) {
            sizes = size_list(argv[++i]);
        } else if (arg == "--repeat" && i + 1 < argc) {
            repeat = std::atoi(argv[++i]) > 0 ? std::atoi(argv[i]) : 1;
        } else if (arg == "--no-memory") {
            memory = false;
        } else if (arg == "--shape" && i + 1 < argc) {
            only_shape = argv[++i];
        } else if (arg == "--only-read") {
            only_read = true;
        } else {
            std::puts("usage: cblxml-bench-read [--sizes 10,100] [--repeat N] [--no-memory] "
                      "[--shape NAME] [--only-read]");
            return 2;
        }
    }
    if (sizes.empty() || !init_raw_parser())
        return 2;
    std::printf("cblxml-bench-read: best of %d by processor time; MB = 2^20 bytes; "
                "bytes/doc = peak heap growth per document byte\n",
                repeat);
    std::printf("%-10s %4s %8s %8s %8s %8s %6s %8s %8s %8s %8s %6s %6s\n", "shape", "MB", "records",
                "raw ms", "read ms", "pugi ms", "raw/rd", "read MB/s", "read b/d", "pugi b/d",
                "start ms", "read x", "start x");
    for (const ShapeLayout &shape : kLayouts) {
        if (only_shape != nullptr && std::strcmp(only_shape, name_of(shape.shape)) != 0)
            continue;
        double previous_seconds = 0, previous_start = 0;
        for (const size_t size : sizes) {
            const std::string document =
                make_document(shape.shape, size * static_cast<size_t>(kMiB));
            size_t records = 0;
            if (only_read) {
                const double read =
                    best_seconds(repeat, [&] { records = read_all(shape, document); });
                std::printf("%-10s %4zu %8zu read %8.1f ms\n", name_of(shape.shape), size, records,
                            read * 1e3);
                continue;
            }
            const double raw = best_seconds(repeat, [&] { raw_parse(document); });
            const double read = best_seconds(repeat, [&] { records = read_all(shape, document); });
            size_t after_start = 0;
            const double start = best_seconds(
                repeat, [&] { after_start = start_near_end(shape, document, records); });
            double pugi = 0;
            MemoryUse use, pugi_use;
            if (memory)
                use = measure_memory([&] { read_all(shape, document); });
#ifdef CBLXML_BENCH_PUGIXML
            pugi = best_seconds(repeat, [&] { pugixml_tree(document); });
            if (memory)
                pugi_use = measure_memory([&] { pugixml_tree(document); });
#endif
            const double bytes = static_cast<double>(document.size());
            // The data item that holds the document is the program's own
            // storage, as the buffer pugixml copies from is its caller's: it
            // is left out. The library's copy of it is counted, as is
            // pugixml's.
            auto per_byte = [bytes](const MemoryUse &u, double item) {
                return u.heapCounted ? (static_cast<double>(u.heapGrowth) - item) / bytes : 0.0;
            };
            // Time over the previous size's time (linear: the size ratio).
            char growth[16] = "-", start_growth[16] = "-";
            if (previous_seconds > 0) {
                std::snprintf(growth, sizeof growth, "%.2f", read / previous_seconds);
                std::snprintf(start_growth, sizeof start_growth, "%.2f", start / previous_start);
            }
            std::printf(
                "%-10s %4zu %8zu %8.1f %8.1f %8.1f %6.2f %8.1f %8.2f %8.2f %8.1f %6s %6s%s\n",
                name_of(shape.shape), size, records, raw * 1e3, read * 1e3, pugi * 1e3, raw / read,
                bytes / kMiB / read, per_byte(use, bytes), per_byte(pugi_use, 0), start * 1e3,
                growth, start_growth, after_start == 0 ? " (START failed)" : "");
            previous_start = start;
            previous_seconds = read;
        }
    }
    return 0;
}
