// Reading a copybook (see copybook.h): source format, words, entries,
// clauses, directives, then the layout.
#include "copybook.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>
#include <sstream>

namespace cblxml::copybook {
namespace {

std::string upper(std::string text)
{
    for (char &c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// ---------------------------------------------------------------------------
// Source lines and words

struct Token {
    std::string text;  // as written
    std::string word;  // upper case
    unsigned line, column;
    bool literal = false;
    bool period = false;
};

struct Directive {
    std::string text;  // after "xml:"
    unsigned line, column;
    size_t before;  // tokens read before it
    bool trailing;  // code precedes it on its line
};

struct Source {
    std::vector<Token> tokens;
    std::vector<Directive> directives;
};

// A comment's text: an XML directive when it starts with "xml:".
void note_comment(Source &source, const std::string &text, unsigned line, unsigned column,
                  bool trailing)
{
    size_t at = text.find_first_not_of(" \t");
    if (at == std::string::npos || upper(text.substr(at, 4)) != "XML:")
        return;
    source.directives.push_back({text.substr(at + 4), line, column + static_cast<unsigned>(at) + 4,
                                 source.tokens.size(), trailing});
}

bool is_quote(char c) { return c == '"' || c == '\''; }

// Splits the code part of one line into words, literals and periods.
// `column` is the column of code[0]. Returns false when a literal is left
// open at the end of the line (continued on the next fixed-format line).
void split_words(Source &source, const std::string &code, unsigned line, unsigned column)
{
    size_t i = 0;
    const size_t n = code.size();
    while (i < n) {
        const char c = code[i];
        if (c == ' ' || c == '\t' || c == ',' || c == ';') {
            ++i;
            continue;
        }
        if (c == '*' && i + 1 < n && code[i + 1] == '>') {
            note_comment(source, code.substr(i + 2), line, column + static_cast<unsigned>(i) + 2,
                         !source.tokens.empty() && source.tokens.back().line == line);
            return;
        }
        Token token;
        token.line = line;
        token.column = column + static_cast<unsigned>(i);
        size_t start = i;
        // A literal, possibly with a prefix letter (X"..", N"..", Z"..").
        size_t q =
            is_quote(c) ? i
            : (i + 1 < n && std::isalpha(static_cast<unsigned char>(c)) && is_quote(code[i + 1]))
                ? i + 1
                : std::string::npos;
        if (q != std::string::npos) {
            const char quote = code[q];
            i = q + 1;
            while (i < n) {
                if (code[i] == quote && i + 1 < n && code[i + 1] == quote) {
                    i += 2;
                } else if (code[i] == quote) {
                    ++i;
                    break;
                } else {
                    ++i;
                }
            }
            token.literal = true;
        } else {
            while (i < n && code[i] != ' ' && code[i] != '\t')
                ++i;
        }
        std::string text = code.substr(start, i - start);
        // A separator comma or semicolon, or a period, ends the word.
        bool period = false;
        if (!token.literal) {
            while (!text.empty() && (text.back() == ',' || text.back() == ';'))
                text.pop_back();
            if (!text.empty() && text.back() == '.') {
                text.pop_back();
                period = true;
            }
        } else if (i < n && code[i] == '.' && (i + 1 == n || code[i + 1] == ' ')) {
            ++i;
            period = true;
        }
        if (!text.empty()) {
            token.text = text;
            token.word = upper(text);
            source.tokens.push_back(token);
        }
        if (period) {
            Token dot;
            dot.line = line;
            dot.column = column + static_cast<unsigned>(i) - 1;
            dot.period = true;
            dot.text = dot.word = ".";
            source.tokens.push_back(dot);
        }
    }
}

// A compiler directive line (>>SOURCE FORMAT ...): switches the format.
bool directive_line(const std::string &code, bool &free_format)
{
    const size_t at = code.find_first_not_of(' ');
    if (at == std::string::npos || code.compare(at, 2, ">>") != 0)
        return false;
    const std::string words = upper(code.substr(at));
    if (words.find("SOURCE") != std::string::npos) {
        if (words.find("FREE") != std::string::npos)
            free_format = true;
        else if (words.find("FIXED") != std::string::npos)
            free_format = false;
    }
    return true;
}

Source read_source(const std::string &text, bool free_format)
{
    Source source;
    std::istringstream lines(text);
    std::string raw;
    for (unsigned number = 1; std::getline(lines, raw); ++number) {
        if (!raw.empty() && raw.back() == '\r')
            raw.pop_back();
        std::replace(raw.begin(), raw.end(), '\t', ' ');
        if (free_format) {
            if (!directive_line(raw, free_format))
                split_words(source, raw, number, 1);
            continue;
        }
        if (raw.size() < 7) {
            continue;
        }
        const char indicator = raw[6];
        std::string code = raw.substr(7, 65);
        if (indicator == '*' || indicator == '/') {
            note_comment(source, code.empty() || code[0] != '>' ? code : code.substr(1), number,
                         code.empty() || code[0] != '>' ? 8 : 9, false);
            continue;
        }
        if (indicator == 'D' || indicator == 'd' || directive_line(code, free_format) ||
            directive_line(raw.substr(6), free_format))
            continue;
        if (indicator == '-') {
            // A continued literal goes on after the quote of this line; its
            // value is never used, so the two parts simply become one word.
            const size_t q = code.find_first_of("\"'");
            if (!source.tokens.empty() && q != std::string::npos) {
                const size_t before = source.tokens.size();
                split_words(source, code.substr(q), number, 8 + static_cast<unsigned>(q));
                if (source.tokens.size() > before)
                    source.tokens.erase(source.tokens.begin() + static_cast<long>(before));
                continue;
            }
        } else if (indicator != ' ') {
            throw Error(number, 7,
                        std::string("unknown indicator '") + indicator + "' in column 7");
        }
        split_words(source, code, number, 8);
    }
    return source;
}

// ---------------------------------------------------------------------------
// Usages and pictures

enum class Size {
    kDisplay,
    kBinary,
    kCompX,
    kPacked,
    kComp6,
    kFixed,
    kNational
};

struct Usage {
    const char *word;
    uint8_t code;  // the descriptor's usage byte
    Size size;
    uint32_t bytes;  // kFixed
};

// Index 0 is the default. The descriptor bytes: 1 DISPLAY, 2 COMP-1,
// 3 COMP-2, 4 packed, 5 binary (big-endian), 6 native binary, 7 COMP-6,
// 8 COMP-X, 12 NATIONAL.
const Usage kUsages[] = {
    {"DISPLAY", 1, Size::kDisplay, 0},       {"COMP", 5, Size::kBinary, 0},
    {"COMPUTATIONAL", 5, Size::kBinary, 0},  {"BINARY", 5, Size::kBinary, 0},
    {"COMP-4", 5, Size::kBinary, 0},         {"COMPUTATIONAL-4", 5, Size::kBinary, 0},
    {"COMP-5", 6, Size::kBinary, 0},         {"COMPUTATIONAL-5", 6, Size::kBinary, 0},
    {"COMP-X", 8, Size::kCompX, 0},          {"COMPUTATIONAL-X", 8, Size::kCompX, 0},
    {"COMP-3", 4, Size::kPacked, 0},         {"COMPUTATIONAL-3", 4, Size::kPacked, 0},
    {"PACKED-DECIMAL", 4, Size::kPacked, 0}, {"COMP-6", 7, Size::kComp6, 0},
    {"COMPUTATIONAL-6", 7, Size::kComp6, 0}, {"COMP-1", 2, Size::kFixed, 4},
    {"COMPUTATIONAL-1", 2, Size::kFixed, 4}, {"FLOAT-SHORT", 2, Size::kFixed, 4},
    {"COMP-2", 3, Size::kFixed, 8},          {"COMPUTATIONAL-2", 3, Size::kFixed, 8},
    {"FLOAT-LONG", 3, Size::kFixed, 8},      {"NATIONAL", 12, Size::kNational, 0},
    {"BINARY-CHAR", 6, Size::kFixed, 1},     {"BINARY-SHORT", 6, Size::kFixed, 2},
    {"BINARY-LONG", 6, Size::kFixed, 4},     {"BINARY-DOUBLE", 6, Size::kFixed, 8},
};
constexpr int kUsageCount = static_cast<int>(sizeof kUsages / sizeof kUsages[0]);
// The BINARY-xxx words may be followed by SIGNED or UNSIGNED; they are the
// last four of the table.
constexpr int kFirstBinaryWord = kUsageCount - 4;
constexpr int kUnsignedFlag = 0x100;  // ORed into Field::usage

int find_usage(const std::string &word)
{
    for (int i = 0; i < kUsageCount; ++i) {
        if (word == kUsages[i].word)
            return i;
    }
    return -1;
}

// What a PICTURE says about an item.
struct Pic {
    uint32_t chars = 0;   // character positions (not S, V, P)
    uint32_t nines = 0;   // 9 positions: what the binary sizes go by
    uint32_t digits = 0;  // digit positions, edited ones included
    uint32_t scale = 0;
    bool is_signed = false;
    uint8_t cls = 2;  // 1 numeric, 2 alphanumeric, 4 alphabetic, 5 numeric
                      // edited, 6 national, 7 DBCS, 8 alphanumeric edited
};

// Expands a PICTURE; returns false when it does not parse.
bool analyse_picture(const std::string &written, Pic &pic)
{
    const std::string text = upper(written);
    std::string symbols;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '(') {
            const size_t close = text.find(')', i);
            if (symbols.empty() || close == std::string::npos || close == i + 1 || close - i > 6)
                return false;
            uint32_t times = 0;
            for (size_t j = i + 1; j < close; ++j) {
                if (!std::isdigit(static_cast<unsigned char>(text[j])))
                    return false;
                times = times * 10 + static_cast<uint32_t>(text[j] - '0');
            }
            if (times == 0)
                return false;
            symbols.append(times - 1, symbols.back());
            i = close;
        } else if (std::strchr("9AXSVPNGZ*+-$.,B0/CRDE", c) != nullptr && c != 0) {
            symbols += c;
        } else {
            return false;
        }
    }
    if (symbols.empty())
        return false;
    // CR and DB come as pairs, at the end.
    for (size_t i = 0; i < symbols.size(); ++i) {
        const char c = symbols[i];
        if (c == 'C' || c == 'D') {
            const char next = c == 'C' ? 'R' : 'B';
            if (i + 2 != symbols.size() || symbols[i + 1] != next)
                return false;
            symbols[i + 1] = '_';  // the second letter of the pair
        } else if (c == 'R' || c == 'E') {
            return false;
        }
    }
    bool point = false, has_x = false, has_a = false, has_n = false, has_g = false;
    bool edit_alnum = false, edit_num = false;
    char floating = 0;
    for (size_t i = 0; i < symbols.size(); ++i) {
        const char c = symbols[i];
        if (c == 'S') {
            if (i != 0)
                return false;
            pic.is_signed = true;
            continue;
        }
        if (c == 'V') {
            if (point)
                return false;
            point = true;
            continue;
        }
        ++pic.chars;
        if (c == '9' || c == 'Z' || c == '*' || c == 'P') {
            pic.chars -= c == 'P' ? 1 : 0;
            pic.nines += c == '9' ? 1 : 0;
            ++pic.digits;
            pic.scale += point ? 1 : 0;
        } else if (c == '+' || c == '-' || c == '$') {
            // A floating insertion string: every symbol but the first is a
            // digit position.
            if (floating == c) {
                ++pic.digits;
                pic.scale += point ? 1 : 0;
            }
            floating = c;
            edit_num = true;
        } else if (c == '.') {
            if (point)
                return false;
            point = true;
            edit_num = true;
        }
        has_x = has_x || c == 'X';
        has_a = has_a || c == 'A';
        has_n = has_n || c == 'N';
        has_g = has_g || c == 'G';
        edit_alnum = edit_alnum || c == 'B' || c == '0' || c == '/';
        edit_num = edit_num || std::strchr("Z*,C", c) != nullptr;
    }
    if (has_n)
        pic.cls = 6;
    else if (has_g)
        pic.cls = 7;
    else if (has_x || has_a)
        pic.cls = edit_alnum || edit_num ? 8 : has_x || pic.digits > 0 ? 2 : 4;
    else
        pic.cls = edit_alnum || edit_num ? 5 : 1;
    // A sign or an assumed point belongs to a number.
    return pic.cls == 1 || (!pic.is_signed && (!point || pic.cls == 5));
}

// GnuCOBOL's sizes: binary items of 1, 2, 4 or 8 bytes by their digits; a
// COMP-X item the bytes its digits need.
uint32_t binary_bytes(uint32_t digits)
{
    return digits <= 2 ? 1 : digits <= 4 ? 2 : digits <= 9 ? 4 : 8;
}

uint32_t comp_x_bytes(uint32_t digits)
{
    static const uint8_t kBytes[] = {1, 1, 1, 2, 2, 3, 3, 3, 4, 4, 5, 5, 5, 6, 6, 7, 7, 8, 8};
    return digits < sizeof kBytes ? kBytes[digits] : 8;
}

// ---------------------------------------------------------------------------
// Entries and clauses

bool is_clause_word(const std::string &word)
{
    static const char *const kWords[] = {
        "PIC",       "PICTURE",   "USAGE",        "SIGN",    "LEADING",   "TRAILING",
        "OCCURS",    "REDEFINES", "VALUE",        "VALUES",  "JUSTIFIED", "JUST",
        "BLANK",     "GLOBAL",    "EXTERNAL",     "INDEXED", "ASCENDING", "DESCENDING",
        "DEPENDING", "SYNC",      "SYNCHRONIZED", "RENAMES", "IS"};
    for (const char *w : kWords) {
        if (word == w)
            return true;
    }
    return find_usage(word) >= 0;
}

bool is_xml_name_start(unsigned char c)
{
    return std::isalpha(c) || c == '_' || c == ':' || c >= 0x80;
}

bool is_xml_name(const std::string &name)
{
    if (name.empty() || !is_xml_name_start(static_cast<unsigned char>(name[0])))
        return false;
    return std::all_of(name.begin(), name.end(), [](char ch) {
        const auto c = static_cast<unsigned char>(ch);
        return is_xml_name_start(c) || std::isdigit(c) || c == '-' || c == '.';
    });
}

bool is_number(const std::string &word)
{
    return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0;
    });
}

void apply_directive(Field &field, const Directive &directive)
{
    field.directed = true;
    std::istringstream words(directive.text);
    std::string word;
    size_t from = 0;
    while (words >> word) {
        const size_t at = directive.text.find(word, from);
        from = at + word.size();
        const unsigned column = directive.column + static_cast<unsigned>(at);
        const size_t eq = word.find('=');
        const std::string key = word.substr(0, eq);
        const std::string value = eq == std::string::npos ? "" : word.substr(eq + 1);
        if (key == "name" && eq != std::string::npos) {
            if (!is_xml_name(value))
                throw Error(directive.line, column + 5, "'" + value + "' is not a valid XML name");
            field.xml_name = value;
        } else if (key == "ns" && !value.empty()) {
            field.ns = value;
        } else if (word == "attributes") {
            field.xml_flags |= IDESC_ATTRIBUTES;
        } else if (word == "any-name") {
            field.xml_flags |= IDESC_NO_NAME;
        } else if (word == "any-ns") {
            field.xml_flags |= IDESC_NO_NAMESPACE;
        } else if (word == "receives=name") {
            field.xml_flags |= IDESC_GETS_NAME;
        } else if (word == "receives=ns") {
            field.xml_flags |= IDESC_GETS_NAMESPACE;
        } else if (word == "receives=pi") {
            field.xml_flags |= IDESC_GETS_PI;
        } else if (word == "no-count") {
            field.xml_flags |= IDESC_NO_COUNT;
        } else if (word == "content") {
            field.content = true;
        } else if (word == "omit") {
            field.omit = true;
        } else if (word == "keep") {
            field.keep = true;
        } else {
            throw Error(directive.line, column, "unknown XML directive '" + word + "'");
        }
    }
}

class EntryReader {
public:
    EntryReader(const std::vector<Token> &tokens, size_t begin, size_t end)
        : tokens_(tokens), at_(begin), end_(end)
    {}

    bool done() const { return at_ >= end_; }
    const Token &peek() const { return tokens_[at_]; }
    const Token &next()
    {
        if (done())
            throw Error(tokens_[end_].line, tokens_[end_].column,
                        "the entry ends too early: " + tokens_[at_ - 1].text + " needs more");
        return tokens_[at_++];
    }
    bool take(const char *word)
    {
        if (!done() && peek().word == word && !peek().literal) {
            ++at_;
            return true;
        }
        return false;
    }

private:
    const std::vector<Token> &tokens_;
    size_t at_, end_;
};

void read_clauses(EntryReader &in, Field &field)
{
    while (!in.done()) {
        const Token &token = in.next();
        const std::string &w = token.word;
        if (token.literal)
            throw Error(token.line, token.column, "unexpected literal " + token.text);
        if (w == "PIC" || w == "PICTURE") {
            in.take("IS");
            const Token &pic = in.next();
            field.picture = pic.text;
            field.picture_line = pic.line;
            field.picture_column = pic.column;
        } else if (w == "USAGE" || find_usage(w) >= 0) {
            const Token &u = w == "USAGE" ? (in.take("IS"), in.next()) : token;
            field.usage = find_usage(u.word);
            if (field.usage < 0)
                throw Error(u.line, u.column, "unknown USAGE " + u.text);
            if (field.usage >= kFirstBinaryWord && !in.take("SIGNED") && in.take("UNSIGNED"))
                field.usage |= kUnsignedFlag;
        } else if (w == "SIGN" || w == "LEADING" || w == "TRAILING") {
            const Token &place = w == "SIGN" ? (in.take("IS"), in.next()) : token;
            if (place.word != "LEADING" && place.word != "TRAILING")
                throw Error(place.line, place.column, "SIGN needs LEADING or TRAILING");
            // The descriptor's sign byte: 1 leading, 2 trailing, 3 and 4
            // the same with a separate sign (the data map's codes 2, 1, 4
            // and 3).
            field.sign_place = place.word == "LEADING" ? 1 : 2;
            if (in.take("SEPARATE")) {
                in.take("CHARACTER");
                field.sign_place += 2;
            }
        } else if (w == "OCCURS") {
            const Token &n = in.next();
            if (!is_number(n.word))
                throw Error(n.line, n.column, "OCCURS needs a number, not " + n.text);
            field.occurs_min = field.occurs_max = static_cast<uint32_t>(std::stoul(n.word));
            if (in.take("TO")) {
                const Token &m = in.next();
                if (!is_number(m.word))
                    throw Error(m.line, m.column, "OCCURS TO needs a number, not " + m.text);
                field.occurs_max = static_cast<uint32_t>(std::stoul(m.word));
            }
            in.take("TIMES");
            if (field.occurs_max == 0 || field.occurs_max < field.occurs_min)
                throw Error(n.line, n.column, "OCCURS needs a maximum above zero");
            if (in.take("DEPENDING")) {
                in.take("ON");
                field.depending_on = in.next().text;
            }
        } else if (w == "ASCENDING" || w == "DESCENDING" || w == "INDEXED") {
            in.take("KEY");
            in.take("BY");
            in.take("IS");
            while (!in.done() && !is_clause_word(in.peek().word))
                in.next();
        } else if (w == "REDEFINES") {
            field.redefines = in.next().word;
        } else if (w == "VALUE" || w == "VALUES") {
            // Values are not part of the layout: skipped up to the next clause.
            while (!in.done() && !is_clause_word(in.peek().word))
                in.next();
        } else if (w == "JUSTIFIED" || w == "JUST") {
            in.take("RIGHT");
        } else if (w == "BLANK") {
            in.take("WHEN");
            in.next();
        } else if (w == "GLOBAL" || w == "EXTERNAL" || w == "IS") {
        } else if (w == "RENAMES") {
            throw Error(token.line, token.column, "RENAMES is not supported");
        } else {
            throw Error(token.line, token.column, "unknown clause " + token.text);
        }
    }
}

std::string two_digits(unsigned level) { return (level < 10 ? "0" : "") + std::to_string(level); }

// The level structure: each entry's parent, and the checks a compiler makes.
void link_fields(Copybook &book)
{
    std::vector<size_t> open;
    for (size_t i = 0; i < book.fields.size(); ++i) {
        Field &f = book.fields[i];
        if (f.level == 1) {
            open.assign(1, i);
            book.records.push_back(i);
            if (f.occurs_max != 0)
                throw Error(f.line, f.column, "a level 01 item cannot have OCCURS");
            continue;
        }
        if (open.empty())
            throw Error(f.line, f.column, "the first item must have level 01");
        size_t sibling = SIZE_MAX;
        while (book.fields[open.back()].level >= f.level) {
            sibling = open.back();
            open.pop_back();
        }
        Field &parent = book.fields[open.back()];
        if (sibling != SIZE_MAX && book.fields[sibling].level != f.level)
            throw Error(f.line, f.column,
                        "level " + two_digits(f.level) + " does not fit: the items of " +
                            (parent.name.empty() ? "FILLER" : parent.name) + " have level " +
                            two_digits(book.fields[sibling].level));
        if (!parent.picture.empty() ||
            (parent.usage >= 0 && kUsages[parent.usage & 0xFF].size == Size::kFixed))
            throw Error(f.line, f.column,
                        "level " + two_digits(f.level) +
                            " does not fit: " + (parent.name.empty() ? "FILLER" : parent.name) +
                            " is an elementary item");
        f.parent = open.back();
        parent.children.push_back(i);
        open.push_back(i);
    }
}

// Lays out field `i` at `at`; returns the bytes of one occurrence.
uint32_t lay_out(Copybook &book, size_t i, uint32_t at, int inherited_usage, uint8_t inherited_sign)
{
    Field &f = book.fields[i];
    f.offset = at;
    if (f.usage < 0)
        f.usage = inherited_usage;
    if (f.sign_place == 0)
        f.sign_place = inherited_sign;
    if (!f.children.empty()) {
        uint32_t pos = at;
        size_t last = SIZE_MAX;  // the last item that is not a redefinition
        for (const size_t c : book.fields[i].children) {
            Field &child = book.fields[c];
            if (child.redefines.empty()) {
                const uint32_t size =
                    lay_out(book, c, pos, book.fields[i].usage, book.fields[i].sign_place);
                pos += size * std::max<uint32_t>(child.occurs_max, 1);
                last = c;
                continue;
            }
            if (last == SIZE_MAX || upper(book.fields[last].name) != child.redefines)
                throw Error(child.line, child.column,
                            "REDEFINES " + child.redefines + " does not name the item before");
            const Field &base = book.fields[last];
            const uint32_t size =
                lay_out(book, c, base.offset, book.fields[i].usage, book.fields[i].sign_place);
            if (size * std::max<uint32_t>(child.occurs_max, 1) >
                base.length * std::max<uint32_t>(base.occurs_max, 1))
                throw Error(child.line, child.column,
                            (child.name.empty() ? "FILLER" : child.name) +
                                " is larger than the item it redefines");
        }
        book.fields[i].length = pos - at;
        return pos - at;
    }
    const Usage &usage = kUsages[f.usage & 0xFF];
    if (usage.size == Size::kFixed) {
        if (!f.picture.empty())
            throw Error(f.line, f.column, std::string("USAGE ") + usage.word + " has no PICTURE");
        f.length = usage.bytes;
        return f.length;
    }
    if (f.picture.empty())
        throw Error(f.line, f.column,
                    (f.name.empty() ? "FILLER" : f.name) + " needs a PICTURE clause");
    Pic pic;
    if (!analyse_picture(f.picture, pic))
        throw Error(f.picture_line, f.picture_column, "PICTURE " + f.picture + " does not parse");
    if (usage.size != Size::kDisplay && usage.size != Size::kNational && pic.cls != 1 &&
        !(usage.size == Size::kCompX && pic.cls == 2))
        throw Error(f.picture_line, f.picture_column,
                    "PICTURE " + f.picture + " does not fit USAGE " + usage.word);
    switch (usage.size) {
    case Size::kBinary:
        f.length = binary_bytes(pic.nines);
        break;
    case Size::kCompX:
        f.length = pic.cls == 1 ? comp_x_bytes(pic.nines) : pic.chars;
        break;
    case Size::kPacked:
        f.length = pic.digits / 2 + 1;
        break;
    case Size::kComp6:
        f.length = (pic.digits + 1) / 2;
        break;
    case Size::kNational:
        f.length = 2 * pic.chars;
        break;
    default:
        f.length =
            pic.cls == 6 ? 2 * pic.chars : pic.chars + (pic.is_signed && f.sign_place >= 3 ? 1 : 0);
    }
    return f.length;
}

}  // namespace

Copybook read_copybook(const std::string &text, bool free_format)
{
    const Source source = read_source(text, free_format);
    const std::vector<Token> &tokens = source.tokens;
    Copybook book;
    std::vector<size_t> entry_of_token(tokens.size(), SIZE_MAX);
    size_t begin = 0;
    for (size_t i = 0; i <= tokens.size(); ++i) {
        if (i < tokens.size() && !tokens[i].period)
            continue;
        if (begin == i) {
            begin = i + 1;
            continue;
        }
        if (i == tokens.size())
            throw Error(tokens[i - 1].line, tokens[i - 1].column,
                        "the last entry does not end with a period");
        const Token &level = tokens[begin];
        if (!is_number(level.word) || level.word.size() > 2)
            throw Error(level.line, level.column, "expected a level number, not " + level.text);
        const unsigned n = static_cast<unsigned>(std::stoul(level.word));
        const bool skipping = n == 88;
        if (n == 66)
            throw Error(level.line, level.column, "RENAMES (level 66) is not supported");
        if (n == 77 || n == 78)
            throw Error(level.line, level.column,
                        "level " + level.word + " does not belong in a record description");
        if (!skipping && (n < 1 || n > 49))
            throw Error(level.line, level.column, "level " + level.word + " is not 01 to 49");
        if (skipping) {
            if (book.fields.empty())
                throw Error(level.line, level.column, "a level 88 entry needs an item before it");
            begin = i + 1;
            continue;
        }
        Field field;
        field.line = level.line;
        field.column = level.column;
        field.level = n;
        field.usage = -1;
        EntryReader in(tokens, begin + 1, i);
        if (!in.done() && !is_clause_word(in.peek().word)) {
            const Token &name = in.next();
            if (name.literal)
                throw Error(name.line, name.column, "expected a data name, not " + name.text);
            if (name.word != "FILLER")
                field.name = name.text;
        }
        read_clauses(in, field);
        for (size_t t = begin; t <= i; ++t)
            entry_of_token[t] = book.fields.size();
        book.fields.push_back(field);
        begin = i + 1;
    }
    if (book.fields.empty())
        throw Error(1, 1, "no record description");
    // Directives: one after code on a line belongs to that line's entry, one
    // on a line of its own to the next entry.
    for (const Directive &d : source.directives) {
        // Level 88 entries in between are stepped over.
        size_t t = d.trailing ? d.before - 1 : d.before;
        while (t < tokens.size() && entry_of_token[t] == SIZE_MAX)
            t = d.trailing ? t - 1 : t + 1;  // from 0, down to SIZE_MAX: the loop ends
        if (t >= tokens.size() || entry_of_token[t] == SIZE_MAX)
            throw Error(d.line, d.column, "an XML directive needs an item after it");
        apply_directive(book.fields[entry_of_token[t]], d);
    }
    link_fields(book);
    for (const size_t r : book.records)
        lay_out(book, r, 0, 0, 0);
    return book;
}

std::vector<layout::Item> record_items(const Copybook &book, size_t r, std::vector<size_t> *fields)
{
    std::vector<layout::Item> items;
    const uint32_t base = book.fields[book.records[r]].offset;
    std::function<void(size_t)> visit = [&](size_t i) {
        const Field &f = book.fields[i];
        const bool elementary = f.children.empty();
        if (f.omit || (!f.redefines.empty() && i != book.records[r] && !f.keep && !f.directed) ||
            (f.name.empty() && elementary && !f.directed))
            return;
        layout::Item item;
        item.level = static_cast<uint8_t>(f.level);
        item.name = f.content ? "" : !f.xml_name.empty() ? f.xml_name : f.name;
        if (!item.name.empty() && !is_xml_name(item.name) && f.xml_name.empty())
            throw Error(f.line, f.column,
                        "the data name " + f.name +
                            " is not a valid XML name; give one with *> xml: name=...");
        item.ns = f.ns;
        item.offset = f.offset - base;
        item.length = f.length;
        item.occurs = f.occurs_max;
        item.flags = f.xml_flags;
        if (elementary) {
            const Usage &usage = kUsages[f.usage & 0xFF];
            Pic pic;
            if (!f.picture.empty())
                analyse_picture(f.picture, pic);
            else
                pic.cls = 1;  // COMP-1, COMP-2, BINARY-xxx
            item.picture = upper(f.picture);
            item.class_source = pic.cls;
            item.usage_source = pic.cls == 6 ? 12 : usage.code;
            item.digits = static_cast<uint8_t>(pic.digits);
            item.scale = static_cast<uint8_t>(pic.scale);
            const bool is_signed =
                pic.is_signed || (usage.size == Size::kFixed && (f.usage & kUnsignedFlag) == 0);
            if (is_signed)
                item.flags |= IDESC_SIGNED;
            item.sign_position = pic.is_signed && usage.size == Size::kDisplay ? f.sign_place : 0;
        }
        items.push_back(item);
        if (fields != nullptr)
            fields->push_back(i);
        for (const size_t c : f.children)
            visit(c);
    };
    visit(book.records[r]);
    return items;
}

std::string qualified_name(const Copybook &book, size_t f, unsigned &subscripts)
{
    std::string name = book.fields[f].name;
    subscripts = 0;
    for (size_t i = f; i != SIZE_MAX; i = book.fields[i].parent) {
        const Field &field = book.fields[i];
        subscripts += field.occurs_max != 0 ? 1 : 0;
        if (i != f && !field.name.empty())
            name += " OF " + field.name;
    }
    return name;
}

}  // namespace cblxml::copybook
