#include "xexml/xml_outbuf.h"

#include <cstdlib>
#include <cstring>

namespace cblxml::xexml {

namespace {

bool stream_writable(const cblxml_stream *stream)
{
    return stream != nullptr && stream->ops != nullptr && stream->ops->write != nullptr;
}

}  // namespace

bool outbuf_create(xml_outbuf &buf, const xmlio_fcb *fcb)
{
    buf = xml_outbuf{};
    buf.stream = fcb->stream;
    buf.fixed = (fcb->flags & XMLIO_IN_MEMORY) != 0;
    buf.streaming = !buf.fixed && stream_writable(fcb->stream) &&
                    (fcb->flags & (XMLIO_VERIFY | XMLIO_URL)) == 0;
    buf.capacity = buf.fixed ? fcb->name_len : buf.streaming ? kStreamBlock : kOutBlock;
    // One byte at least, so that an item of size 0 still has an area.
    buf.data = static_cast<char *>(std::malloc(buf.capacity + 1));
    if (buf.data == nullptr)
        return false;
    // The data item receives the whole area: a short text ends in spaces.
    if (buf.fixed)
        std::memset(buf.data, ' ', buf.capacity);
    return true;
}

namespace {

void write_out(cblxml_stream *stream, const char *text, size_t n)
{
    // The stream takes 32-bit lengths: a longer text goes in pieces.
    while (n > 0) {
        const auto piece = static_cast<uint32_t>(n > 0x40000000u ? 0x40000000u : n);
        if (stream->ops->write(stream, text, piece) != 0)
            return;
        text += piece;
        n -= piece;
    }
}

// Grows a growable area to hold `need` bytes: the next power-of-two count of
// blocks, so that the text is copied a bounded number of times in all.
bool grow(xml_outbuf &buf, size_t need)
{
    size_t capacity = buf.capacity;
    while (capacity < need) {
        if (capacity > (static_cast<size_t>(-1) >> 2))
            return false;
        capacity *= 2;
    }
    char *area = static_cast<char *>(std::realloc(buf.data, capacity + 1));
    if (area == nullptr)
        return false;
    buf.data = area;
    buf.capacity = capacity;
    return true;
}

}  // namespace

void outbuf_append_slow(xml_outbuf &buf, const char *text, size_t n)
{
    if (n == 0)
        return;
    buf.produced += n;
    if (n >= 2) {
        buf.last[0] = text[n - 2];
        buf.last[1] = text[n - 1];
    } else {
        buf.last[0] = buf.last[1];
        buf.last[1] = text[0];
    }
    if (buf.data == nullptr || buf.failed)
        return;
    if (buf.used + n > buf.capacity) {
        if (buf.fixed) {
            if (!stream_writable(buf.stream)) {
                // Text past the end of the data item is lost without notice;
                // the count still includes it.
                const size_t room = buf.capacity - buf.used;
                std::memcpy(buf.data + buf.used, text, room);
                buf.used = buf.capacity;
                return;
            }
            write_out(buf.stream, buf.data, buf.used);
            buf.used = 0;
            if (n > kOutBlock || n > buf.capacity) {
                write_out(buf.stream, text, n);
                return;
            }
        } else if (buf.streaming) {
            write_out(buf.stream, buf.data, buf.used);
            buf.used = 0;
            if (n > buf.capacity) {
                write_out(buf.stream, text, n);
                return;
            }
        } else if (!grow(buf, buf.used + n)) {
            buf.failed = true;
            return;
        }
    }
    std::memcpy(buf.data + buf.used, text, n);
    buf.used += n;
}

void outbuf_close(xml_outbuf &buf, int32_t status)
{
    if (stream_writable(buf.stream) && status != XMLIO_ST_PARSE_FAILED) {
        if (buf.used > 0)
            write_out(buf.stream, buf.data, buf.used);
        if (buf.stream->ops->flush != nullptr)
            buf.stream->ops->flush(buf.stream);
    }
    std::free(buf.data);
    buf.data = nullptr;
    buf.used = 0;
}

}  // namespace cblxml::xexml
