// The data map's C entries: DMInit, DMTerm, DMGetCblData, DMSetCblData, and
// dm_stored_size for the parser. They check their arguments, pick the item's
// converter and never let an exception reach the caller.
#include <cstring>
#include <limits>
#include <new>
#include <strings.h>

#include "platform/datamap.h"
#include "platform/platform.h"

namespace cblxml::platform {
namespace {

constexpr const char *kDefaultEbcdicCodePage = "IBM-1140";

bool program_data_is_ebcdic()
{
    const char *setting = get_env("CBLXML_PROGRAM_DATA");
    return setting != nullptr && strcasecmp(setting, "EBCDIC") == 0;
}

std::string ebcdic_code_page_name()
{
    const char *name = get_env("CBLXML_EBCDIC_CODEPAGE");
    return name != nullptr && *name != '\0' ? name : kDefaultEbcdicCodePage;
}

// A decimal point or grouping character must be printable ASCII; anything
// else falls back to the default rather than making numbers unreadable.
char text_character(int32_t code, char fallback)
{
    return code > ' ' && code < 0x7F ? static_cast<char>(code) : fallback;
}

bool known_form(int32_t form)
{
    return form == DM_FORM_UTF8 || form == DM_FORM_FLOAT || form == DM_FORM_DOUBLE;
}

// Leaves an empty text: a terminator when there is room for one, and a
// length of 0 either way.
void deliver_nothing(int32_t form, void *out, uint32_t *out_length)
{
    if (*out_length > 0 && form == DM_FORM_UTF8)
        static_cast<char *>(out)[0] = '\0';
    *out_length = 0;
}

// Hands the converted text to the caller: form 64 adds a NUL that counts in
// the length. Nothing is written beyond the room the caller declared.
// The item's text (UTF-8) appended to `text`; false when the item's class
// has no conversion or the conversion fails.
bool item_text(void *handle, const dm_item_desc &desc, const void *item, std::string &text)
{
    auto &map = *static_cast<DataMap *>(handle);
    const ItemConverter *converter = find_item_converter(desc);
    if (converter == nullptr)
        return false;
    std::lock_guard<std::mutex> guard(map.mutex);
    const ItemView view{map, desc, desc.length};
    return converter->to_text(view, static_cast<const unsigned char *>(item), text);
}

int32_t deliver(const std::string &text, int32_t form, void *out, uint32_t *out_length)
{
    const size_t room = *out_length;
    const size_t terminator = form == DM_FORM_UTF8 ? 1 : 0;
    const size_t needed = text.size() + terminator;
    if (needed > room || needed > std::numeric_limits<uint32_t>::max()) {
        deliver_nothing(form, out, out_length);
        return 1;
    }
    std::memcpy(out, text.data(), text.size());
    if (terminator != 0)
        static_cast<char *>(out)[text.size()] = '\0';
    *out_length = static_cast<uint32_t>(needed);
    return 0;
}

}  // namespace

uint32_t dm_stored_size(void *handle, const dm_item_desc *desc, const char *utf8, uint32_t length)
{
    if (handle == nullptr || desc == nullptr || (utf8 == nullptr && length != 0))
        return 0;
    try {
        auto &map = *static_cast<DataMap *>(handle);
        const ItemConverter *converter = find_item_converter(*desc);
        if (converter == nullptr || converter->stored_size == nullptr)
            return desc->length;
        std::lock_guard<std::mutex> guard(map.mutex);
        const ItemView view{map, *desc, desc->length};
        const size_t size = converter->stored_size(view, std::string_view(utf8, length));
        return size > std::numeric_limits<uint32_t>::max() ? std::numeric_limits<uint32_t>::max()
                                                           : static_cast<uint32_t>(size);
    } catch (const std::bad_alloc &) {
        throw;
    } catch (...) {
        return 0;
    }
}

}  // namespace cblxml::platform

using cblxml::platform::DataMap;
using cblxml::platform::ItemConverter;
using cblxml::platform::ItemView;

extern "C" CBLXML_API void *DMInit(int32_t kind, int32_t, int32_t, int32_t decimal_point,
                                   int32_t grouping)
{
    namespace p = cblxml::platform;
    try {
        auto map = std::make_unique<DataMap>();
        map->national_document = (kind & 1) == 0;
        const bool ebcdic = (kind & 2) != 0 || p::program_data_is_ebcdic();
        map->code_page = ebcdic ? p::open_ebcdic_code_page(p::ebcdic_code_page_name())
                                : p::open_native_code_page();
        if (!map->code_page)
            return nullptr;
        map->decimal_point = decimal_point == 0 ? '.' : p::text_character(decimal_point, '.');
        // DECIMAL-POINT IS COMMA swaps the two roles.
        const char default_grouping = map->decimal_point == ',' ? '.' : ',';
        map->grouping =
            grouping == 0 ? default_grouping : p::text_character(grouping, default_grouping);
        return map.release();
    } catch (...) {
        return nullptr;
    }
}

extern "C" CBLXML_API void DMTerm(void *handle) { delete static_cast<DataMap *>(handle); }

extern "C" CBLXML_API int32_t DMGetCblData(void *handle, const dm_item_desc *desc, const void *item,
                                           int32_t form, void *text, uint32_t *text_length)
{
    try {
        return cblxml::platform::get_cbl_data(handle, desc, item, form, text, text_length);
    } catch (...) {
        if (text_length != nullptr)
            *text_length = 0;
        return 1;
    }
}

int32_t cblxml::platform::get_cbl_data(void *handle, const dm_item_desc *desc, const void *item,
                                       int32_t form, void *text, uint32_t *text_length)
{
    if (text_length == nullptr)
        return 1;
    if (handle == nullptr || desc == nullptr || text == nullptr ||
        (item == nullptr && desc->length != 0) || !cblxml::platform::known_form(form)) {
        *text_length = 0;
        return 1;
    }
    try {
        std::string converted;
        if (!cblxml::platform::item_text(handle, *desc, item, converted)) {
            cblxml::platform::deliver_nothing(form, text, text_length);
            return 1;
        }
        return cblxml::platform::deliver(converted, form, text, text_length);
    } catch (const std::bad_alloc &) {
        throw;
    } catch (...) {
        *text_length = 0;
        return 1;
    }
}

bool cblxml::platform::get_cbl_text(void *handle, const dm_item_desc *desc, const void *item,
                                    std::string &text)
{
    text.clear();
    return append_cbl_text(handle, desc, item, text);
}

bool cblxml::platform::append_cbl_text(void *handle, const dm_item_desc *desc, const void *item,
                                       std::string &text)
{
    if (handle == nullptr || desc == nullptr || (item == nullptr && desc->length != 0))
        return false;
    const size_t base = text.size();
    try {
        if (cblxml::platform::item_text(handle, *desc, item, text))
            return true;
    } catch (const std::bad_alloc &) {
        throw;
    } catch (...) {
        // A failed conversion, as below.
    }
    text.resize(base);
    return false;
}

extern "C" CBLXML_API int32_t DMSetCblData(void *handle, const dm_item_desc *desc, void *item,
                                           int32_t form, const void *text, uint32_t text_length)
{
    try {
        return cblxml::platform::set_cbl_data(handle, desc, item, form, text, text_length);
    } catch (...) {
        return 1;  // the item was cleared
    }
}

int32_t cblxml::platform::set_cbl_data(void *handle, const dm_item_desc *desc, void *item,
                                       int32_t form, const void *text, uint32_t text_length)
{
    if (handle == nullptr || desc == nullptr || (item == nullptr && desc->length != 0))
        return 1;
    const ItemConverter *converter = cblxml::platform::find_item_converter(*desc);
    // An unknown kind of item is left as it is: any bytes written into a
    // layout we do not understand could be worse than none.
    if (converter == nullptr)
        return 1;
    auto &map = *static_cast<DataMap *>(handle);
    auto *bytes = static_cast<unsigned char *>(item);
    const ItemView view{map, *desc, desc->length};
    try {
        std::lock_guard<std::mutex> guard(map.mutex);
        const bool usable =
            cblxml::platform::known_form(form) && (text != nullptr || text_length == 0);
        if (usable) {
            const std::string_view source(static_cast<const char *>(text),
                                          text != nullptr ? text_length : 0);
            if (converter->from_text(view, bytes, source))
                return 0;
        }
        converter->clear(view, bytes);
        return 1;
    } catch (...) {
        bool outOfMemory = false;
        try {
            throw;
        } catch (const std::bad_alloc &) {
            outOfMemory = true;
        } catch (...) {
        }
        try {
            converter->clear(view, bytes);
        } catch (...) {
        }
        if (outOfMemory)
            throw std::bad_alloc();
        return 1;
    }
}
