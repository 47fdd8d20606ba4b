// cblxml-bench-write: WRITE of many records into one document, then
// write-document with its internal DTD, to a file; beside it, where the
// build found it, pugixml building the same tree and saving it to a file.
// Prints the MB/s of XML produced, the peak heap per byte written and the
// 1 M / 100 k time ratio (linear growth gives about 10). Best of three runs
// per size. It measures and prints; it never fails a build.
//
//   cblxml-bench-write [path] [--no-memory]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#ifdef CBLXML_BENCH_PUGIXML
#include <pugixml.hpp>
#endif

#include "memory_probe.h"
#include "record_layout.h"

namespace {

using cblxml_bench::measure_memory;
using cblxml_bench::MemoryUse;
using Clock = std::chrono::steady_clock;

// An attribute, elementary items of several usages and a table.
const char *kLayout = R"(
01 orders
  05 order
    10 id attrs pic=9(7)
    10 name pic=X(12)
    10 amount pic=S9(7)V99 usage=packed
    10 qty pic=S9(4) usage=comp
    10 line occurs=3
      15 sku pic=X(4)
      15 price pic=9(3)V9 usage=comp5)";

struct Run {
    double write_seconds;  // the WRITEs (pugixml: building the tree)
    double doc_seconds;    // write-document (pugixml: saving it)
    int64_t bytes;
};

int64_t file_size(const std::string &path)
{
    FILE *f = std::fopen(path.c_str(), "rb");
    if (f == nullptr)
        return 0;
    std::fseek(f, 0, SEEK_END);
    const long size = std::ftell(f);
    std::fclose(f);
    return size;
}

Run run_library(uint32_t records, const std::string &path)
{
    cblxml::layout::File file({kLayout});
    file.use_file(path);
    file.fcb().doctype_name = "orders";
    file.fcb().doctype_len = 6;
    file.fcb().key_item = file.record(1).item("order");
    if (file.open(XMLIO_OUTPUT) != 0) {
        std::fprintf(stderr, "cannot open %s\n", path.c_str());
        std::exit(1);
    }
    cblxml::layout::Record &record = file.record(1);
    record.set("name", "ACME & SONS");
    record.set("amount", std::string("\x00\x12\x34\x56\x7C", 5));
    record.set("qty", std::string("\x00\x2A", 2));
    for (uint32_t k = 1; k <= 3; ++k) {
        record.set("line.sku", "SK" + std::to_string(k), {k});
        record.set("line.price", std::string("\x39\x30\x00\x00", 4), {k});
    }
    const auto start = Clock::now();
    for (uint32_t i = 0; i < records; ++i) {
        char id[16];
        std::snprintf(id, sizeof id, "%07u", i % 10000000u);
        record.set("id", id);
        if (file.call(XMLIO_OP_WRITE_KEEP) != 0) {
            std::fprintf(stderr, "WRITE failed at record %u\n", i);
            std::exit(1);
        }
    }
    const auto written = Clock::now();
    const int32_t status = file.call(XMLIO_OP_WRITE_DOC);
    const auto done = Clock::now();
    file.close();
    if (status <= 0) {
        std::fprintf(stderr, "write-document failed: %d\n", status);
        std::exit(1);
    }
    return {std::chrono::duration<double>(written - start).count(),
            std::chrono::duration<double>(done - written).count(), file_size(path)};
}

#ifdef CBLXML_BENCH_PUGIXML
// The same document as a pugixml tree: built element by element with the
// values as text, then saved with the same indentation.
Run run_pugixml(uint32_t records, const std::string &path)
{
    const auto start = Clock::now();
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("orders");
    for (uint32_t i = 0; i < records; ++i) {
        char id[16];
        std::snprintf(id, sizeof id, "%07u", i % 10000000u);
        pugi::xml_node order = root.append_child("order");
        order.append_attribute("id").set_value(id);
        order.append_child("name").text().set("ACME & SONS");
        order.append_child("amount").text().set("1234567.");
        order.append_child("qty").text().set("42");
        for (uint32_t k = 1; k <= 3; ++k) {
            pugi::xml_node line = order.append_child("line");
            line.append_child("sku").text().set(("SK" + std::to_string(k)).c_str());
            line.append_child("price").text().set("1234.5");
        }
    }
    const auto built = Clock::now();
    if (!doc.save_file(path.c_str(), "    ")) {
        std::fprintf(stderr, "pugixml could not save %s\n", path.c_str());
        std::exit(1);
    }
    const auto done = Clock::now();
    return {std::chrono::duration<double>(built - start).count(),
            std::chrono::duration<double>(done - built).count(), file_size(path)};
}
#endif

template <typename Runner>
Run best_of_three(Runner runner, uint32_t records, const std::string &path)
{
    Run best_run{1e30, 0, 0};
    for (int i = 0; i < 3; ++i) {
        const Run r = runner(records, path);
        if (r.write_seconds + r.doc_seconds < best_run.write_seconds + best_run.doc_seconds)
            best_run = r;
    }
    return best_run;
}

void print(const char *who, const char *label, const Run &r, const MemoryUse &use)
{
    const double mb = 1024.0 * 1024.0;
    const double total = r.write_seconds + r.doc_seconds;
    std::printf("%-8s %-6s %8.1f %9.3f %9.3f %9.1f %9.2f\n", who, label, r.bytes / mb,
                r.write_seconds, r.doc_seconds, r.bytes / mb / total,
                use.heapCounted && r.bytes > 0 ? static_cast<double>(use.heapGrowth) / r.bytes
                                               : 0.0);
}

}  // namespace

int main(int argc, char **argv)
{
    std::string path = "/tmp/cblxml-bench-write.xml";
    bool memory = true;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--no-memory") == 0)
            memory = false;
        else
            path = argv[i];
    }
    std::printf("cblxml-bench-write: best of 3 by wall time; MB = 2^20 bytes; "
                "heap/byte = peak heap growth per byte written\n");
    std::printf("%-8s %-6s %8s %9s %9s %9s %9s\n", "who", "recs", "MB", "build s", "save s", "MB/s",
                "heap/byte");
    double totals[2] = {0, 0};
    int at = 0;
    for (const auto &[label, records] : {std::pair{"100 k", 100000u}, std::pair{"1 M", 1000000u}}) {
        const Run mine = best_of_three(run_library, records, path);
        MemoryUse use;
        if (memory)
            use = measure_memory([&] { run_library(records, path); });
        print("cblxml", label, mine, use);
        totals[at++] = mine.write_seconds + mine.doc_seconds;
#ifdef CBLXML_BENCH_PUGIXML
        const Run peer = best_of_three(run_pugixml, records, path);
        MemoryUse peer_use;
        if (memory)
            peer_use = measure_memory([&] { run_pugixml(records, path); });
        print("pugixml", label, peer, peer_use);
        std::printf("%-8s %-6s MB/s ratio cblxml/pugixml %.2f, heap ratio %.2f\n", "", label,
                    (mine.bytes / (mine.write_seconds + mine.doc_seconds)) /
                        (peer.bytes / (peer.write_seconds + peer.doc_seconds)),
                    peer_use.heapGrowth > 0
                        ? static_cast<double>(use.heapGrowth) / peer_use.heapGrowth
                        : 0.0);
#endif
    }
    std::printf("cblxml 1 M / 100 k time ratio: %.2f (linear: about 10)\n", totals[1] / totals[0]);
    std::remove(path.c_str());
    return 0;
}
