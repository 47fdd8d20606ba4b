#include "corpus.h"

#include <cstdint>
#include <cstdio>

namespace cblxml_bench {
namespace {

// xorshift64: tiny, fast and the same on every platform.
class Random {
public:
    explicit Random(uint64_t seed) : state(seed) {}

    uint32_t below(uint32_t bound)
    {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<uint32_t>(state % bound);
    }

    template <size_t N>
    const char *pick(const char *const (&words)[N])
    {
        return words[below(static_cast<uint32_t>(N))];
    }

private:
    uint64_t state;
};

const char *const kWords[] = {"alpha", "ledger", "north", "invoice", "quarter", "balance",
                              "river", "sample", "delta", "account", "marble",  "orbit"};
const char *const kCities[] = {"Lisbon", "Oslo", "Graz", "Turku", "Porto", "Lyon", "Cork"};
const char *const kKinds[] = {"customer", "supplier", "employee", "partner"};
// Fragments that each hold at least one reference; the character references
// reach above Latin-1 and above U+FFFF so that every delivery form occurs.
const char *const kReferenced[] = {"Tom &amp; Jerry",    "a &lt; b &gt; c",  "caf&#233;",
                                   "&quot;quoted&quot;", "it&apos;s",        "&#x20AC;100",
                                   "na&#xEF;ve",         "&#x1F600; smile",  "x&#65;&#66;&#67;y",
                                   "&amp;&amp;&amp;",    "r&#233;sum&#233;", "&#8211; dash"};

void append_number(std::string &out, uint32_t value, int width)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%0*u", width, value);
    out += digits;
}

void append_record(std::string &out, Random &random, uint32_t serial)
{
    out += "  <record id=\"";
    append_number(out, serial, 8);
    out += "\" kind=\"";
    out += random.pick(kKinds);
    out += "\" status=\"";
    out += random.below(5) == 0 ? "closed" : "active";
    out += "\">\n    <name>";
    out += random.pick(kWords);
    out += ' ';
    out += random.pick(kWords);
    out += "</name>\n    <city>";
    out += random.pick(kCities);
    out += "</city>\n    <amount currency=\"EUR\">";
    append_number(out, random.below(1000000), 1);
    out += '.';
    append_number(out, random.below(100), 2);
    out += "</amount>\n    <note>";
    for (uint32_t i = 0, n = 3 + random.below(6); i < n; ++i) {
        out += i > 0 ? " " : "";
        out += random.pick(kWords);
    }
    out += "</note>\n  </record>\n";
}

void append_referenced(std::string &out, Random &random, uint32_t)
{
    out += "  <para title=\"";
    out += random.pick(kReferenced);
    out += "\">";
    for (uint32_t i = 0, n = 4 + random.below(5); i < n; ++i) {
        out += ' ';
        out += random.pick(kReferenced);
        out += ' ';
        out += random.pick(kWords);
    }
    out += "</para>\n";
}

constexpr uint32_t kDepth = 400;

void append_deep(std::string &out, Random &random, uint32_t)
{
    for (uint32_t level = 0; level < kDepth; ++level) {
        out += "<level n=\"";
        append_number(out, level, 1);
        out += "\">";
        out += random.pick(kWords);
    }
    for (uint32_t level = 0; level < kDepth; ++level)
        out += "</level>";
    out += '\n';
}

void append_line(std::string &out, Random &random, uint32_t serial)
{
    out += serial % 2 == 0 ? "<v>" : "<w k=\"1\">";
    append_number(out, random.below(100000), 5);
    out += serial % 2 == 0 ? "</v>\r\n" : "</w>\r\n";
}

using Appender = void (*)(std::string &, Random &, uint32_t);

struct Recipe {
    Shape shape;
    const char *name;
    const char *lineEnd;  // after the declaration and the root start tag
    Appender append;
};

const Recipe kRecipes[] = {
    {Shape::Records, "records", "\n", append_record},
    {Shape::References, "references", "\n", append_referenced},
    {Shape::Deep, "deep", "\n", append_deep},
    {Shape::Lines, "lines", "\r\n", append_line},
};

const Recipe &recipe(Shape shape)
{
    for (const Recipe &r : kRecipes) {
        if (r.shape == shape)
            return r;
    }
    return kRecipes[0];
}

}  // namespace

const std::vector<ShapeInfo> &all_shapes()
{
    static const std::vector<ShapeInfo> shapes = [] {
        std::vector<ShapeInfo> list;
        for (const Recipe &r : kRecipes)
            list.push_back({r.shape, r.name});
        return list;
    }();
    return shapes;
}

std::string make_document(Shape shape, size_t target)
{
    const Recipe &r = recipe(shape);
    Random random(0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(shape));
    std::string out;
    // Room for the overshoot of the last record (a deep block is ~8 KB), so
    // that the buffer is never regrown and leaves no freed copy behind.
    out.reserve(target + 64 * 1024);
    out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    out += r.lineEnd;
    out += "<batch>";
    out += r.lineEnd;
    for (uint32_t serial = 1; out.size() < target; ++serial)
        r.append(out, random, serial);
    out += "</batch>";
    out += r.lineEnd;
    return out;
}

}  // namespace cblxml_bench
