#include "XmlParseErr/xml_perr_op_table.h"

#include "XmlParseErr/perr_handlers.h"

namespace cblxml {

// The order is the contract with the index map: slot n classifies the errors
// that xml_perr_index maps to n.
const xml_perr_op xml_perr_op_table[kPerrTableSize] = {
    nullptr,
    InvalidDocumentStructure,     // 1
    ExpectedCommentOrPI,          // 2
    AttrAlreadyUsedInSTag,        // 3
    BracketInAttrValue,           // 4
    ExpectedEndOfTag,             // 5
    InvalidCharacter,             // 6
    BadSequenceInCharData,        // 7
    IllegalSequenceInComment,     // 8
    NoPIStartsWithXML,            // 9
    UnterminatedCharRef,          // 10
    ExpectedNumericalCharRef,     // 11
    BadXMLEncoding,               // 12
    InvalidCharacterRef,          // 13
    UnterminatedEntityRef,        // 14
    InvalidCharacterInAttrValue,  // 15
    ExpectedDeclString,           // 16
    EmptyMainEntity,              // 17
    ExpectedQuotedString,         // 18
    ExpectedEqSign,               // 19
    ExpectedAttrValue,            // 20
    UnterminatedStartTag,         // 21
    EndedWithTagsOnStack,         // 22
    UnterminatedPI,               // 23
    UnterminatedComment,          // 24
    UnterminatedCDATASection,     // 25
    ExpectedOpenSquareBracket,    // 26
    ExpectedElementName,          // 27
    ExpectedAttrName,             // 28
    UnterminatedEndTag,           // 29
    PINameExpected,               // 30
    ExpectedEntityRefName,        // 31
    XMLVersionRequired,           // 32
    UnsupportedXMLVersion,        // 33
    ExpectedWhitespace,           // 34
    BadStandalone,                // 35
    UnterminatedXMLDecl,          // 36
    EntityNotFound,               // 37
    UnexpectedEOFException,       // 38
    TranscodingException,         // 39
};

}  // namespace cblxml
