// The delivery for callers that pass plain values and own the text area.
#include <cstdlib>
#include <cstring>

#include "cblxml.h"

extern "C" void CBL_XMLPARSE_INTERFACE_WRAP(xd_parse_info **state, void *document_base,
                                            uint32_t document_offset, uint32_t document_length,
                                            void *text_area, uint32_t *text_length, void *code,
                                            void *event_base, uint32_t event_offset, uint32_t flags)
{
    try {
        void *document = document_base != nullptr
                             ? static_cast<char *>(document_base) + document_offset
                             : nullptr;
        char *event =
            event_base != nullptr ? static_cast<char *>(event_base) + event_offset : nullptr;
        // Null on every entry, so the delivery never frees a buffer here.
        void *text = nullptr;
        uint32_t length = 0;
        CBL_XMLPARSE_INTERFACE(state, &document, &text, &document_length, &length, code, event,
                               &flags);
        if (text_length != nullptr)
            std::memcpy(text_length, &length, sizeof length);  // need not be aligned
        // No buffer back (the clean-up call, END-OF-DOCUMENT): the area is
        // left untouched.
        if (text != nullptr && text_area != nullptr && length > 0)
            std::memcpy(text_area, text, length);
        std::free(text);
    } catch (...) {
    }
}
