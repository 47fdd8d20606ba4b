// cblxml-bench-write: WRITE of many records into one document, then
// write-document with its internal DTD, to a file. Prints the MB/s of XML
// produced and the 1 M / 100 k time ratio (linear growth gives about 10).
// Best of three runs per size. It measures and prints; it never fails a
// build.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "record_layout.h"

namespace {

const char *kLayout = R"(
01 orders
  05 order
    10 id attrs pic=9(7)
    10 name pic=X(12)
    10 amount pic=S9(7)V99 usage=packed
    10 qty pic=S9(4) usage=comp)";

struct Run {
    double write_seconds;  // the WRITEs
    double doc_seconds;    // write-document
    int64_t bytes;
};

Run run(uint32_t records, const std::string &path)
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
    using Clock = std::chrono::steady_clock;
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
            std::chrono::duration<double>(done - written).count(), status};
}

}  // namespace

int main(int argc, char **argv)
{
    const std::string path = argc > 1 ? argv[1] : "/tmp/cblxml-bench-write.xml";
    // Best of three per size: the machine may be shared.
    auto best = [&path](uint32_t records) {
        Run best_run{1e30, 0, 0};
        for (int i = 0; i < 3; ++i) {
            const Run r = run(records, path);
            if (r.write_seconds + r.doc_seconds < best_run.write_seconds + best_run.doc_seconds)
                best_run = r;
        }
        return best_run;
    };
    const Run small = best(100000);
    const Run large = best(1000000);
    const double mb = 1024.0 * 1024.0;
    for (const auto &[label, r] : {std::pair{"100 k", small}, std::pair{"1 M", large}}) {
        const double total = r.write_seconds + r.doc_seconds;
        std::printf("%-6s records: %7.1f MB of XML; WRITEs %.3f s, write-document %.3f s; "
                    "%.1f MB/s overall, %.1f MB/s write-document\n",
                    label, r.bytes / mb, r.write_seconds, r.doc_seconds, r.bytes / mb / total,
                    r.bytes / mb / r.doc_seconds);
    }
    std::printf("1 M / 100 k time ratio: %.2f (linear: about 10)\n",
                (large.write_seconds + large.doc_seconds) /
                    (small.write_seconds + small.doc_seconds));
    std::remove(path.c_str());
    return 0;
}
