// Conversion of the parser's UTF-16 text into the program's representation.
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <xercesc/util/XMLException.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "platform/platform.h"

namespace cblxml {

size_t XmlDomHandlers::cobolTextRoom(size_t count)
{
    // Four bytes per unit hold every code page a transcoder writes (UTF-8
    // needs three per unit, a few multibyte pages four), plus a zero unit.
    return count * 4 + 2;
}

void XmlDomHandlers::WCharToCOBOL1(xercesc::XMLTranscoder *t, const XMLCh *source, char *out,
                                   int32_t count, int32_t nationalFlag)
{
    if (count <= 0 || source == nullptr)
        return;
    const size_t units = static_cast<size_t>(count);
    const size_t limit = cobolTextRoom(units) - 2;
    if (mapHandle != nullptr) {
        // The data map stores the text in the program's code page (or as
        // national text); the item is sized to the exact text so that it is
        // neither padded nor cut.
        std::string utf8 = platform::utf16_to_utf8(source, units);
        dm_item_desc item = idesc;
        item.length = platform::dm_stored_size(mapHandle, &idesc, utf8.data(),
                                               static_cast<uint32_t>(utf8.size()));
        if (item.length > limit)
            item.length = static_cast<uint32_t>(limit);
        platform::set_cbl_data(mapHandle, &item, out, DM_FORM_UTF8, utf8.data(),
                               static_cast<uint32_t>(utf8.size()));
        return;
    }
    if (t != nullptr) {
        XMLSize_t eaten = 0;
        try {
            t->transcodeTo(source, units, reinterpret_cast<XMLByte *>(out), limit, eaten,
                           xercesc::XMLTranscoder::UnRep_RepChar);
            return;
        } catch (const xercesc::XMLException &) {
            std::memset(out, 0, limit);  // fall through to the platform's conversion
        }
    }
    if (nationalFlag == 1) {
        std::memcpy(out, source, units * 2);
        return;
    }
    std::string utf8 = platform::utf16_to_utf8(source, units);
    std::memcpy(out, utf8.data(), utf8.size() < limit ? utf8.size() : limit);
}

char *XmlDomHandlers::cobolText(const XMLCh *source, size_t count, int32_t nationalFlag)
{
    if (asciiTranscoder && nationalFlag == 0 && mapHandle == nullptr) {
        // Most texts are plain ASCII, which UTF-8 keeps byte for byte: they
        // are narrowed directly. Anything else takes the transcoder.
        char *text = static_cast<char *>(std::malloc(count + 1));
        if (text == nullptr)
            throw std::bad_alloc();
        size_t i = 0;
        for (; i < count; ++i) {
            const XMLCh c = source[i];
            if (c >= 0x80 || c == 0)
                break;
            text[i] = static_cast<char>(c);
        }
        if (i == count) {
            text[count] = 0;
            return text;
        }
        std::free(text);
    }
    const size_t room = cobolTextRoom(count);
    if (scratch.size() < room)
        scratch.resize(room < scratch.size() * 2 ? scratch.size() * 2 : room);
    std::memset(scratch.data(), 0, room);
    WCharToCOBOL1(transcoder, source, scratch.data(), static_cast<int32_t>(count), nationalFlag);
    // The text ends at its terminator: a zero unit for national text (and for
    // the data map's national items), a zero byte otherwise.
    size_t size = 0;
    if (nationalFlag == 1 || (mapHandle != nullptr && idesc.class_code == DM_CLASS_NATIONAL)) {
        while (size + 1 < room && (scratch[size] != 0 || scratch[size + 1] != 0))
            size += 2;
        char *text = static_cast<char *>(std::malloc(size + 2));
        if (text == nullptr)
            throw std::bad_alloc();
        std::memcpy(text, scratch.data(), size);
        text[size] = text[size + 1] = 0;
        return text;
    }
    size = std::strlen(scratch.data());
    char *text = static_cast<char *>(std::malloc(size + 1));
    if (text == nullptr)
        throw std::bad_alloc();
    std::memcpy(text, scratch.data(), size + 1);
    return text;
}

}  // namespace cblxml
