// Document type declaration, processing instruction, comment and CDATA
// call-backs.
#include <cstdlib>
#include <new>
#include <string>

#include <xercesc/framework/XMLErrorCodes.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_record.h"
#include "XmlDomHandlers/text_units.h"
#include "xmldom/dom_append.h"

namespace cblxml {
namespace {

bool has_text(const XMLCh *text)
{
    return text != nullptr && text[0] != 0;
}

} // namespace

int64_t XmlDomHandlers::clampedPosition()
{
    if (locator == nullptr || docTextLen == 0)
        return 0;
    int64_t pos = locatorOffset(locator->getLineNumber(), locator->getColumnNumber());
    const auto last = static_cast<int64_t>(docTextLen) - 1;
    return pos > last ? last : pos < 0 ? 0 : pos;
}

void XmlDomHandlers::appendSourceText(xd_parse_info *record, int64_t from, int64_t to)
{
    // from and to are inclusive offsets into the document text.
    record->text = cobolText(docText + from, static_cast<size_t>(to - from + 1), national ? 1 : 0);
}

void XmlDomHandlers::startDTD(const XMLCh *const, const XMLCh *const publicId,
                              const XMLCh *const systemId)
{
    if (treeMode != 0)
        return;
    const int64_t pos = clampedPosition();
    if (doctypeSeen) {
        // At most one declaration per document: report and stop quietly.
        xd_parse_info *record = new_event("EXCEPTION");
        record->code = 123;
        appendEvent(record);
        appendSourceText(record, 0, pos);
        throw xercesc::XMLErrs::F_HighBounds;
    }
    xd_parse_info *record = new_event("DOCUMENT-TYPE-DECLARATION");
    appendEvent(record);
    doctypeSeen = true;
    dtdPosition = pos;
    inDtd = true;
    if (!has_text(publicId) && !has_text(systemId)) {
        // The text is completed by endDTD, which needs to know whether the
        // declaration goes on with an internal subset. The record is given an
        // owned copy of the character at the position (never a pointer into
        // the document text, which the list must not free).
        record->text = copy_text(docText + pos, sizeof(XMLCh), 2);
        return;
    }
    int64_t open = pos;
    while (open > 0 && docText[open] != u'<')
        --open;
    appendSourceText(record, open, pos);
}

void XmlDomHandlers::endDTD()
{
    inDtd = false;
    if (treeMode != 0 || eventTail == nullptr || eventTail->text == nullptr ||
        eventTail->text[0] != '[' || dtdPosition < 0)
        return;
    const int64_t pos = clampedPosition();
    int64_t open = dtdPosition;
    while (open > 0 && docText[open] != u'<')
        --open;
    std::free(eventTail->text);
    eventTail->text = nullptr;
    appendSourceText(eventTail, open, pos < open ? open : pos);
}

void XmlDomHandlers::processingInstruction(const XMLCh *const target, const XMLCh *const data)
{
    if (treeMode == 0) {
        if (bareDoctypeStart >= 0)
            emitBareDoctypeBefore(clampedPosition());
        appendTextEvent("PROCESSING-INSTRUCTION-TARGET", target, unit_length(target));
        appendTextEvent("PROCESSING-INSTRUCTION-DATA", data, unit_length(data));
    } else if (treeMode == 1) {
        appendTreePi(target, unit_length(target), data, unit_length(data));
    }
}

void XmlDomHandlers::appendTreePi(const XMLCh *target, size_t targetLen, const XMLCh *data,
                                  size_t dataLen)
{
    char *targetText = cobolText(target, targetLen, 0);
    char *dataText = nullptr;
    try {
        dataText = cobolText(data, dataLen, 0);
    } catch (...) {
        std::free(targetText);
        throw;
    }
    xd_dom_node_t *node = nullptr;
    if (kvt_xe_xml_dom_pi_node(treeDocument, &node, targetText, dataText) != 0) {
        std::free(targetText);
        std::free(dataText);
        throw std::bad_alloc();  // the tree must not lack the instruction
    }
    appendToCurrent(node);
}

void XmlDomHandlers::comment(const XMLCh *const chars, const XMLSize_t length)
{
    // A comment inside the document type declaration is not reported. The
    // declaration's own record is the tail both inside it and just after
    // it, so the call-backs' own state tells the two apart.
    if (treeMode != 0 || inDtd)
        return;
    if (bareDoctypeStart >= 0)
        emitBareDoctypeBefore(clampedPosition());
    appendTextEvent("COMMENT", chars, length);
}

void XmlDomHandlers::startCDATA()
{
    if (treeMode != 0)
        return;
    appendTextEvent("START-OF-CDATA-SECTION", u"<![CDATA[", 9);
}

void XmlDomHandlers::endCDATA()
{
    if (treeMode != 0)
        return;
    appendTextEvent("END-OF-CDATA-SECTION", u"]]>", 3);
}

} // namespace cblxml
