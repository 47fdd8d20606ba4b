// Parse start: sets up a SAX2 reader as the option word asks, builds the
// handler over the document and parses a private copy (or conversion) of it.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "platform/platform.h"
#include "xexml/entity_guard.h"
#include "xexml/error_reader.h"
#include "xexml/parse_memory.h"
#include "xexml/parser_init.h"
#include "xexml/reader_setup.h"

namespace cblxml {
namespace {

// True when the tree holds no element: the document had no root element.
bool tree_has_no_root(void *out)
{
    if (out == nullptr)
        return true;
    const xd_dom_node_t *doc = *static_cast<xd_dom_node_t **>(out);
    if (doc == nullptr)
        return true;
    for (const xd_dom_node_t *n = doc->first_child; n != nullptr; n = n->next_sibling) {
        if (n->kind == XD_DOM_ELEMENT)
            return false;
    }
    return true;
}

// Result of a failed tree-mode parse, by the parser's error name.
int32_t tree_failure_result(const xd_dom_parse_err_t *record, void *out)
{
    if (record == nullptr || record->isXmlError != 1)
        return 3;
    switch (record->errorCode) {
    case xercesc::XMLErrs::ExpectedCommentOrPI:
    case xercesc::XMLErrs::ExpectedWhitespace:
    case xercesc::XMLErrs::NotValidAfterContent:
        // The root element was complete and more text follows it: the parse
        // stopped before the end of the text (a second document with its own
        // declaration, say).
        return 1;
    case xercesc::XMLErrs::XMLDeclMustBeFirst:
        // A misplaced declaration stops the text early only after a root.
        return tree_has_no_root(out) ? 3 : 1;
    case xercesc::XMLErrs::EmptyMainEntity:
        return 2;
    case xercesc::XMLErrs::InvalidDocumentStructure:
        // The parser's word for a document that has no root element at all.
        return tree_has_no_root(out) ? 2 : 3;
    default:
        return 3;
    }
}

// `memory` outlives the parse and whatever the parse throws.
int32_t parse_document(ParseMemory &memory, const void *document, uint32_t length, void *out,
                       xd_dom_parse_err_t **errorRecord, uint32_t flags)
{
    if (!ensure_parser_initialised())
        return 1;
    if (document == nullptr)
        length = 0;
    auto reader = std::make_unique<ErrorRecordingReader>(&memory);
    set_features(*reader, flags);
    EntityGuard guard(*reader, flags);  // no external fetches, bounded entities

    XmlDomHandlers handler(document, length, out, errorRecord, flags);
    guard.reportDeclarationsTo(&handler);
    if (handler.getSawErrors())
        return 0;
    register_handler(*reader, handler, flags);

    // A tree is built before the caller runs again, so its parse reads the
    // caller's bytes where they are; events get a private copy.
    const bool inPlace = (flags & CBLXML_OPT_TREE) && handler.getMPH() == nullptr;
    const std::string buffer = inPlace ? std::string() : parse_buffer(handler, document, length);
    const auto *bytes = reinterpret_cast<const XMLByte *>(
        inPlace && document != nullptr ? static_cast<const char *>(document) : buffer.data());
    xercesc::MemBufInputSource source(bytes, inPlace ? length : buffer.size(), "prodInfo", false,
                                      &memory);
    source.setCopyBufToStream(false);  // the buffer outlives the parse
    if (handler.getMPH() != nullptr)
        source.setEncoding(u"UTF-8");  // the buffer holds the data map's UTF-8
    reader->parse(source);
    if (reader->getErrorCount() == 0)
        return 0;
    if (flags & CBLXML_OPT_TREE)
        return tree_failure_result(errorRecord != nullptr ? *errorRecord : nullptr, out);
    return 3;
}

}  // namespace

int32_t parse_whole_events(xd_parse_info *sentinel, const void *document, uint32_t length,
                           uint32_t flags)
{
    xd_parse_info *head = sentinel;
    ParseMemory memory;
    try {
        return parse_document(memory, document, length, &head, nullptr,
                              flags & ~static_cast<uint32_t>(CBLXML_OPT_TREE));
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const xercesc::OutOfMemoryException &) {
        throw std::bad_alloc();
    } catch (...) {
        return 3;  // as kvt_xe_xml_dom_parse
    }
}

}  // namespace cblxml

extern "C" int32_t kvt_xe_xml_dom_parse(const void *document, uint32_t length, void *out,
                                        xd_dom_parse_err_t **errorRecord, uint32_t flags)
{
    cblxml::ParseMemory memory;
    try {
        return cblxml::parse_document(memory, document, length, out, errorRecord, flags);
    } catch (...) {
        // Out of memory or an unexpected parser failure: what was built so far
        // stays with the caller, and the parse counts as failed.
        return 3;
    }
}

extern "C" int32_t kvt_xe_xmlparse(xd_parse_info *sentinel, const void *document, uint32_t length,
                                   uint32_t flags)
{
    xd_parse_info *head = sentinel;
    // An event list cannot hold a tree: the tree-mode bit of a program's
    // option word is not passed on, so the parse always produces events.
    return kvt_xe_xml_dom_parse(document, length, &head, nullptr,
                                flags & ~static_cast<uint32_t>(CBLXML_OPT_TREE));
}
