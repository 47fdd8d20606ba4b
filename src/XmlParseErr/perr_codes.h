// How each classified parser error chooses its XML-CODE from the document
// text around the error and the last event appended so far. Pure functions:
// they read the text and the event name, nothing else.
#ifndef CBLXML_XMLPARSEERR_PERR_CODES_H
#define CBLXML_XMLPARSEERR_PERR_CODES_H

#include <cstdint>

#include "XmlParseErr/exception_codes.h"
#include "XmlParseErr/perr_text.h"
#include "cblxml.h"

namespace cblxml {

// Where an error was found. position is at most doc.length (the end).
struct ErrorSite {
    DocView doc;
    int64_t position;
    const xd_parse_info *lastEvent;  // the record before the exception; may be null
};

using perr_classifier = int32_t (*)(const ErrorSite &site);

template <int32_t Code>
int32_t fixed_code(const ErrorSite &)
{
    return Code;
}

// BlankCode when nothing but blanks follows the error (the input ended
// early), OtherCode otherwise.
template <int32_t BlankCode, int32_t OtherCode = kGenericExceptionCode>
int32_t code_if_rest_blank(const ErrorSite &site)
{
    return rest_is_blank(site.doc, site.position) ? BlankCode : OtherCode;
}

int32_t InvalidDocumentStructureCode(const ErrorSite &site);
int32_t ExpectedCommentOrPICode(const ErrorSite &site);
int32_t InvalidCharacterCode(const ErrorSite &site);
int32_t UnterminatedCharRefCode(const ErrorSite &site);
int32_t ExpectedNumericalCharRefCode(const ErrorSite &site);
int32_t BadXMLEncodingCode(const ErrorSite &site);
int32_t UnterminatedEntityRefCode(const ErrorSite &site);
int32_t ExpectedDeclStringCode(const ErrorSite &site);
int32_t ExpectedQuotedStringCode(const ErrorSite &site);
int32_t ExpectedEqSignCode(const ErrorSite &site);
int32_t UnterminatedStartTagCode(const ErrorSite &site);
int32_t UnterminatedPICode(const ErrorSite &site);
int32_t ExpectedElementNameCode(const ErrorSite &site);
int32_t ExpectedAttrNameCode(const ErrorSite &site);
int32_t ExpectedEntityRefNameCode(const ErrorSite &site);
int32_t ExpectedWhitespaceCode(const ErrorSite &site);
int32_t UnexpectedEOFExceptionCode(const ErrorSite &site);

}  // namespace cblxml

#endif
