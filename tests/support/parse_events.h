// Test support: runs a document through the XML PARSE entry as a COBOL
// run-time does and collects the events; puts a document in the form a
// program holds it in.
#ifndef CBLXML_SUPPORT_PARSE_EVENTS_H
#define CBLXML_SUPPORT_PARSE_EVENTS_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "cblxml.h"
#include "datamap.h"
#include "platform/platform.h"
#include "xml_delivery.h"

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

using cblxml_support::big_endian_code;

// Every event until the head becomes null (END-OF-DOCUMENT or the last
// EXCEPTION), at most `limit` of them.
inline std::vector<Event> parse_events(const std::string &document, uint32_t options = 0,
                                       size_t limit = 1000000)
{
    std::vector<Event> events;
    cblxml_support::deliver(
        document.data(), static_cast<uint32_t>(document.size()), options,
        [&events](const cblxml_support::Delivered &d) {
            Event e;
            e.name.assign(d.name, d.name_length());
            e.code = d.code;
            e.nullText = d.text == nullptr;
            if (d.text != nullptr)
                e.text.assign(static_cast<const char *>(d.text), d.length);
            events.push_back(e);
            return true;
        },
        limit);
    return events;
}

// UTF-8 to UTF-16 in machine order, as a national item holds it.
inline std::string national(const std::string &utf8)
{
    const std::u16string units = cblxml::platform::utf8_to_utf16(utf8.data(), utf8.size());
    return std::string(reinterpret_cast<const char *>(units.data()), units.size() * 2);
}

// UTF-8 to the EBCDIC code page IBM-1140, through the library's data map:
// one byte per character.
inline std::string ebcdic(const std::string &utf8)
{
    uint32_t chars = 0;
    for (unsigned char c : utf8)
        chars += (c & 0xC0) != 0x80;
    int32_t status = 0;
    return store(open_map(3).get(), describe(DM_CLASS_ALPHANUMERIC, DM_USAGE_DISPLAY, chars), utf8,
                 &status);
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

// A tree-mode parse through the tree entry, freed with the object.
struct TreeParse {
    xd_dom_node_t *doc = nullptr;
    xd_dom_parse_err_t record{};
    int32_t result = -1;

    explicit TreeParse(const std::string &text, uint32_t options = CBLXML_OPT_TREE,
                       bool withRecord = true)
    {
        xd_dom_parse_err_t *rec = &record;
        result = kvt_xe_xml_dom_parse(text.data(), static_cast<uint32_t>(text.size()), &doc,
                                      withRecord ? &rec : nullptr, options);
    }
    ~TreeParse()
    {
        kvt_xe_xml_dom_free_node(doc, 0);
        std::free(record.message);
    }
    TreeParse(const TreeParse &) = delete;
    TreeParse &operator=(const TreeParse &) = delete;
    std::string message() const
    {
        return record.message != nullptr ? static_cast<const char *>(record.message) : "";
    }
};

}  // namespace cblxml_test

#endif
