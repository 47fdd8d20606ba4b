// The text serialiser of the XML writer: element nesting, line ends and
// indentation, start tags with their namespace declarations, schema-instance
// attributes and attributes, escaped values, and the internal DTD.
#ifndef CBLXML_XEXML_XML_SERIALISE_H
#define CBLXML_XEXML_XML_SERIALISE_H

#include <cstring>
#include <string_view>

#include "xexml/xml_outbuf.h"

namespace cblxml::xexml {

// Where the text goes, and the options of the control block that shape it.
struct xml_writer {
    xml_outbuf &buf;
    const xmlio_fcb &fcb;

    bool compact() const { return (fcb.flags & XMLIO_COMPACT) != 0; }
    void put(const char *text, size_t n) { outbuf_append(buf, text, n); }
    void put(std::string_view text) { put(text.data(), text.size()); }
    // NL: CR LF, or nothing in compact output.
    void newline()
    {
        if (!compact())
            put("\r\n", 2);
    }
};

// Writes the document node's children at depth 0. Iterative: a parsed tree
// may nest far deeper than a stack allows. Throws std::bad_alloc when its
// working memory runs out.
void serialise_document(xml_writer &out, const xd_dom_node_t *document);

// Writes the element and attribute-list declarations of the internal DTD for
// the document element (see xml_dtd.cpp). Linear in the size of the tree.
void write_dtd(xml_writer &out, const xd_dom_node_t *element);

// Writes `text` (n bytes) with its trailing bytes among `cut` removed and
// the five markup characters replaced by their entities.
void write_escaped(xml_writer &out, const char *text, size_t n);

}  // namespace cblxml::xexml

#endif
