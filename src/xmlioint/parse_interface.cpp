// The XML PARSE delivery entry: parses on the first call, then hands out one
// event per call and frees it.
#include <cstdlib>
#include <cstring>

#include "XmlDomHandlers/event_record.h"
#include "xmlioint/text_length.h"

namespace cblxml {
namespace {

void free_list(xd_parse_info *record)
{
    while (record != nullptr) {
        xd_parse_info *next = record->next;
        kvt_xe_xmlparse_delete_info(record);
        record = next;
    }
}

// A new buffer of exactly `size` bytes copied from `source` (null source:
// zeros). A zero size still gets a one-byte buffer holding zero, so that the
// program always receives an address.
char *delivered_copy(const void *source, size_t size)
{
    char *buffer = static_cast<char *>(std::malloc(size > 0 ? size : 1));
    if (buffer == nullptr)
        return nullptr;
    if (size == 0)
        buffer[0] = 0;
    else if (source != nullptr)
        std::memcpy(buffer, source, size);
    else
        std::memset(buffer, 0, size);
    return buffer;
}

// Starts the parse; returns the first record. A parse that left nothing
// behind (a validating parse without content events reports only errors)
// still ends the program's parse: with END-OF-DOCUMENT when it succeeded,
// else with an exception.
xd_parse_info *start_parse(const void *document, uint32_t length, uint32_t flags)
{
    auto *sentinel = static_cast<xd_parse_info *>(std::calloc(1, sizeof(xd_parse_info)));
    if (sentinel == nullptr)
        return nullptr;
    const int32_t result = kvt_xe_xmlparse(sentinel, document, length, flags);
    xd_parse_info *first = sentinel->next;
    std::free(sentinel);
    if (first == nullptr) {
        first = new_event(result == 0 ? "END-OF-DOCUMENT" : "EXCEPTION");
        if (result != 0) {
            first->code = 201;
            first->text = copy_text(nullptr, 0, 2);
        }
    }
    first->prev = nullptr;
    return first;
}

// The program's items need not be aligned for their type: every value
// passes through memcpy.
template <typename T> T load(const void *item)
{
    T value{};
    if (item != nullptr)
        std::memcpy(&value, item, sizeof value);
    return value;
}

template <typename T> void store(void *item, T value)
{
    if (item != nullptr)
        std::memcpy(item, &value, sizeof value);
}

void deliver(void *state, void *textHolder, void *textLength, void *code, char *eventName,
             const void *document, const void *documentLength, uint32_t flags)
{
    xd_parse_info *head = load<xd_parse_info *>(state);
    void *previousText = load<void *>(textHolder);

    if (code == nullptr && eventName == nullptr) {
        // The clean-up call: the caller's last buffer stays the caller's.
        free_list(head);
        store<xd_parse_info *>(state, nullptr);
        return;
    }

    const bool first = head == nullptr;
    if (first) {
        uint32_t length = load<uint32_t>(documentLength);
        head = start_parse(document, length, flags);
        if (head == nullptr)
            return;
    } else if (previousText != nullptr) {
        // The only place where a buffer handed to the caller is freed.
        std::free(previousText);
        previousText = nullptr;
        store<void *>(textHolder, nullptr);
    }
    xd_parse_info *record = head;
    if (eventName != nullptr)
        std::memcpy(eventName, record->event_name, CBLXML_EVENT_NAME_LEN);

    uint32_t size = 0;
    char *text = nullptr;
    if (first && event_is(record, "START-OF-DOCUMENT")) {
        size = load<uint32_t>(documentLength);
        text = delivered_copy(document, document != nullptr ? size : 0);
    } else if (event_is(record, "END-OF-DOCUMENT") && record->code != -1) {
        size = 0;
    } else {
        size = event_text_length(record, flags);
        text = delivered_copy(record->text, size);
    }
    store(textLength, size);
    if (code != nullptr)
        kvt_put4ws(code, static_cast<uint32_t>(record->code));

    // A record with code -1 ends the list: the head moves on like any other
    // so that the caller never holds a freed record.
    head = record->next;
    kvt_xe_xmlparse_delete_info(record);
    if (head != nullptr)
        head->prev = nullptr;
    store(state, head);
    if (textHolder != nullptr)
        store<void *>(textHolder, text);
    else
        std::free(text);
}

} // namespace
} // namespace cblxml

extern "C" void CBL_XMLPARSE_INTERFACE(xd_parse_info **state, void **document, void **text,
                                       uint32_t *document_length, uint32_t *text_length,
                                       void *code, char *event_name, uint32_t *flags)
{
    try {
        cblxml::deliver(state, text, text_length, code, event_name,
                        cblxml::load<void *>(document), document_length,
                        cblxml::load<uint32_t>(flags));
    } catch (...) {
        // Nothing crosses into the program; an allocation failure while
        // delivering leaves the list as it was.
    }
}

extern "C" void kvt_xe_xmlparse_delete_info(xd_parse_info *record)
{
    if (record == nullptr)
        return;
    std::free(record->event_name);
    std::free(record->text);
    std::free(record);
}

extern "C" void kvt_put4ws(void *destination, uint32_t value)
{
    if (destination == nullptr)
        return;
    auto *bytes = static_cast<unsigned char *>(destination);
    bytes[0] = static_cast<unsigned char>(value >> 24);
    bytes[1] = static_cast<unsigned char>(value >> 16);
    bytes[2] = static_cast<unsigned char>(value >> 8);
    bytes[3] = static_cast<unsigned char>(value);
}
