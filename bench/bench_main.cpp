// cblxml-bench: XML PARSE against the raw parser, per document shape and
// size, in one run. It measures and prints; it never fails a build.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <limits>
#include <malloc.h>
#include <string>
#include <thread>
#include <vector>

#include "corpus.h"
#include "memory_probe.h"
#include "raw_parse.h"
#include "xml_parse_run.h"

namespace cblxml_bench {
namespace {

constexpr double kMiB = 1024.0 * 1024.0;

// The goals the figures are read against (informational only).
constexpr double kMinThroughputShare = 0.6;       // of the raw parse
constexpr double kMemoryPerDocument = 4.0;        // times the document ...
constexpr double kMemoryAllowance = 16.0 * kMiB;  // ... plus this
constexpr double kLinearSlack = 1.2;              // growth above size ratio x this

struct Options {
    std::vector<size_t> sizesMiB{1, 10};
    int repeat = 3;
    bool memory = true;
    bool wallClock = false;
    bool runRaw = true;    // path (a)
    bool runParse = true;  // path (b)
    std::string onlyShape;
    std::string dumpDirectory;
};

struct Row {
    const char *shape;
    size_t sizeMiB;
    size_t bytes;
    uint64_t events;
    double rawSeconds;
    double parseSeconds;
    MemoryUse memory;
    bool clean;
};

void usage()
{
    std::puts("usage: cblxml-bench [--large | --sizes LIST] [--repeat N] [--shape NAME]\n"
              "                    [--only raw|parse] [--wall] [--no-memory] [--dump DIR]\n"
              "  --large      sizes 1,10,100: add the 100 MB documents\n"
              "  --sizes LIST document sizes in MB, comma separated (default 1,10)\n"
              "  --repeat N   best of N timed runs per measurement (default 3)\n"
              "  --shape NAME only this shape: records, references, deep, lines, text,\n"
              "               ebcdic, national\n"
              "  --only PATH  time one path only (for profiling); ratios show as 0 or inf\n"
              "  --wall       time by the wall clock instead of processor time\n"
              "  --no-memory  skip the peak-memory runs\n"
              "  --dump DIR   write the documents to DIR/<shape>-<size>mb.xml and stop");
}

// "1,10,100" -> {1, 10, 100}; empty when any item is not a positive number.
std::vector<size_t> size_list(const char *text)
{
    std::vector<size_t> sizes;
    const char *p = text;
    while (*p != '\0') {
        char *end = nullptr;
        const unsigned long value = std::strtoul(p, &end, 10);
        if (end == p || value == 0 || (*end != ',' && *end != '\0'))
            return {};
        sizes.push_back(value);
        p = *end == ',' ? end + 1 : end;
    }
    return sizes;
}

bool parse_options(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--large") {
            options.sizesMiB = {1, 10, 100};
        } else if (arg == "--sizes" && hasValue) {
            options.sizesMiB = size_list(argv[++i]);
            if (options.sizesMiB.empty()) {
                usage();
                return false;
            }
        } else if (arg == "--repeat" && hasValue) {
            options.repeat = std::max(1, std::atoi(argv[++i]));
        } else if (arg == "--shape" && hasValue) {
            options.onlyShape = argv[++i];
        } else if (arg == "--only" && hasValue) {
            const std::string path = argv[++i];
            options.runRaw = path == "raw";
            options.runParse = path == "parse";
            if (!options.runRaw && !options.runParse) {
                usage();
                return false;
            }
        } else if (arg == "--wall") {
            options.wallClock = true;
        } else if (arg == "--no-memory") {
            options.memory = false;
        } else if (arg == "--dump" && hasValue) {
            options.dumpDirectory = argv[++i];
        } else {
            usage();
            return false;
        }
    }
    return true;
}

// Seconds of processor time (user and system) of this single-threaded
// process, or of the wall clock when asked. Processor time is the default
// because a shared machine's other work stretches wall time unevenly.
double now_seconds(bool wall)
{
    timespec t{};
    clock_gettime(wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

template <typename Work>
double best_seconds(const Options &options, Work work)
{
    double best = 0;
    for (int i = 0; i < options.repeat; ++i) {
        const double start = now_seconds(options.wallClock);
        work();
        const double took = now_seconds(options.wallClock) - start;
        if (i == 0 || took < best)
            best = took;
    }
    return best;
}

Row measure(const ShapeInfo &shape, size_t sizeMiB, const Options &options)
{
    std::string document = make_document(shape.shape, sizeMiB * static_cast<size_t>(kMiB));
    // The program's receiving item: allocated once, before any measurement,
    // as working storage is.
    std::vector<char> textArea(document.size());
    Row row{shape.name, sizeMiB, document.size(), 0, 0, 0, {}, true};

    if (options.memory && options.runParse)
        row.memory = measure_memory([&] { xml_parse(document, textArea, shape.flags); });

    bool rawClean = true;
    if (options.runRaw)
        row.rawSeconds = best_seconds(options, [&] { rawClean = raw_parse(document); });
    ParseTally tally;
    if (options.runParse)
        row.parseSeconds =
            best_seconds(options, [&] { tally = xml_parse(document, textArea, shape.flags); });
    row.events = tally.events;
    row.clean = rawClean && tally.clean;
    return row;
}

std::string cpu_model()
{
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line)) {
        if (line.rfind("model name", 0) == 0) {
            const size_t colon = line.find(':');
            return colon == std::string::npos ? line : line.substr(colon + 2);
        }
    }
    return "unknown CPU";
}

std::string ratio_text(double value, bool shown)
{
    if (!shown)
        return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

std::string goals_missed(const Row &row, const Row *smaller)
{
    std::string missed;
    auto add = [&](const char *what) { missed += missed.empty() ? what : std::string(",") + what; };
    if (row.rawSeconds / row.parseSeconds < kMinThroughputShare)
        add("speed");
    if (row.memory.measured &&
        row.memory.rssGrowth > kMemoryPerDocument * row.bytes + kMemoryAllowance)
        add("memory");
    if (smaller != nullptr) {
        const double sizeRatio = static_cast<double>(row.bytes) / smaller->bytes;
        if (row.parseSeconds / smaller->parseSeconds > sizeRatio * kLinearSlack)
            add("linear");
    }
    if (!row.clean)
        add("PARSE-ERROR");
    return missed.empty() ? "met" : missed;
}

// The one-minute load average: a busy shared machine slows even processor
// time (caches and memory bandwidth are shared), so the table says so.
std::string load_average()
{
    std::ifstream loadavg("/proc/loadavg");
    std::string oneMinute;
    loadavg >> oneMinute;
    return oneMinute.empty() ? "?" : oneMinute;
}

void print_header(const Options &options)
{
    std::printf("cblxml-bench: %s, %u hardware threads, load %s; best of %d by %s; "
                "MB = 2^20 bytes\n",
                cpu_model().c_str(), std::thread::hardware_concurrency(), load_average().c_str(),
                options.repeat, options.wallClock ? "wall clock" : "processor time");
    std::printf("%-10s %4s %9s %8s %7s %8s %7s %6s %8s %7s %6s %6s  %s\n", "shape", "MB", "events",
                "a ms", "a MB/s", "b ms", "b MB/s", "b/a", "heap/doc", "rss/doc", "a grow",
                "b grow", "goals");
}

void print_row(const Row &row, const Row *smaller)
{
    const double mib = row.bytes / kMiB;
    const bool haveMemory = row.memory.measured;
    const double sizeRatio =
        smaller != nullptr ? static_cast<double>(row.bytes) / smaller->bytes : 0;
    // Growth is normalised to the exact byte sizes, then scaled to the
    // nominal step, so that a linear parse shows the step (10.0) exactly.
    const double nominal =
        smaller != nullptr ? static_cast<double>(row.sizeMiB) / smaller->sizeMiB : 0;
    auto growth = [&](double now, double before) { return now / before / sizeRatio * nominal; };
    std::printf(
        "%-10s %4zu %9llu %8.1f %7.1f %8.1f %7.1f %6.2f %8s %7s %6s %6s  %s\n", row.shape,
        row.sizeMiB, static_cast<unsigned long long>(row.events), row.rawSeconds * 1e3,
        mib / row.rawSeconds, row.parseSeconds * 1e3, mib / row.parseSeconds,
        row.parseSeconds / row.rawSeconds,
        ratio_text(static_cast<double>(row.memory.heapGrowth) / row.bytes,
                   haveMemory && row.memory.heapCounted)
            .c_str(),
        ratio_text(static_cast<double>(row.memory.rssGrowth) / row.bytes, haveMemory).c_str(),
        ratio_text(smaller ? growth(row.rawSeconds, smaller->rawSeconds) : 0, smaller).c_str(),
        ratio_text(smaller ? growth(row.parseSeconds, smaller->parseSeconds) : 0, smaller).c_str(),
        goals_missed(row, smaller).c_str());
    std::fflush(stdout);
}

int dump(const Options &options)
{
    for (const ShapeInfo &shape : all_shapes()) {
        if (!options.onlyShape.empty() && options.onlyShape != shape.name)
            continue;
        for (size_t sizeMiB : options.sizesMiB) {
            const std::string path =
                options.dumpDirectory + "/" + shape.name + "-" + std::to_string(sizeMiB) + "mb.xml";
            const std::string document =
                make_document(shape.shape, sizeMiB * static_cast<size_t>(kMiB));
            std::ofstream out(path, std::ios::binary);
            out.write(document.data(), static_cast<std::streamsize>(document.size()));
            if (!out) {
                std::fprintf(stderr, "cannot write %s\n", path.c_str());
                return 1;
            }
            std::printf("%s\n", path.c_str());
        }
    }
    return 0;
}

// Holds the allocator in one steady state for the whole run: every block
// comes from the main heap and freed memory stays with the process. Left to
// itself the allocator maps large blocks afresh or keeps them depending on
// what was freed before (its thresholds move), so a row's speed would depend
// on the rows before it; fresh pages are costly on virtual machines. The
// figures are those of a program that parses one document after another.
// The memory probe hands free pages back before it measures.
void pin_allocator()
{
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

int run(const Options &options)
{
    pin_allocator();
    if (!init_raw_parser()) {
        std::fputs("the parser library did not initialise\n", stderr);
        return 1;
    }
    // One untimed pass of each path first: the parser builds its tables
    // and the heap reaches its working size before any row is timed.
    {
        std::string warmUp = make_document(Shape::Records, static_cast<size_t>(kMiB));
        std::vector<char> textArea(warmUp.size());
        raw_parse(warmUp);
        xml_parse(warmUp, textArea);
    }
    print_header(options);
    bool anyShape = false;
    for (const ShapeInfo &shape : all_shapes()) {
        if (!options.onlyShape.empty() && options.onlyShape != shape.name)
            continue;
        anyShape = true;
        std::vector<Row> rows;
        for (size_t sizeMiB : options.sizesMiB) {
            rows.push_back(measure(shape, sizeMiB, options));
            print_row(rows.back(), rows.size() > 1 ? &rows[rows.size() - 2] : nullptr);
        }
    }
    if (!anyShape) {
        usage();
        return 2;
    }
    std::printf("goals: b/a <= %.2f (throughput >= %.1f of raw); rss <= %.0f x doc + %.0f MB; "
                "growth <= %.0f%% over linear\n",
                1.0 / kMinThroughputShare, kMinThroughputShare, kMemoryPerDocument,
                kMemoryAllowance / kMiB, (kLinearSlack - 1.0) * 100.0);
    return 0;
}

}  // namespace
}  // namespace cblxml_bench

int main(int argc, char **argv)
{
    cblxml_bench::Options options;
    if (!cblxml_bench::parse_options(argc, argv, options))
        return 2;
    if (!options.dumpDirectory.empty())
        return cblxml_bench::dump(options);
    return cblxml_bench::run(options);
}
