// Conversion of the parser's UTF-16 text into the program's representation.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_pool.h"
#include "platform/platform.h"
#include "platform/unicode.h"

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

namespace {

bool is_surrogate(XMLCh c) { return c >= 0xD800 && c <= 0xDFFF; }

constexpr size_t kNotPlain = SIZE_MAX;
// The largest block that a text is written into before its size is known.
constexpr size_t kLargestDirectText = 16 * 1024;

// The UTF-8 form of a text without zero units and surrogates, as the UTF-8
// transcoder writes it, into `out` (room for 3 x count bytes); returns its
// size, or kNotPlain when the text holds either (the transcoder then
// decides).
size_t plain_utf8(const XMLCh *source, size_t count, char *out)
{
    auto *put = reinterpret_cast<unsigned char *>(out);
    for (size_t i = 0; i < count; ++i) {
        const size_t run =
            platform::narrow_ascii(source + i, count - i, reinterpret_cast<char *>(put));
        put += run;
        i += run;
        if (i == count)
            break;
        const XMLCh c = source[i];
        if (c == 0 || is_surrogate(c))
            return kNotPlain;
        if (c < 0x800) {
            *put++ = static_cast<unsigned char>(0xC0 | (c >> 6));
            *put++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
        } else {
            *put++ = static_cast<unsigned char>(0xE0 | (c >> 12));
            *put++ = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
            *put++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
        }
    }
    return static_cast<size_t>(put - reinterpret_cast<unsigned char *>(out));
}

// National text that the data map stores unit for unit: no zero unit, no
// surrogate.
bool plain_national(const XMLCh *source, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        if (source[i] == 0 || is_surrogate(source[i]))
            return false;
    }
    return true;
}

}  // namespace

bool XmlDomHandlers::buildAsciiTable()
{
    // Only the single-byte EBCDIC pages the library names: their transcoders
    // convert every character on its own, without shift states.
    const XMLCh *name = transcoder->getEncodingName();
    if (!xercesc::XMLString::equals(name, u"IBM037") &&
        !xercesc::XMLString::equals(name, u"IBM1140"))
        return false;
    for (XMLCh c = 1; c < 0x80; ++c) {
        XMLByte out[8] = {};
        XMLSize_t eaten = 0;
        try {
            const XMLSize_t made = transcoder->transcodeTo(&c, 1, out, sizeof out, eaten,
                                                           xercesc::XMLTranscoder::UnRep_RepChar);
            if (made != 1 || eaten != 1 || out[0] == 0)
                return false;
        } catch (const xercesc::XMLException &) {
            return false;
        }
        asciiBytes[c] = static_cast<char>(out[0]);
    }
    return true;
}

char *XmlDomHandlers::cobolText(const XMLCh *source, size_t count, int32_t nationalFlag)
{
    if (asciiTranscoder && nationalFlag == 0 && mapHandle == nullptr) {
        // With a pool of reused blocks a text is written straight into one
        // large enough for any outcome; else into the scratch area and then
        // into a block of its exact size.
        const size_t most = count * 3 + 1;
        const bool direct = textPool != nullptr && most <= kLargestDirectText;
        if (!direct && scratch.size() < most)
            scratch.resize(most);
        char *out = direct ? textBlock(most) : scratch.data();
        const size_t size = plain_utf8(source, count, out);
        if (size != kNotPlain && direct) {
            out[size] = 0;
            return out;
        }
        if (size != kNotPlain) {
            char *text = textBlock(size + 1);
            std::memcpy(text, out, size);
            text[size] = 0;
            return text;
        }
        if (direct)
            dropText(out);
    } else if (mapHandle != nullptr && idesc.class_code == DM_CLASS_NATIONAL) {
        if (plain_national(source, count)) {
            char *text = textBlock(count * 2 + 2);
            std::memcpy(text, source, count * 2);
            text[count * 2] = text[count * 2 + 1] = 0;
            return text;
        }
    } else if (transcoder != nullptr && nationalFlag == 0 && mapHandle == nullptr) {
        // A single-byte page: ASCII text goes through a table made once from
        // the transcoder's own answers.
        if (asciiTable < 0)
            asciiTable = buildAsciiTable() ? 1 : 0;
        if (asciiTable == 1) {
            char *text = textBlock(count + 1);
            size_t i = 0;
            for (; i < count && source[i] != 0 && source[i] < 0x80; ++i)
                text[i] = asciiBytes[source[i]];
            if (i == count) {
                text[count] = 0;
                return text;
            }
            dropText(text);  // not all ASCII: the transcoder converts it below
        }
    }
    const std::string_view text = convertedView(source, count, nationalFlag);
    const size_t terminator = nationalText(nationalFlag) ? 2 : 1;
    char *copy = textBlock(text.size() + terminator);
    std::memcpy(copy, text.data(), text.size());
    std::memset(copy + text.size(), 0, terminator);
    return copy;
}

bool XmlDomHandlers::nationalText(int32_t nationalFlag) const
{
    return nationalFlag == 1 || (mapHandle != nullptr && idesc.class_code == DM_CLASS_NATIONAL);
}

std::string_view XmlDomHandlers::convertedView(const XMLCh *source, size_t count,
                                               int32_t nationalFlag)
{
    const size_t room = cobolTextRoom(count);
    if (scratch.size() < room)
        scratch.resize(room < scratch.size() * 2 ? scratch.size() * 2 : room);
    std::memset(scratch.data(), 0, room);
    WCharToCOBOL1(transcoder, source, scratch.data(), static_cast<int32_t>(count), nationalFlag);
    // The text ends at its terminator: a zero unit for national text (and for
    // the data map's national items), a zero byte otherwise.
    if (nationalText(nationalFlag)) {
        size_t size = 0;
        while (size + 1 < room && (scratch[size] != 0 || scratch[size + 1] != 0))
            size += 2;
        return {scratch.data(), size};
    }
    return {scratch.data(), std::strlen(scratch.data())};
}

std::string_view XmlDomHandlers::cobolView(const XMLCh *source, size_t count, int32_t nationalFlag)
{
    // The same paths as cobolText, written into the scratch area.
    if (asciiTranscoder && nationalFlag == 0 && mapHandle == nullptr) {
        if (scratch.size() < count * 3 + 1)
            scratch.resize(count * 3 + 1);
        const size_t size = plain_utf8(source, count, scratch.data());
        if (size != kNotPlain) {
            scratch[size] = 0;
            return {scratch.data(), size};
        }
    } else if (mapHandle != nullptr && idesc.class_code == DM_CLASS_NATIONAL) {
        if (plain_national(source, count)) {
            if (scratch.size() < count * 2 + 2)
                scratch.resize(count * 2 + 2);
            std::memcpy(scratch.data(), source, count * 2);
            scratch[count * 2] = scratch[count * 2 + 1] = 0;
            return {scratch.data(), count * 2};
        }
    } else if (transcoder != nullptr && nationalFlag == 0 && mapHandle == nullptr) {
        if (asciiTable < 0)
            asciiTable = buildAsciiTable() ? 1 : 0;
        if (asciiTable == 1) {
            if (scratch.size() < count + 1)
                scratch.resize(count + 1);
            size_t i = 0;
            for (; i < count && source[i] != 0 && source[i] < 0x80; ++i)
                scratch[i] = asciiBytes[source[i]];
            if (i == count) {
                scratch[count] = 0;
                return {scratch.data(), count};
            }
        }
    }
    return convertedView(source, count, nationalFlag);
}

}  // namespace cblxml
