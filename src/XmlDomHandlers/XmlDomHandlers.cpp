// Construction, destruction and the shared plumbing of the handler object.
#include "XmlDomHandlers/XmlDomHandlers.h"

#include <cstdlib>

#include <xercesc/util/XMLString.hpp>

#include "XmlDomHandlers/event_record.h"

namespace cblxml {

XmlDomHandlers::XmlDomHandlers(const void *document, uint32_t length, void *out,
                               xd_dom_parse_err_t **errorRecordOut, uint32_t flags)
{
    idesc.class_code = DM_CLASS_ALPHANUMERIC;
    idesc.usage_code = DM_USAGE_DISPLAY;
    const auto *doc = static_cast<const unsigned char *>(document);
    // A missing document is parsed as an empty one rather than read through.
    if (doc == nullptr)
        length = 0;
    try {
        if (flags & CBLXML_OPT_TREE)
            constructTreeMode(doc, length, out, errorRecordOut);
        else
            constructEventMode(doc, length, out, flags);
        asciiTranscoder = transcoder != nullptr &&
                          xercesc::XMLString::equals(transcoder->getEncodingName(), u"UTF-8");
    } catch (...) {
        // The destructor does not run for a constructor that throws.
        std::free(docText);
        delete transcoder;
        if (mapHandle != nullptr)
            DMTerm(mapHandle);
        throw;
    }
}

XmlDomHandlers::~XmlDomHandlers()
{
    std::free(docText);
    delete transcoder;
    if (mapHandle != nullptr)
        DMTerm(mapHandle);
}

void XmlDomHandlers::appendEvent(xd_parse_info *record)
{
    if (eventTail == nullptr) {
        // No list to append to (a caller without a sentinel): drop the record.
        for (xd_parse_info *r = record; r != nullptr;) {
            xd_parse_info *next = r->next;
            kvt_xe_xmlparse_delete_info(r);
            r = next;
        }
        return;
    }
    record->prev = eventTail;
    eventTail->next = record;
    eventTail = record;
    while (eventTail->next != nullptr)
        eventTail = eventTail->next;
}

xd_parse_info *XmlDomHandlers::newRecord(const char *name)
{
    return pool != nullptr ? pool->take(name) : new_event(name);
}

xd_parse_info *XmlDomHandlers::appendTextEvent(const char *name, const XMLCh *text, size_t count)
{
    xd_parse_info *record = newRecord(name);
    appendEvent(record);  // owned by the list from here, even if the text fails
    record->text = cobolText(text, count, national ? 1 : 0);
    return record;
}

int64_t XmlDomHandlers::locatorOffset(uint64_t line, uint64_t column)
{
    if (!lines.built())
        lines.reset(docText, docTextLen, bomUncounted ? 1u : 0u);
    int64_t col = column > 0 ? static_cast<int64_t>(column) : 1;
    return static_cast<int64_t>(lines.lineStart(line)) + col - 1 + posAdjust;
}

void XmlDomHandlers::setDocumentLocator(const xercesc::Locator *const newLocator)
{
    locator = newLocator;
}

} // namespace cblxml
