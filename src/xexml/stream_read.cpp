// The read side of an XML-enabled file: obtaining one document's text,
// parsing it into the held tree and mapping the root element onto a record.
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"
#include "xexml/record_map.h"
#include "xexml/xml_write.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {
namespace {

constexpr uint32_t kFirstChunk = 4096;
// Lengths are 32-bit: a stream is read up to this many bytes (one is kept
// for the terminator); what lies beyond is left unread.
constexpr uint64_t kMaxText = 0xFFFFFFFEu;

bool stream_failed(const cblxml_stream *stream)
{
    return stream->error_code == CBLXML_STREAM_IO_ERROR ||
           stream->error_code == CBLXML_STREAM_NO_ROOM;
}

// The expected length of CGI input: "CONTENT_LENGTH" as atoi reads it; 0,
// a missing value, a negative one or one that is not a number: unknown (0).
uint64_t cgi_content_length()
{
    const char *value = platform::get_env("CONTENT_LENGTH");
    const int length = value != nullptr ? std::atoi(value) : 0;
    return length > 0 ? static_cast<uint64_t>(length) : 0;
}

// Reads the stream into fcb->read_buf in chunks that double from 4096 bytes
// (never more than the expected length), until the read function returns 0,
// or the expected length is reached. 0 or -13.
int32_t read_stream(xmlio_fcb *fcb)
{
    cblxml_stream *stream = fcb->stream;
    const uint64_t expected = (fcb->flags & XMLIO_CGI) != 0 ? cgi_content_length() : 0;
    const uint64_t limit = expected != 0 && expected < kMaxText ? expected : kMaxText;
    uint64_t chunk = kFirstChunk < limit ? kFirstChunk : limit;
    uint64_t have = 0;
    char *buffer = nullptr;
    for (;;) {
        // Each round has room for the chunk and a terminator.
        auto *grown = static_cast<char *>(std::realloc(buffer, chunk + 1));
        if (grown == nullptr)
            break;  // out of memory: what was read so far is the text
        buffer = grown;
        bool ended = false;
        while (have < chunk) {
            const int64_t got =
                stream->ops->read(stream, buffer + have, static_cast<uint32_t>(chunk - have));
            if (stream_failed(stream)) {
                std::free(buffer);
                return XMLIO_ST_READ_ERROR;
            }
            if (got <= 0) {
                ended = true;
                break;
            }
            have += static_cast<uint64_t>(got);
        }
        if (ended || have >= limit)
            break;
        chunk = chunk * 2 < limit ? chunk * 2 : limit;
    }
    if (buffer == nullptr)
        return XMLIO_ST_OK;
    if (chunk - have > kFirstChunk) {
        if (auto *exact = static_cast<char *>(std::realloc(buffer, have + 1)))
            buffer = exact;
    }
    buffer[have] = '\0';
    fcb->read_buf = buffer;
    fcb->read_buf_len = static_cast<uint32_t>(have);
    return XMLIO_ST_OK;
}

// The text of the document to parse, in fcb->read_buf; 0 or a status.
int32_t obtain_text(xmlio_fcb *fcb)
{
    if (fcb->read_buf != nullptr)
        return XMLIO_ST_OK;  // the rest kept from the previous document
    if ((fcb->flags & XMLIO_URL) != 0)
        return fcb->read_buf_len == 0 ? XMLIO_ST_URL_READ : XMLIO_ST_NO_CURRENT;
    if ((fcb->flags & XMLIO_IN_MEMORY) == 0) {
        // Without a stream there is nothing to read (READ checks for one).
        if (fcb->stream == nullptr || fcb->stream->ops == nullptr ||
            fcb->stream->ops->read == nullptr)
            return XMLIO_ST_OK;
        return read_stream(fcb);
    }
    // A data item is read once: its length stays recorded after its text is
    // parsed, so the next READ finds no document (until CLOSE forgets it).
    if (fcb->read_buf_len != 0 || fcb->name == nullptr || fcb->name_len == 0)
        return XMLIO_ST_OK;
    auto *copy = static_cast<char *>(std::malloc(uint64_t{fcb->name_len} + 1));
    if (copy == nullptr)
        return XMLIO_ST_OK;  // out of memory: no document
    std::memcpy(copy, fcb->name, fcb->name_len);
    copy[fcb->name_len] = '\0';
    fcb->read_buf = copy;
    fcb->read_buf_len = fcb->name_len;
    return XMLIO_ST_OK;
}

void drop_text(xmlio_fcb *fcb)
{
    std::free(fcb->read_buf);
    fcb->read_buf = nullptr;
}

// UTF-16 text, told by its first bytes: a byte-order mark, or "<" with a
// zero byte beside it.
int utf16_order(const unsigned char *text, uint64_t length)
{
    if (length < 2)
        return 0;
    if ((text[0] == 0xFF && text[1] == 0xFE) || (text[0] == '<' && text[1] == 0))
        return 1;  // little-endian
    if ((text[0] == 0xFE && text[1] == 0xFF) || (text[0] == 0 && text[1] == '<'))
        return 2;  // big-endian
    return 0;
}

// Bytes of the text before the parser's stop position. The line is found by
// counting line ends (a lone CR counts, as the parser counts it); the column
// counts UTF-16 units, so on the stop line each character is stepped over
// whole: four UTF-8 bytes make two units, a UTF-16 unit two bytes.
uint64_t stop_offset(const char *text, uint64_t length, uint32_t line, uint32_t column, bool utf8)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    const int order = utf16_order(bytes, length);
    const uint64_t step = order != 0 ? 2 : 1;
    auto unit_at = [&](uint64_t at) -> uint32_t {
        if (order == 1)
            return bytes[at] | (uint32_t{bytes[at + 1]} << 8);
        if (order == 2)
            return (uint32_t{bytes[at]} << 8) | bytes[at + 1];
        return bytes[at];
    };
    uint64_t at = 0;
    for (uint32_t seen = 1; seen < line && at + step <= length;) {
        const uint32_t c = unit_at(at);
        at += step;
        if (c == '\n' || (c == '\r' && (at + step > length || unit_at(at) != '\n')))
            ++seen;
    }
    for (uint32_t units = 1; units < column && at + step <= length;) {
        const uint32_t c = unit_at(at);
        uint64_t size = step;
        uint32_t counted = 1;
        if (order == 0 && utf8 && c >= 0xC0) {
            size = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
            counted = c >= 0xF0 ? 2 : 1;
        }
        at = at + size < length ? at + size : length;
        units += counted;
    }
    return at;
}

// The parser reports a second XML declaration just past its "<?xml" and the
// blank after it; the next document starts at its "<".
uint64_t back_to_declaration(const char *text, uint64_t offset)
{
    uint64_t at = offset;
    while (at > 0 && (text[at - 1] == ' ' || text[at - 1] == '\t' || text[at - 1] == '\n' ||
                      text[at - 1] == '\r'))
        --at;
    if (at >= 5 && std::memcmp(text + at - 5, "<?xml", 5) == 0)
        return at - 5;
    return offset;
}

// Keeps the text after the parser's stop position as the next document.
void keep_rest(xmlio_fcb *fcb, const xd_dom_parse_err_t &stop, const char *encoding)
{
    const char *text = fcb->read_buf;
    const uint64_t length = fcb->read_buf_len;
    const bool utf8 = encoding == nullptr || std::strncmp(encoding, "UTF-8", 5) == 0;
    uint64_t offset = stop_offset(text, length, stop.line, stop.column, utf8);
    if (utf16_order(reinterpret_cast<const unsigned char *>(text), length) == 0)
        offset = back_to_declaration(text, offset);
    const uint64_t rest = length - offset;
    // A stop at the very start would give the same text again, and a READ
    // that never moves on; the text is dropped instead.
    auto *copy = offset > 0 && rest > 0 ? static_cast<char *>(std::malloc(rest + 1)) : nullptr;
    if (copy != nullptr) {
        std::memcpy(copy, text + offset, rest);
        copy[rest] = '\0';
    }
    drop_text(fcb);
    fcb->read_buf = copy;
    // Without a rest the recorded length stays, so a data item is not read
    // over again.
    if (copy != nullptr)
        fcb->read_buf_len = static_cast<uint32_t>(rest);
}

// The new tree replaces the held one; its root element is mapped.
void hold_and_map(xmlio_fcb *fcb, dom::Node *document)
{
    drop_tree(fcb);
    auto *anchor = static_cast<xml_doc_anchor_t *>(
        dom::first_child(document) != nullptr ? std::calloc(1, sizeof(xml_doc_anchor_t)) : nullptr);
    if (anchor == nullptr) {
        // No child (or no memory for the anchor): nothing is held.
        dom::free_tree(document);
        return;
    }
    anchor->document = document;
    fcb->doc = anchor;
    MapContext ctx;
    ctx.entries = fcb->records;
    ctx.entry_count = fcb->records != nullptr ? fcb->rec_count : 0;
    ctx.dm_handle = fcb->dm_handle;
    ctx.encoding = dom::strings_encoding(document);
    dom::Node *root = dom::first_child(document);
    while (root != nullptr && dom::kind(root) == XD_DOM_PI)
        root = dom::next_sibling(root);
    if (root != nullptr) {
        if (dom::is_element(root))
            map_root(ctx, root);
        anchor->current = root;
    } else {
        anchor->current = ctx.last_mapped;
    }
    if (ctx.entry != nullptr)
        fcb->rec_read = ctx.record_number;
}

int32_t parse_and_map(xmlio_fcb *fcb)
{
    auto *stop = static_cast<xd_dom_parse_err_t *>(std::calloc(1, sizeof(xd_dom_parse_err_t)));
    if (stop == nullptr)
        return XMLIO_ST_PARSE_FAILED;  // the parse cannot even report where it stopped
    uint32_t options = CBLXML_OPT_TREE;
    if ((fcb->flags & XMLIO_VALIDATE_READ) != 0)
        options |= CBLXML_OPT_VALIDATE;
    dom::Node *document = nullptr;
    const int32_t result =
        kvt_xe_xml_dom_parse(fcb->read_buf, fcb->read_buf_len + 1, &document, &stop, options);
    int32_t status = XMLIO_ST_OK;
    if (result == 0) {
        drop_text(fcb);
        hold_and_map(fcb, document);
    } else if (result == 1 && document != nullptr) {
        keep_rest(fcb, *stop, dom::strings_encoding(document));
        hold_and_map(fcb, document);
    } else {
        // Result 2 is a text with no document in it; 3 (and a 1 without a
        // tree: the parser could not start) a malformed one. The text is
        // dropped, so that the next READ moves on; the held tree stays.
        status = result == 2 ? XMLIO_ST_NO_CURRENT : XMLIO_ST_PARSE_FAILED;
        dom::free_tree(document);
        drop_text(fcb);
    }
    std::free(stop->message);
    std::free(stop);
    return status;
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" int32_t kvt_xe_xmlio_parse_stream(xmlio_fcb *fcb)
{
    namespace x = cblxml::xexml;
    if (fcb == nullptr)
        return XMLIO_ST_NO_CURRENT;
    try {
        int32_t status = x::obtain_text(fcb);
        if (status == XMLIO_ST_OK && fcb->read_buf == nullptr)
            status = XMLIO_ST_NO_CURRENT;
        if (status == XMLIO_ST_OK && fcb->read_buf_len == 0) {
            x::drop_text(fcb);
            status = XMLIO_ST_NO_CURRENT;
        }
        if (status == XMLIO_ST_OK)
            status = x::parse_and_map(fcb);
        fcb->status = status;
    } catch (...) {
        // Out of memory while mapping: the record holds what was mapped.
        fcb->status = XMLIO_ST_PARSE_FAILED;
    }
    return fcb->status;
}
