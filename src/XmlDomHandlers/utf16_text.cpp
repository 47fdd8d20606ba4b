// The UTF-16 conversion routine of the handler: the document (or a part of
// it) as UTF-16 units, through the transcoder when there is one.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "platform/platform.h"
#include "platform/unicode.h"

namespace cblxml {

XMLCh *XmlDomHandlers::toUtf16(const unsigned char *source, uint32_t &length)
{
    const size_t room = size_t{length} + 1;
    auto *out = static_cast<XMLCh *>(std::malloc(room * sizeof(XMLCh)));
    if (out == nullptr)
        throw std::bad_alloc();
    out[length] = 0;

    // The parser's UTF-8 transcoder throws at the first malformed byte and
    // converts nothing of its chunk; the platform's conversion gives the same
    // units for well-formed text and keeps going past a bad byte (which the
    // parser reports itself). A document that declares a single-byte
    // encoding is first read this way, before its declaration is known.
    const bool utf8 = transcoder != nullptr &&
                      xercesc::XMLString::equals(transcoder->getEncodingName(), u"UTF-8");
    if (transcoder != nullptr && !utf8) {
        // Every supported encoding takes at least one byte per UTF-16 unit, so
        // `room` units always hold the whole document. One call converts at
        // most the transcoder's block size: a multibyte transcoder keeps a
        // per-unit table of that size and would write past it otherwise.
        // Unused units keep the space-filled pattern of the conversion buffer.
        std::memset(out, 0x20, room * sizeof(XMLCh));
        out[length] = 0;
        std::unique_ptr<unsigned char[]> sizes(new (std::nothrow) unsigned char[room]);
        if (sizes == nullptr) {
            std::free(out);
            throw std::bad_alloc();
        }
        const XMLSize_t block = transcoder->getBlockSize();
        XMLSize_t produced = 0;
        XMLSize_t eaten = 0;
        try {
            while (eaten < length && produced < length) {
                XMLSize_t used = 0;
                const XMLSize_t want = std::min<XMLSize_t>(length - produced, block);
                XMLSize_t made = transcoder->transcodeFrom(source + eaten, length - eaten,
                                                           out + produced, want, used, sizes.get());
                if (used == 0 && made == 0)
                    break;  // an incomplete sequence at the end
                eaten += used;
                produced += made;
            }
        } catch (const xercesc::XMLException &) {
            // Malformed input: the text ends where the conversion stopped; the
            // parser reports the document error itself.
        } catch (...) {
            std::free(out);  // out of memory inside the transcoder
            throw;
        }
        out[produced] = 0;
        length = static_cast<uint32_t>(produced);
        return out;
    }
    // The platform's multibyte conversion: UTF-8, straight into the text.
    const size_t units =
        platform::utf8_to_utf16_into(reinterpret_cast<const char *>(source), length, out);
    out[units] = 0;
    length = static_cast<uint32_t>(units);
    return out;
}

void XmlDomHandlers::convertUpTo(size_t units) const
{
    // Bytes converted a step: about as many as units are wanted, within
    // these bounds (a prefix of the text costs little).
    constexpr size_t kSmallestStep = 4 * 1024;
    constexpr size_t kLargestStep = 256 * 1024;
    while (lazyBytes != nullptr && readyUnits < units) {
        const size_t wanted = units - readyUnits;
        const auto step = static_cast<uint32_t>(wanted < kSmallestStep  ? kSmallestStep
                                                : wanted > kLargestStep ? kLargestStep
                                                                        : wanted);
        uint32_t end = lazyLength - readyBytes > step ? readyBytes + step : lazyLength;
        // A step ends before a byte that is not a continuation byte: no
        // character reads such a byte as its own, so the steps decode as one
        // conversion of the whole document would.
        while (end < lazyLength && (lazyBytes[end] & 0xC0) == 0x80)
            ++end;
        readyUnits += static_cast<uint32_t>(
            platform::utf8_to_utf16_into(reinterpret_cast<const char *>(lazyBytes) + readyBytes,
                                         end - readyBytes, docText + readyUnits));
        readyBytes = end;
        if (readyBytes == lazyLength) {
            // The terminator goes last: the steps may write ahead of their
            // units.
            docTextLen = readyUnits;
            docText[docTextLen] = 0;
            lazyBytes = nullptr;
        }
    }
}

}  // namespace cblxml
