#include "XmlParseErr/event_record.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace cblxml {

xd_parse_info *new_event(const char *name)
{
    auto *record = static_cast<xd_parse_info *>(std::calloc(1, sizeof(xd_parse_info)));
    char *nameBuffer = static_cast<char *>(std::malloc(CBLXML_EVENT_NAME_LEN));
    if (record == nullptr || nameBuffer == nullptr) {
        std::free(record);
        std::free(nameBuffer);
        throw std::bad_alloc();
    }
    record->event_name = nameBuffer;
    rename_event(record, name);
    return record;
}

void rename_event(xd_parse_info *record, const char *name)
{
    // One pass: the name, then spaces to the end of the 30 bytes.
    char *out = record->event_name;
    size_t i = 0;
    for (; i < CBLXML_EVENT_NAME_LEN && name[i] != 0; ++i)
        out[i] = name[i];
    for (; i < CBLXML_EVENT_NAME_LEN; ++i)
        out[i] = ' ';
}

char *copy_text(const void *bytes, size_t size, size_t width)
{
    char *text = static_cast<char *>(std::calloc(size + width, 1));
    if (text == nullptr)
        throw std::bad_alloc();
    if (size > 0)
        std::memcpy(text, bytes, size);
    return text;
}

}  // namespace cblxml
