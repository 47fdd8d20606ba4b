// The output buffer of the XML writer: the text of one document, put to the
// file block by block as it is produced, or gathered whole in memory when it
// must be seen whole first (the re-parse check, an HTTP URL), or cut to the
// size of the data item that receives it.
#ifndef CBLXML_XEXML_XML_OUTBUF_H
#define CBLXML_XEXML_XML_OUTBUF_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cblxml.h"

namespace cblxml::xexml {

constexpr size_t kOutBlock = 4096;
// The block a file's text is written in as it is produced.
constexpr size_t kStreamBlock = 64 * 1024;

struct xml_outbuf {
    char *data = nullptr;             // owned; malloc
    size_t used = 0;                  // bytes of text in data
    cblxml_stream *stream = nullptr;  // borrowed from the control block
    bool fixed = false;               // a data item's size: excess text is lost
    size_t capacity = 0;              // bytes allocated (fixed: the item's size)
    uint64_t produced = 0;            // every byte appended, kept or not
    char last[2] = {0, 0};            // the last two bytes appended
    bool failed = false;              // memory ran out; the text is incomplete
    bool streaming = false;           // full blocks go to the stream at once
};

// Sets up `buf` for a document of the block: fixed at name_len bytes filled
// with spaces for a data item (flag XMLIO_IN_MEMORY); streaming to a
// writable stream unless the text must be whole before it is written (flag
// XMLIO_VERIFY, or an HTTP URL, which is never written); else growable.
// False when memory runs out (nothing is held then).
bool outbuf_create(xml_outbuf &buf, const xmlio_fcb *fcb);
// Appends `n` bytes and counts them. A fixed buffer keeps what fits (after
// writing its text to a stream, when it has one); a growable one at least
// doubles when it grows, so a document of n bytes is copied O(n) times in
// all. A failed allocation sets `failed` and drops the bytes.
void outbuf_append_slow(xml_outbuf &buf, const char *text, size_t n);
// The common case inline: the bytes fit the area as it is.
inline void outbuf_append(xml_outbuf &buf, const char *text, size_t n)
{
    if (n == 0)
        return;
    if (buf.data == nullptr || buf.failed || n > buf.capacity - buf.used) {
        outbuf_append_slow(buf, text, n);
        return;
    }
    buf.produced += n;
    buf.last[0] = n >= 2 ? text[n - 2] : buf.last[1];
    buf.last[1] = text[n - 1];
    std::memcpy(buf.data + buf.used, text, n);
    buf.used += n;
}
// True when the text appended so far ends with CR LF.
inline bool outbuf_ends_crlf(const xml_outbuf &buf)
{
    return buf.produced >= 2 && buf.last[0] == '\r' && buf.last[1] == '\n';
}
// Writes the text still held to the stream (unless status is -9) and
// flushes it, then frees the area. A streaming buffer has written its full
// blocks already: only running out of memory half-way (status -9 from the
// caller) leaves a part of the text in the file.
void outbuf_close(xml_outbuf &buf, int32_t status);

}  // namespace cblxml::xexml

#endif
