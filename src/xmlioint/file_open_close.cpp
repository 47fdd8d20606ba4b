// OPEN and CLOSE of an XML-enabled file.
#include <cstdlib>
#include <strings.h>

#include "platform/file_streams.h"
#include "xexml/xml_write.h"
#include "xmlioint/file_ops.h"

namespace cblxml::xmlio {
namespace {

namespace platform = cblxml::platform;

// The run-time's stream mode for a COBOL open mode; 0 for none.
int32_t runtime_mode(uint8_t open_mode)
{
    switch (open_mode) {
    case XMLIO_INPUT:
        return CBLXML_STREAM_READ;
    case XMLIO_OUTPUT:
        return CBLXML_STREAM_CREATE;
    case XMLIO_IO:
    case XMLIO_EXTEND:
        return CBLXML_STREAM_READ_WRITE;
    default:
        return 0;
    }
}

// A "://" at position i (i + 2 < length) preceded by the letters http in any
// case. The four letters are read from the four bytes before i even when
// i < 4; a byte that would lie before the name counts as no match, so such a
// position never matches and nothing outside the name is read.
bool names_http_url(const char *name, uint32_t length)
{
    for (uint64_t i = 0; i + 2 < length; ++i) {
        if (name[i] == ':' && name[i + 1] == '/' && name[i + 2] == '/' && i >= 4 &&
            strncasecmp(name + i - 4, "http", 4) == 0)
            return true;
    }
    return false;
}

// A colon, the letters cgi in any case, and a colon.
bool names_cgi(const char *name, uint32_t length)
{
    return length >= 5 && name[0] == ':' && strncasecmp(name + 1, "cgi", 3) == 0 && name[4] == ':';
}

void close_stream(cblxml_stream *stream)
{
    if (stream->ops != nullptr && stream->ops->close != nullptr)
        stream->ops->close(stream);
}

// Resolves the name and opens its stream into fcb->stream; 0 or -4.
int32_t open_named_stream(xmlio_fcb *fcb, int32_t mode)
{
    const char *name = fcb->name;
    uint32_t length = fcb->name_len;
    if (name == nullptr)
        return XMLIO_ST_OPEN_FAILED;
    // The CGI names open the CGI streams. For input-output and extend the
    // name is cut to its first four bytes, as it always has been. The block's
    // own name and length are the program's and are left as they are.
    if (names_cgi(name, length)) {
        fcb->flags |= XMLIO_CGI;
        if (fcb->open_mode == XMLIO_INPUT)
            name = ":CI:";
        else if (fcb->open_mode == XMLIO_OUTPUT)
            name = ":CO:";
        length = 4;
    }
    char result[1024] = {};
    void *handle = platform::resolve_name(name, length, result, 1);
    if (handle == nullptr)
        return XMLIO_ST_OPEN_FAILED;
    cblxml_stream *stream = platform::open_stream(0, handle, mode, result);
    platform::release_name(handle);
    if (stream == nullptr)
        return XMLIO_ST_OPEN_FAILED;
    if (fcb->open_mode == XMLIO_EXTEND && (stream->ops == nullptr || stream->ops->seek == nullptr ||
                                           stream->ops->seek(stream, 0, CBLXML_SEEK_END) == -1)) {
        // The stream is closed again so that a failed OPEN holds nothing.
        close_stream(stream);
        return XMLIO_ST_OPEN_FAILED;
    }
    fcb->stream = stream;
    return XMLIO_ST_OK;
}

}  // namespace

int32_t open_file(xmlio_fcb *fcb)
{
    const int32_t mode = runtime_mode(fcb->open_mode);
    if (mode == 0)
        return XMLIO_ST_BAD_MODE;
    // A block that still holds a stream or a data map is open already: a
    // second open would lose them, so it is refused and the block kept.
    if (fcb->stream != nullptr || fcb->dm_handle != nullptr)
        return XMLIO_ST_OPEN_FAILED;
    const bool extend = fcb->open_mode == XMLIO_EXTEND;
    if ((fcb->flags & XMLIO_IN_MEMORY) != 0) {
        if (extend)
            return XMLIO_ST_BAD_MODE;
    } else if (fcb->name != nullptr && names_http_url(fcb->name, fcb->name_len)) {
        fcb->flags |= XMLIO_URL;
        return extend ? XMLIO_ST_BAD_MODE : XMLIO_ST_OPEN_FAILED;
    } else if (const int32_t status = open_named_stream(fcb, mode); status != XMLIO_ST_OK) {
        return status;
    }
    const bool comma = (fcb->flags & XMLIO_DECIMAL_COMMA) != 0;
    fcb->dm_handle = comma ? DMInit(0, 0, 0, ',', '.') : DMInit(0, 0, 0, 0, 0);
    if (fcb->dm_handle != nullptr) {
        fcb->flags &= ~uint32_t{XMLIO_MODIFIED};
    } else {
        // The data map could not start: -4 goes into the flags and the status
        // stays 0, as callers have always seen it. The block is no longer
        // marked initialised, so every call but OPEN now answers -1 and no
        // CLOSE could reach the stream: it is closed here instead of leaking.
        fcb->flags = static_cast<uint32_t>(XMLIO_ST_OPEN_FAILED);
        if (fcb->stream != nullptr) {
            close_stream(fcb->stream);
            fcb->stream = nullptr;
        }
    }
    kvt_xe_xml_rec_reset_maximum(fcb->records, fcb->rec_count);
    return XMLIO_ST_OK;
}

int32_t close_file(xmlio_fcb *fcb)
{
    int32_t status = XMLIO_ST_OK;
    const uint32_t memory_url = XMLIO_IN_MEMORY | XMLIO_URL;
    if (fcb->stream != nullptr && (fcb->flags & memory_url) != memory_url) {
        if (xexml::stream_failed(fcb->stream))
            status = XMLIO_ST_CLOSE_ERROR;
        close_stream(fcb->stream);
        fcb->stream = nullptr;
    }
    xexml::drop_tree(fcb);
    std::free(fcb->read_buf);
    fcb->read_buf = nullptr;
    fcb->read_buf_len = 0;
    DMTerm(fcb->dm_handle);
    fcb->dm_handle = nullptr;
    // Changes never written are lost; the flag stays set until the next OPEN.
    if (status == XMLIO_ST_OK && (fcb->flags & XMLIO_MODIFIED) != 0)
        status = XMLIO_ST_UNWRITTEN;
    return status;
}

}  // namespace cblxml::xmlio
