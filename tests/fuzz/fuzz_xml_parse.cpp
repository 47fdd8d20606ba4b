// Fuzz target: XML PARSE as a COBOL run-time drives it. The first byte is
// the option word (its low five bits: national, EBCDIC data, tree mode,
// validation, validation only) with three bits choosing how the document is
// formed and delivered; the rest is the document.
//   bit 5: the rest is UTF-8 text put into the option word's form (national
//          UTF-16, or EBCDIC) as a program would hold it; else raw bytes;
//   bits 6-7: 0 every event through CBL_XMLPARSE_INTERFACE, 1 through the
//          wrapper entry, 2 stop after a few events and free what is left,
//          3 the engine entry straight into an event list.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "cblxml.h"
#include "fuzz_input.h"
#include "parse_events.h"
#include "xml_delivery.h"

namespace {

void check_text(const void *text, uint32_t length)
{
    // Reading every byte lets the address sanitizer check the length the
    // entry reported against the buffer it handed out.
    volatile unsigned sum = 0;
    const auto *bytes = static_cast<const unsigned char *>(text);
    for (uint32_t i = 0; text != nullptr && i < length; ++i)
        sum = sum + bytes[i];
}

void deliver_all(const std::string &document, uint32_t options, size_t stopAfter)
{
    cblxml_support::deliver(
        document.data(), static_cast<uint32_t>(document.size()), options,
        [](const cblxml_support::Delivered &d) {
            check_text(d.text, d.length);
            return true;
        },
        stopAfter);
}

void deliver_wrapped(std::string document, uint32_t options)
{
    xd_parse_info *state = nullptr;
    // The caller's area holds the longest text; the document's length in
    // UTF-8 bounds every text a parse delivers.
    std::vector<char> area(document.size() * 4 + 64);
    uint32_t textLength = 0;
    unsigned char code[4];
    char name[CBLXML_EVENT_NAME_LEN];
    size_t delivered = 0;
    do {
        CBL_XMLPARSE_INTERFACE_WRAP(&state, document.data(), 0,
                                    static_cast<uint32_t>(document.size()), area.data(),
                                    &textLength, code, name, 0, options);
        ++delivered;
    } while (state != nullptr && delivered < 1000000);
    if (state != nullptr)
        CBL_XMLPARSE_INTERFACE_WRAP(&state, nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr, 0,
                                    0);
}

void engine_events(const std::string &document, uint32_t options)
{
    auto *sentinel = static_cast<xd_parse_info *>(std::calloc(1, sizeof(xd_parse_info)));
    if (sentinel == nullptr)
        return;
    kvt_xe_xmlparse(sentinel, document.data(), static_cast<uint32_t>(document.size()), options);
    for (xd_parse_info *r = sentinel->next; r != nullptr;) {
        xd_parse_info *next = r->next;
        check_text(r->event_name, CBLXML_EVENT_NAME_LEN);
        kvt_xe_xmlparse_delete_info(r);
        r = next;
    }
    std::free(sentinel);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    cblxml_fuzz::Input input(data, size);
    const uint8_t head = input.byte();
    const uint32_t options = head & 31u;
    std::string document = input.rest();
    if (head & 0x20)
        document = cblxml_test::in_form(document, options);
    if (options & CBLXML_OPT_TREE) {
        const cblxml_test::TreeParse tree(document, options);
    }
    switch (head >> 6) {
    case 0:
        deliver_all(document, options, 1000000);
        break;
    case 1:
        deliver_wrapped(document, options);
        break;
    case 2:
        deliver_all(document, options, 1 + document.size() % 7);
        break;
    default:
        engine_events(document, options);
        break;
    }
    return 0;
}
