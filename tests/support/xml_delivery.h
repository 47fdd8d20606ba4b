// Drives one parse through the XML PARSE entry the way a COBOL run-time
// does: the tests, the fuzz target, the benchmark and the conformance run all
// deliver events through this loop. Header only and free of allocation, so
// that a heap count around a parse sees the library's blocks alone.
#ifndef CBLXML_SUPPORT_XML_DELIVERY_H
#define CBLXML_SUPPORT_XML_DELIVERY_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "cblxml.h"

namespace cblxml_support {

inline int32_t big_endian_code(const unsigned char *code)
{
    return static_cast<int32_t>((uint32_t{code[0]} << 24) | (uint32_t{code[1]} << 16) |
                                (uint32_t{code[2]} << 8) | code[3]);
}

// One delivered event, as the program's items hold it after the call.
struct Delivered {
    const char *name;  // CBLXML_EVENT_NAME_LEN bytes, padded with blanks
    int32_t code;
    const void *text;  // null for none
    uint32_t length;

    // The name is `wanted` followed by blanks only.
    bool is(const char *wanted) const
    {
        const size_t n = std::strlen(wanted);
        if (n > CBLXML_EVENT_NAME_LEN || std::memcmp(name, wanted, n) != 0)
            return false;
        for (size_t i = n; i < CBLXML_EVENT_NAME_LEN; ++i)
            if (name[i] != ' ')
                return false;
        return true;
    }
    // The name's length without its trailing blanks.
    size_t name_length() const
    {
        size_t n = CBLXML_EVENT_NAME_LEN;
        while (n > 0 && name[n - 1] == ' ')
            --n;
        return n;
    }
};

struct DeliveryEnd {
    uint64_t events = 0;
    bool ended = false;     // the head became null: the parse ran to its last event
    bool terminal = false;  // a record with code -1 came: nothing may be touched after it
};

// Calls the entry from the first call until the head becomes null, `onEvent`
// (bool(const Delivered &)) returns false, or `limit` events came; a parse
// left early is ended by the clean-up call. Then frees the last text, as the
// run-time does. After a record with code -1 the loop makes no further call
// and frees nothing: such a record tells the caller to stop touching the
// parse's items.
template <typename OnEvent>
DeliveryEnd deliver(const void *document, uint32_t length, uint32_t options, OnEvent &&onEvent,
                    uint64_t limit = 1000000)
{
    DeliveryEnd end;
    xd_parse_info *state = nullptr;
    void *documentAddress = const_cast<void *>(document);
    void *text = nullptr;
    uint32_t textLength = 0;
    unsigned char code[4] = {};
    char name[CBLXML_EVENT_NAME_LEN];
    bool more = true;
    do {
        std::memset(name, ' ', sizeof name);
        CBL_XMLPARSE_INTERFACE(&state, &documentAddress, &text, &length, &textLength, code, name,
                               &options);
        ++end.events;
        const Delivered event{name, big_endian_code(code), text, textLength};
        more = onEvent(event) && end.events < limit;
        if (event.code == -1) {
            end.terminal = true;
            return end;
        }
    } while (state != nullptr && more);
    end.ended = state == nullptr;
    if (state != nullptr)
        CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr, nullptr);
    std::free(text);
    return end;
}

}  // namespace cblxml_support

#endif
