// cblxml-parse: runs a document through the XML PARSE entry exactly as a
// COBOL run-time does and prints one line per event:
//     EVENT-NAME|XML-CODE|text
// National text is shown as UTF-8, EBCDIC text converted for display, other
// bytes that are not printable escaped as \xNN.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cblxml.h"

namespace {

const char kUsage[] = "usage: cblxml-parse [--national] [--ebcdic] [--validate] [--validate-only]\n"
                      "                    [--options N] FILE\n";

int fail(const std::string &message)
{
    std::fprintf(stderr, "cblxml-parse: %s\n", message.c_str());
    return 2;
}

bool is_utf16(const std::string &bytes)
{
    if (bytes.size() < 2)
        return false;
    auto b0 = static_cast<unsigned char>(bytes[0]);
    auto b1 = static_cast<unsigned char>(bytes[1]);
    return (b0 == 0xFF && b1 == 0xFE) || (b0 == 0xFE && b1 == 0xFF) || (b0 == 0x3C && b1 == 0) ||
           (b0 == 0 && b1 == 0x3C);
}

// UTF-16 in machine order (this tool runs where the library runs) to UTF-8.
std::string utf16_to_utf8(const char *text, size_t bytes)
{
    std::string out;
    for (size_t i = 0; i + 1 < bytes; i += 2) {
        uint32_t c = static_cast<unsigned char>(text[i]) |
                     static_cast<uint32_t>(static_cast<unsigned char>(text[i + 1])) << 8;
        if (c >= 0xD800 && c <= 0xDBFF && i + 3 < bytes) {
            uint32_t low = static_cast<unsigned char>(text[i + 2]) |
                           static_cast<uint32_t>(static_cast<unsigned char>(text[i + 3])) << 8;
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::vector<char> utf8_to_utf16(const std::string &text)
{
    std::vector<char> out;
    auto put = [&](uint32_t unit) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    };
    for (size_t i = 0; i < text.size();) {
        auto b = static_cast<unsigned char>(text[i]);
        uint32_t c = b;
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        if (n > 1) {
            c = b & (0xFF >> (n + 1));
            for (size_t k = 1; k < n && i + k < text.size(); ++k)
                c = (c << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        }
        i += n;
        if (c >= 0x10000) {
            c -= 0x10000;
            put(0xD800 + (c >> 10));
            put(0xDC00 + (c & 0x3FF));
        } else {
            put(c);
        }
    }
    return out;
}

// EBCDIC program data shown as UTF-8, through the library's own data map.
std::string ebcdic_to_utf8(const char *text, size_t bytes)
{
    void *map = DMInit(3, 0, 0, 0, 0);
    if (map == nullptr)
        return std::string(text, bytes);
    dm_item_desc item{};
    item.length = static_cast<uint32_t>(bytes);
    item.class_code = DM_CLASS_ALPHANUMERIC;
    item.usage_code = DM_USAGE_DISPLAY;
    std::string out(bytes * 3 + 4, '\0');
    auto room = static_cast<uint32_t>(out.size());
    if (DMGetCblData(map, &item, text, DM_FORM_UTF8, out.data(), &room) != 0)
        room = 0;
    DMTerm(map);
    out.resize(room > 0 ? room - 1 : 0);
    return out;
}

std::string escaped(const std::string &text)
{
    std::string out;
    for (unsigned char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20 || c == 0x7F) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

bool parse_number(const char *text, uint32_t &value)
{
    char *end = nullptr;
    unsigned long n = std::strtoul(text, &end, 0);
    if (end == text || *end != 0 || n > 0xFFFFFFFFul)
        return false;
    value = static_cast<uint32_t>(n);
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    uint32_t options = 0;
    const char *path = nullptr;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--national" || arg == "-n") {
            options |= CBLXML_OPT_NATIONAL;
        } else if (arg == "--ebcdic" || arg == "-e") {
            options |= CBLXML_OPT_EBCDIC_DATA;
        } else if (arg == "--validate") {
            options |= CBLXML_OPT_VALIDATE;
        } else if (arg == "--validate-only") {
            options |= CBLXML_OPT_VALIDATE_ONLY;
        } else if (arg == "--options" || arg == "-o") {
            if (i + 1 >= argc || !parse_number(argv[++i], options))
                return fail("--options needs a number (the option word)");
        } else if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (!arg.empty() && arg[0] == '-') {
            return fail("unknown option " + arg + " (try --help)");
        } else if (path == nullptr) {
            path = argv[i];
        } else {
            return fail("only one document at a time");
        }
    }
    if (path == nullptr)
        return fail("no document given (try --help)");
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec))
        return fail(std::string(path) + " is a directory");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return fail(std::string("cannot open ") + path);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        return fail(std::string("cannot read ") + path);

    std::vector<char> document(bytes.begin(), bytes.end());
    const bool national = (options & CBLXML_OPT_NATIONAL) != 0;
    if (national && !is_utf16(bytes))
        document = utf8_to_utf16(bytes);  // a national item holds UTF-16

    xd_parse_info *state = nullptr;
    void *docAddress = document.data();
    void *text = nullptr;
    auto docLength = static_cast<uint32_t>(document.size());
    uint32_t textLength = 0;
    unsigned char code[4] = {0, 0, 0, 0};
    char event[CBLXML_EVENT_NAME_LEN];
    for (;;) {
        CBL_XMLPARSE_INTERFACE(&state, &docAddress, &text, &docLength, &textLength, code, event,
                               &options);
        std::string name(event, sizeof event);
        name.erase(name.find_last_not_of(' ') + 1);
        const int32_t xmlCode =
            static_cast<int32_t>((uint32_t{code[0]} << 24) | (uint32_t{code[1]} << 16) |
                                 (uint32_t{code[2]} << 8) | code[3]);
        const char *t = static_cast<const char *>(text);
        std::string shown;
        if (t != nullptr) {
            const bool wideText = national || name == "CONTENT-NATIONAL-CHARACTER" ||
                                  name == "ATTRIBUTE-NATIONAL-CHARACTER";
            if (wideText)
                shown = utf16_to_utf8(t, textLength);
            else if (options & CBLXML_OPT_EBCDIC_DATA)
                shown = ebcdic_to_utf8(t, textLength);
            else
                shown.assign(t, textLength);
        }
        std::printf("%s|%d|%s\n", name.c_str(), xmlCode, escaped(shown).c_str());
        if (state == nullptr)
            break;  // END-OF-DOCUMENT or the last EXCEPTION was delivered
    }
    std::free(text);
    return 0;
}
