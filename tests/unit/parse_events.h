// Test support: runs a document through the XML PARSE entry as a COBOL
// run-time does and collects the events.
#ifndef CBLXML_TESTS_PARSE_EVENTS_H
#define CBLXML_TESTS_PARSE_EVENTS_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "cblxml.h"

namespace cblxml_test {

struct Event {
    std::string name;  // trailing spaces removed
    int32_t code = 0;
    std::string text;  // the delivered bytes
    bool nullText = false;

    bool operator==(const Event &o) const
    {
        return name == o.name && code == o.code && text == o.text && nullText == o.nullText;
    }
};

inline std::ostream &operator<<(std::ostream &os, const Event &e)
{
    os << e.name << "|" << e.code << "|";
    for (unsigned char c : e.text) {
        if (c < 0x20 || c >= 0x7F) {
            static const char hex[] = "0123456789ABCDEF";
            os << "\\x" << hex[c >> 4] << hex[c & 15];
        } else {
            os << c;
        }
    }
    return os << (e.nullText ? " (null)" : "");
}

inline int32_t big_endian_code(const unsigned char *code)
{
    return static_cast<int32_t>((uint32_t{code[0]} << 24) | (uint32_t{code[1]} << 16) |
                                (uint32_t{code[2]} << 8) | code[3]);
}

// Every event until the head becomes null (END-OF-DOCUMENT or the last
// EXCEPTION), at most `limit` of them.
inline std::vector<Event> parse_events(const std::string &document, uint32_t options = 0,
                                       size_t limit = 1000000)
{
    std::vector<Event> events;
    xd_parse_info *state = nullptr;
    std::string copy = document;
    void *docAddress = copy.data();
    void *text = nullptr;
    auto docLength = static_cast<uint32_t>(copy.size());
    uint32_t textLength = 0;
    unsigned char code[4];
    char name[CBLXML_EVENT_NAME_LEN];
    do {
        CBL_XMLPARSE_INTERFACE(&state, &docAddress, &text, &docLength, &textLength, code, name,
                               &options);
        Event e;
        e.name.assign(name, sizeof name);
        e.name.erase(e.name.find_last_not_of(' ') + 1);
        e.code = big_endian_code(code);
        e.nullText = text == nullptr;
        if (text != nullptr)
            e.text.assign(static_cast<const char *>(text), textLength);
        events.push_back(e);
    } while (state != nullptr && events.size() < limit);
    if (state != nullptr)
        CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr, nullptr);
    std::free(text);
    return events;
}

// UTF-8 to UTF-16 in machine order, as a national item holds it.
inline std::string national(const std::string &utf8)
{
    std::string out;
    auto put = [&](uint32_t unit) {
        out.push_back(static_cast<char>(unit & 0xFF));
        out.push_back(static_cast<char>(unit >> 8));
    };
    for (size_t i = 0; i < utf8.size();) {
        auto b = static_cast<unsigned char>(utf8[i]);
        size_t n = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
        uint32_t c = n == 1 ? b : b & (0xFFu >> (n + 1));
        for (size_t k = 1; k < n && i + k < utf8.size(); ++k)
            c = (c << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        i += n;
        if (c >= 0x10000) {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            put(c);
        }
    }
    return out;
}

// UTF-8 to the EBCDIC code page IBM-1140, through the library's data map.
inline std::string ebcdic(const std::string &utf8)
{
    void *map = DMInit(3, 0, 0, 0, 0);
    std::string out(utf8.size(), '\0');
    dm_item_desc item{};
    item.class_code = DM_CLASS_ALPHANUMERIC;
    item.usage_code = DM_USAGE_DISPLAY;
    // One byte per character in a single-byte code page: size to the text.
    size_t chars = 0;
    for (unsigned char c : utf8)
        chars += (c & 0xC0) != 0x80;
    out.resize(chars);
    item.length = static_cast<uint32_t>(chars);
    DMSetCblData(map, &item, out.data(), DM_FORM_UTF8, utf8.data(),
                 static_cast<uint32_t>(utf8.size()));
    DMTerm(map);
    return out;
}

// The document as a program with option word `options` holds it: national
// (UTF-16) or EBCDIC data, else as it is.
inline std::string in_form(const std::string &utf8, uint32_t options)
{
    if (options & CBLXML_OPT_NATIONAL)
        return national(utf8);
    if (options & CBLXML_OPT_EBCDIC_DATA)
        return ebcdic(utf8);
    return utf8;
}

// Event list as "NAME|code|text" strings, texts shown as given by `show`.
using Lines = std::vector<std::string>;

} // namespace cblxml_test

#endif
