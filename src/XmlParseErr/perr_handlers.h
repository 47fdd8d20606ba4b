// The error handlers of the error-op table, named after the parser errors
// they classify. Most of them differ only in how they choose the code: they
// are one template over a code-choosing function (perr_codes.h) and give the
// exception the document text from offset 0 through the error position.
#ifndef CBLXML_XMLPARSEERR_PERR_HANDLERS_H
#define CBLXML_XMLPARSEERR_PERR_HANDLERS_H

#include <cstdint>

#include "XmlParseErr/perr_codes.h"
#include "XmlParseErr/xml_perr_op_table.h"
#include "cblxml.h"

namespace cblxml {

// The error position as the handlers use it: never negative, and a position
// past the text is clamped to its end (the parser stopped at the end).
int64_t clamp_position(int32_t position, uint32_t docLen);

// Gives the record its code and, as text, the first `count` units of the
// document (clamped to 0 .. docLen) converted for the program; ends the list
// at the record. The text buffer is owned by the record.
void finish_exception(xd_parse_info *record, DocView doc, int64_t count, int32_t code,
                      int32_t national, TextConverter &convert);

// Offset of the last ">" before the "<" that starts the tag holding the
// unit before `position`, or kNotFound.
int64_t end_of_tag_before(DocView doc, int64_t position);

// Most handlers: the text runs through the error position.
template <perr_classifier Classify>
void classified_exception(xd_parse_info *record, const XMLCh *docText, uint32_t docLen,
                          int32_t position, int32_t national, TextConverter &convert)
{
    const ErrorSite site{DocView{docText, docLen}, clamp_position(position, docLen), record->prev};
    finish_exception(record, site.doc, site.position + 1, Classify(site), national, convert);
}

// The text ends at the end of the last complete tag before the start tag
// that holds the error (empty when there is none). The parser reports these
// errors once it has read the whole start tag, so the position lies past the
// tag's own ">"; the walk starts one unit before it.
template <int32_t Code>
void exception_to_last_tag_end(xd_parse_info *record, const XMLCh *docText, uint32_t docLen,
                               int32_t position, int32_t national, TextConverter &convert)
{
    const DocView doc{docText, docLen};
    finish_exception(record, doc, end_of_tag_before(doc, clamp_position(position, docLen)) + 1,
                     Code, national, convert);
}

// An undeclared general entity: a reference event (content or attribute)
// carrying the entity's name, followed by an "EXCEPTION" record with an empty
// text; or a plain exception when the reference stands elsewhere.
void EntityNotFound(xd_parse_info *record, const XMLCh *docText, uint32_t docLen, int32_t position,
                    int32_t national, TextConverter &convert);

inline constexpr xml_perr_op InvalidDocumentStructure =
    classified_exception<InvalidDocumentStructureCode>;
inline constexpr xml_perr_op ExpectedCommentOrPI = classified_exception<ExpectedCommentOrPICode>;
inline constexpr xml_perr_op AttrAlreadyUsedInSTag = exception_to_last_tag_end<3>;
inline constexpr xml_perr_op BracketInAttrValue = exception_to_last_tag_end<4>;
inline constexpr xml_perr_op ExpectedEndOfTag = classified_exception<fixed_code<5>>;
inline constexpr xml_perr_op InvalidCharacter = classified_exception<InvalidCharacterCode>;
inline constexpr xml_perr_op BadSequenceInCharData = classified_exception<fixed_code<8>>;
inline constexpr xml_perr_op IllegalSequenceInComment = classified_exception<fixed_code<10>>;
inline constexpr xml_perr_op NoPIStartsWithXML = classified_exception<fixed_code<12>>;
inline constexpr xml_perr_op UnterminatedCharRef = classified_exception<UnterminatedCharRefCode>;
inline constexpr xml_perr_op ExpectedNumericalCharRef =
    classified_exception<ExpectedNumericalCharRefCode>;
inline constexpr xml_perr_op BadXMLEncoding = classified_exception<BadXMLEncodingCode>;
inline constexpr xml_perr_op InvalidCharacterRef = classified_exception<fixed_code<16>>;
inline constexpr xml_perr_op UnterminatedEntityRef =
    classified_exception<UnterminatedEntityRefCode>;
inline constexpr xml_perr_op InvalidCharacterInAttrValue = classified_exception<fixed_code<18>>;
inline constexpr xml_perr_op ExpectedDeclString = classified_exception<ExpectedDeclStringCode>;
inline constexpr xml_perr_op EmptyMainEntity = classified_exception<code_if_rest_blank<102>>;
inline constexpr xml_perr_op ExpectedQuotedString = classified_exception<ExpectedQuotedStringCode>;
inline constexpr xml_perr_op ExpectedEqSign = classified_exception<ExpectedEqSignCode>;
inline constexpr xml_perr_op ExpectedAttrValue = classified_exception<code_if_rest_blank<110, 128>>;
inline constexpr xml_perr_op UnterminatedStartTag = classified_exception<UnterminatedStartTagCode>;
inline constexpr xml_perr_op EndedWithTagsOnStack = classified_exception<code_if_rest_blank<115>>;
inline constexpr xml_perr_op UnterminatedPI = classified_exception<UnterminatedPICode>;
inline constexpr xml_perr_op UnterminatedComment = classified_exception<code_if_rest_blank<118>>;
inline constexpr xml_perr_op UnterminatedCDATASection =
    classified_exception<code_if_rest_blank<119>>;
// Deliberately the code of an unterminated CDATA section.
inline constexpr xml_perr_op ExpectedOpenSquareBracket =
    classified_exception<code_if_rest_blank<119>>;
inline constexpr xml_perr_op ExpectedElementName = classified_exception<ExpectedElementNameCode>;
inline constexpr xml_perr_op ExpectedAttrName = classified_exception<ExpectedAttrNameCode>;
inline constexpr xml_perr_op UnterminatedEndTag = classified_exception<fixed_code<134>>;
inline constexpr xml_perr_op PINameExpected = classified_exception<fixed_code<138>>;
inline constexpr xml_perr_op ExpectedEntityRefName =
    classified_exception<ExpectedEntityRefNameCode>;
inline constexpr xml_perr_op XMLVersionRequired = classified_exception<fixed_code<142>>;
inline constexpr xml_perr_op UnsupportedXMLVersion = classified_exception<fixed_code<145>>;
inline constexpr xml_perr_op ExpectedWhitespace = classified_exception<ExpectedWhitespaceCode>;
inline constexpr xml_perr_op BadStandalone = classified_exception<fixed_code<155>>;
inline constexpr xml_perr_op UnterminatedXMLDecl = classified_exception<fixed_code<158>>;
inline constexpr xml_perr_op UnexpectedEOFException =
    classified_exception<UnexpectedEOFExceptionCode>;
inline constexpr xml_perr_op TranscodingException = classified_exception<fixed_code<150>>;

}  // namespace cblxml

#endif
