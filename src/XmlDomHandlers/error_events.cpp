// The handler's error call-backs. In event mode every error becomes an
// "EXCEPTION" event whose text is the document up to the error; fatal errors
// are classified through the error-op table. In tree mode the caller's error
// record keeps the latest error.
#include <cstdlib>
#include <limits>

#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_record.h"
#include "XmlParseErr/pending_record.h"
#include "XmlParseErr/xml_perr_op_table.h"

namespace cblxml {

namespace {

constexpr uint8_t kEventMode = 0;
constexpr uint8_t kTreeMode = 1;
constexpr int32_t kGenericExceptionCode = 201;

// The character offset of the error in the handler's text. The parser's line
// and column may point past the text (an error at the end of the input): the
// offset is clamped to the text's end, so that no handler reads beyond it.
int32_t error_position(XmlDomHandlers &handler, const xercesc::SAXParseException &exc)
{
    int64_t position = handler.locatorOffset(exc.getLineNumber(), exc.getColumnNumber());
    const int64_t end = handler.getDocTextLen();
    if (position > end)
        position = end;
    if (position < 0)
        position = 0;
    if (position > std::numeric_limits<int32_t>::max())
        position = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(position);
}

// The table index of the error the reader is reporting (0 when it did not
// record one).
int error_index(const ParserError *error)
{
    if (error == nullptr)
        return 0;
    return xml_perr_index(error->code, error->domain);
}

} // namespace

void XmlDomHandlers::appendGenericException(int64_t position)
{
    PendingRecord record(new_event("EXCEPTION"));
    // The text runs through the character at the position; a position past
    // the text takes the whole text.
    int64_t count = position + 1;
    if (count > static_cast<int64_t>(docTextLen))
        count = docTextLen;
    if (count < 0)
        count = 0;
    record->text = cobolText(docText, static_cast<size_t>(count), national ? 1 : 0);
    record->code = kGenericExceptionCode;
    appendEvent(record.release());
}

void XmlDomHandlers::recordTreeError(const xercesc::SAXParseException &exc, bool readDomain)
{
    if (errorRecord == nullptr)
        return;
    const XMLCh *message = exc.getMessage();
    const size_t length = message != nullptr ? xercesc::XMLString::stringLen(message) : 0;
    // Converted before the record changes, so that a failed allocation leaves
    // the previous error whole.
    char *text = cobolText(message, length, 0);

    errorRecord->column = static_cast<uint32_t>(exc.getColumnNumber());
    errorRecord->line = static_cast<uint32_t>(exc.getLineNumber());
    errorRecord->errorCode = parserError != nullptr ? parserError->code : 0;
    if (readDomain && parserError != nullptr &&
        xercesc::XMLString::equals(parserError->domain, xercesc::XMLUni::fgXMLErrDomain))
        errorRecord->isXmlError = 1;
    std::free(errorRecord->message);
    errorRecord->message = text;
}

void XmlDomHandlers::warning(const xercesc::SAXParseException &exc)
{
    if (treeMode == kTreeMode) {
        sawErrors = true;
        recordTreeError(exc, false);
        return;
    }
    if (treeMode != kEventMode)
        return;
    // A contradiction between the detected and the declared encoding is
    // expected: the handler converts the document itself.
    if (error_index(parserError) == kPerrSuppressWarning)
        return;
    sawErrors = true;
    // The text holds the document through the position and no more; the
    // generic record already ends there.
    appendGenericException(error_position(*this, exc));
}

void XmlDomHandlers::error(const xercesc::SAXParseException &exc)
{
    if (treeMode == kTreeMode) {
        sawErrors = true;
        recordTreeError(exc, false);
        return;
    }
    if (treeMode != kEventMode)
        return;
    // A recoverable error (validity) is never classified further.
    sawErrors = true;
    appendGenericException(error_position(*this, exc));
}

void XmlDomHandlers::fatalError(const xercesc::SAXParseException &exc)
{
    if (treeMode == kTreeMode) {
        sawErrors = true;
        recordTreeError(exc, true);
        return;
    }
    if (treeMode != kEventMode)
        return;
    sawErrors = true;
    const int32_t position = error_position(*this, exc);
    const int index = error_index(parserError);
    // The suppression marker belongs to warnings only: here it is unclassified.
    if (index <= 0 || index >= kPerrTableSize || xml_perr_op_table[index] == nullptr) {
        appendGenericException(position);
        return;
    }
    PendingRecord record(new_event("EXCEPTION"));
    record->prev = eventTail;
    xml_perr_op_table[index](record.get(), docText, docTextLen, position, national ? 1 : 0, this);
    appendEvent(record.release());
}

void XmlDomHandlers::resetErrors()
{
    sawErrors = false;
}

} // namespace cblxml
