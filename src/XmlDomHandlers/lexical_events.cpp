// Document type declaration, processing instruction, comment and CDATA
// events.
#include <cstdlib>
#include <string>

#include <xercesc/framework/XMLErrorCodes.hpp>

#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/text_units.h"
#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"

namespace cblxml {
namespace {

bool has_text(const XMLCh *text) { return text != nullptr && text[0] != 0; }

}  // namespace

void EventSink::appendSourceText(xd_parse_info *record, int64_t from, int64_t to)
{
    // from and to are inclusive offsets into the document text.
    record->text = h.cobolText(h.getDocText() + from, static_cast<size_t>(to - from + 1),
                               h.isNational() ? 1 : 0);
}

void EventSink::startDTD(const XMLCh *publicId, const XMLCh *systemId)
{
    const int64_t pos = h.clampedPosition();
    if (doctypeSeen) {
        // At most one declaration per document: report and stop quietly.
        xd_parse_info *record = new_event("EXCEPTION");
        record->code = kSecondDoctypeCode;
        appendEvent(record);
        appendSourceText(record, 0, pos);
        throw xercesc::XMLErrs::F_HighBounds;
    }
    xd_parse_info *record = new_event("DOCUMENT-TYPE-DECLARATION");
    appendEvent(record);
    doctypeSeen = true;
    openDtd(pos);
    if (!has_text(publicId) && !has_text(systemId)) {
        // The text is completed when the declaration is closed (closeDtd),
        // if it goes on with an internal subset. The record is given an
        // owned copy of the character at the position (never a pointer into
        // the document text, which the list must not free).
        record->text = copy_text(h.getDocText() + pos, sizeof(XMLCh), 2);
        return;
    }
    int64_t open = pos;
    while (open > 0 && h.getDocText()[open] != u'<')
        --open;
    appendSourceText(record, open, pos);
}

void EventSink::endDTD()
{
    // Called after the internal subset, or after the external one when that
    // is read; never when an external subset goes unread (see
    // endDoctypeBefore).
    if (inDtd)
        closeDtd(dtdEnd >= 0 ? dtdEnd : h.clampedPosition());
}

void EventSink::processingInstruction(const XMLCh *target, const XMLCh *data)
{
    endDoctypeBefore(h.clampedPosition());
    appendSkippedBeforeMarkup(u"<?");
    appendTextEvent("PROCESSING-INSTRUCTION-TARGET", target, unit_length(target));
    appendTextEvent("PROCESSING-INSTRUCTION-DATA", data, unit_length(data));
}

void EventSink::comment(const XMLCh *chars, size_t length)
{
    // A comment inside the document type declaration is not reported. The
    // declaration's own record is the tail both inside it and just after
    // it, so the call-backs' own state tells the two apart.
    appendSkippedBeforeMarkup(u"<!--");
    endDoctypeBefore(h.clampedPosition());
    if (inDtd)
        return;
    appendTextEvent("COMMENT", chars, length);
}

void EventSink::startCDATA()
{
    appendSkippedBeforeMarkup(u"<![CDATA[");
    appendTextEvent("START-OF-CDATA-SECTION", u"<![CDATA[", 9);
}

void EventSink::endCDATA() { appendTextEvent("END-OF-CDATA-SECTION", u"]]>", 3); }

}  // namespace cblxml
