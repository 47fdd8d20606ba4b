#include "corpus.h"

#include <cstdint>
#include <cstdio>

#include <iconv.h>

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

// Prose: mostly ASCII words, Latin-1 letters in some, a few characters
// beyond Latin-1 (two and three bytes in UTF-8).
const char *const kProse[] = {"the",    "ledger",      "was",     "closed",   "after", "a",
                              "long",   "review",      "of",      "accounts", "and",   "every",
                              "entry",  "matched",     "its",     "source",   "café",  "naïve",
                              "résumé", "Müller",      "straße",  "señor",    "à",     "la",
                              "carte",  "coöperation", "déjà",    "vu",       "in",    "which",
                              "the",    "auditors",    "found",   "nothing",  "amiss", "while",
                              "north",  "river",       "quarter", "balance",  "held",  "steady"};
const char *const kRare[] = {"€", "—", "“quoted”", "…", "Łódź", "ΣΩ"};

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

// A paragraph of 3 to 8 KB of prose with a few inline elements; sentences
// end with a full stop, lines wrap at about 72 columns.
void append_paragraph(std::string &out, Random &random, uint32_t)
{
    out += "  <p>";
    const size_t start = out.size();
    const size_t length = 3072 + random.below(5120);
    size_t column = 0;
    uint32_t word = 0;
    while (out.size() - start < length) {
        ++word;
        const uint32_t roll = random.below(400);
        if (roll == 0) {
            out += "<em>";
            out += random.pick(kProse);
            out += "</em>";
        } else if (roll == 1) {
            out += "<b>";
            out += random.pick(kProse);
            out += "</b>";
        } else if (roll < 5) {
            out += random.pick(kRare);
        } else {
            out += random.pick(kProse);
        }
        out += word % 11 == 0 ? ". " : " ";
        column += 8;
        if (column > 72) {
            out += "\n    ";
            column = 0;
        }
    }
    out += "</p>\n";
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
    {Shape::Text, "text", "\n", append_paragraph},
    {Shape::RecordsEbcdic, "ebcdic", "\n", append_record},
    {Shape::RecordsNational, "national", "\n", append_record},
};

// The document in another encoding: iconv from UTF-8 (the EBCDIC page maps
// line feed to its own line feed, 25 hex).
std::string convert(const std::string &utf8, const char *to)
{
    iconv_t cd = iconv_open(to, "UTF-8");
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::string();
    std::string out(utf8.size() * 2 + 16, '\0');
    char *in = const_cast<char *>(utf8.data());
    size_t inLeft = utf8.size();
    char *put = &out[0];
    size_t outLeft = out.size();
    const size_t done = iconv(cd, &in, &inLeft, &put, &outLeft);
    iconv_close(cd);
    if (done == static_cast<size_t>(-1))
        return std::string();
    out.resize(out.size() - outLeft);
    return out;
}

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
            list.push_back({r.shape, r.name, r.shape == Shape::RecordsNational ? 1u : 0u});
        return list;
    }();
    return shapes;
}

std::string make_document(Shape shape, size_t target)
{
    const Recipe &r = recipe(shape);
    const char *encoding = shape == Shape::RecordsEbcdic     ? "IBM037"
                           : shape == Shape::RecordsNational ? "UTF-16"
                                                             : "UTF-8";
    if (shape == Shape::RecordsNational)
        target /= 2;  // two bytes a character
    // The same records as the records shape, whatever the encoding.
    const bool recordForm = shape == Shape::RecordsEbcdic || shape == Shape::RecordsNational;
    Random random(0x9E3779B97F4A7C15ull ^
                  static_cast<uint64_t>(recordForm ? Shape::Records : shape));
    std::string out;
    // Room for the overshoot of the last record (a deep block is ~8 KB), so
    // that the buffer is never regrown and leaves no freed copy behind.
    out.reserve(target + 64 * 1024);
    out += "<?xml version=\"1.0\" encoding=\"";
    out += encoding;
    out += "\"?>";
    out += r.lineEnd;
    out += "<batch>";
    out += r.lineEnd;
    for (uint32_t serial = 1; out.size() < target; ++serial)
        r.append(out, random, serial);
    out += "</batch>";
    out += r.lineEnd;
    if (shape == Shape::RecordsEbcdic)
        return convert(out, "IBM037");
    if (shape == Shape::RecordsNational)
        return convert(out, "UTF-16LE");
    return out;
}

}  // namespace cblxml_bench
