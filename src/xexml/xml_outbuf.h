// The output buffer of the XML writer: the text of one document, gathered in
// memory and put to the file in one write at the end, or cut to the size of
// the data item that receives it.
#ifndef CBLXML_XEXML_XML_OUTBUF_H
#define CBLXML_XEXML_XML_OUTBUF_H

#include <cstddef>
#include <cstdint>

#include "cblxml.h"

namespace cblxml::xexml {

constexpr size_t kOutBlock = 4096;

struct xml_outbuf {
    char *data = nullptr;             // owned; malloc
    size_t used = 0;                  // bytes of text in data
    cblxml_stream *stream = nullptr;  // borrowed from the control block
    bool fixed = false;               // a data item's size: excess text is lost
    size_t capacity = 0;              // bytes allocated (fixed: the item's size)
    uint64_t produced = 0;            // every byte appended, kept or not
    char last[2] = {0, 0};            // the last two bytes appended
    bool failed = false;              // memory ran out; the text is incomplete
};

// Sets up `buf` for a document of the block: fixed at name_len bytes filled
// with spaces for a data item (flag XMLIO_IN_MEMORY), else growable. False
// when memory runs out (nothing is held then).
bool outbuf_create(xml_outbuf &buf, const xmlio_fcb *fcb);
// Appends `n` bytes and counts them. A fixed buffer keeps what fits (after
// writing its text to a stream, when it has one); a growable one at least
// doubles when it grows, so a document of n bytes is copied O(n) times in
// all. A failed allocation sets `failed` and drops the bytes.
void outbuf_append(xml_outbuf &buf, const char *text, size_t n);
// True when the text appended so far ends with CR LF.
bool outbuf_ends_crlf(const xml_outbuf &buf);
// Writes the text to the stream (unless status is -9) with one write and a
// flush, then frees the area.
void outbuf_close(xml_outbuf &buf, int32_t status);

}  // namespace cblxml::xexml

#endif
