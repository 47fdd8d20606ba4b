// Parser errors in event mode: every error becomes an "EXCEPTION" event whose
// text is the document up to the error; fatal errors are classified through
// the error-op table.
#include <limits>

#include <xercesc/sax/SAXParseException.hpp>

#include "XmlDomHandlers/event_sink.h"
#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"
#include "XmlParseErr/pending_record.h"
#include "XmlParseErr/xml_perr_op_table.h"

namespace cblxml {

namespace {

// The table index of the error the reader is reporting (0 when it did not
// record one).
int error_index(const ParserError *error)
{
    if (error == nullptr)
        return 0;
    return xml_perr_index(error->code, error->domain);
}

}  // namespace

// The character offset of the error in the handler's text. The parser's line
// and column may point past the text (an error at the end of the input): the
// offset is clamped to the text's end, so that no handler reads beyond it.
int32_t EventSink::errorPosition(const xercesc::SAXParseException &exc)
{
    int64_t position = h.locatorOffset(exc.getLineNumber(), exc.getColumnNumber());
    const int64_t end = h.getDocTextLen();
    if (position > end)
        position = end;
    if (position < 0)
        position = 0;
    if (position > std::numeric_limits<int32_t>::max())
        position = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(position);
}

void EventSink::appendGenericException(int64_t position)
{
    PendingRecord record(new_event("EXCEPTION"));
    // The text runs through the character at the position; a position past
    // the text takes the whole text.
    int64_t count = position + 1;
    if (count > static_cast<int64_t>(h.getDocTextLen()))
        count = h.getDocTextLen();
    if (count < 0)
        count = 0;
    record->text = h.cobolText(h.getDocText(), static_cast<size_t>(count), h.isNational() ? 1 : 0);
    record->code = kGenericExceptionCode;
    appendEvent(record.release());
}

void EventSink::warning(const xercesc::SAXParseException &exc)
{
    // A contradiction between the detected and the declared encoding is
    // expected: the handler converts the document itself.
    if (error_index(h.getErrorSource()) == kPerrSuppressWarning)
        return;
    h.markErrors();
    const int32_t position = errorPosition(exc);
    endDoctypeBefore(position);
    // The text holds the document through the position and no more; the
    // generic record already ends there.
    appendGenericException(position);
}

void EventSink::error(const xercesc::SAXParseException &exc)
{
    // A recoverable error (validity) is never classified further.
    h.markErrors();
    const int32_t position = errorPosition(exc);
    endDoctypeBefore(position);
    appendGenericException(position);
}

void EventSink::fatalError(const xercesc::SAXParseException &exc)
{
    h.markErrors();
    const int32_t position = errorPosition(exc);
    endDoctypeBefore(position);
    const int index = error_index(h.getErrorSource());
    // The suppression marker belongs to warnings only: here it is unclassified.
    if (index <= 0 || index >= kPerrTableSize || xml_perr_op_table[index] == nullptr) {
        appendGenericException(position);
        return;
    }
    PendingRecord record(new_event("EXCEPTION"));
    record->prev = eventTail;
    xml_perr_op_table[index](record.get(), h.getDocText(), h.getDocTextLen(), position,
                             h.isNational() ? 1 : 0, h);
    appendEvent(record.release());
}

}  // namespace cblxml
