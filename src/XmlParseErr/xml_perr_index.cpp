#include "XmlParseErr/xml_perr_op_table.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace cblxml {

namespace {

using xercesc::XMLErrs;
using xercesc::XMLExcepts;

struct IndexEntry {
    unsigned code;
    int index;
};

// Keyed by the parser's error names: the numbers change between parser
// releases. A few errors that newer releases report under their own names
// keep the slot of the name they were reported under before (the invalid
// element, attribute and entity-reference names).
constexpr IndexEntry kXmlErrIndex[] = {
    {XMLErrs::ContradictoryEncoding, kPerrSuppressWarning},
    {XMLErrs::InvalidDocumentStructure, 1},
    {XMLErrs::ExpectedCommentOrPI, 2},
    {XMLErrs::AttrAlreadyUsedInSTag, 3},
    {XMLErrs::BracketInAttrValue, 4},
    {XMLErrs::ExpectedEndOfTagX, 5},
    {XMLErrs::InvalidCharacter, 6},
    {XMLErrs::BadSequenceInCharData, 7},
    {XMLErrs::IllegalSequenceInComment, 8},
    {XMLErrs::NoPIStartsWithXML, 9},
    {XMLErrs::UnterminatedCharRef, 10},
    {XMLErrs::ExpectedNumericalCharRef, 11},
    {XMLErrs::BadXMLEncoding, 12},
    {XMLErrs::InvalidCharacterRef, 13},
    {XMLErrs::UnterminatedEntityRef, 14},
    {XMLErrs::InvalidCharacterInAttrValue, 15},
    {XMLErrs::ExpectedDeclString, 16},
    {XMLErrs::EmptyMainEntity, 17},
    {XMLErrs::ExpectedQuotedString, 18},
    {XMLErrs::ExpectedEqSign, 19},
    {XMLErrs::ExpectedAttrValue, 20},
    {XMLErrs::UnterminatedStartTag, 21},
    {XMLErrs::EndedWithTagsOnStack, 22},
    {XMLErrs::UnterminatedPI, 23},
    {XMLErrs::UnterminatedComment, 24},
    {XMLErrs::UnterminatedCDATASection, 25},
    {XMLErrs::ExpectedOpenSquareBracket, 26},
    {XMLErrs::ExpectedElementName, 27},
    {XMLErrs::InvalidElementName, 27},
    {XMLErrs::ExpectedAttrName, 28},
    {XMLErrs::InvalidAttrName, 28},
    {XMLErrs::UnterminatedEndTag, 29},
    {XMLErrs::PINameExpected, 30},
    {XMLErrs::ExpectedEntityRefName, 31},
    {XMLErrs::InvalidEntityRefName, 31},
    {XMLErrs::XMLVersionRequired, 32},
    {XMLErrs::UnsupportedXMLVersion, 33},
    {XMLErrs::ExpectedWhitespace, 34},
    {XMLErrs::BadStandalone, 35},
    {XMLErrs::UnterminatedXMLDecl, 36},
    {XMLErrs::EntityNotFound, 37},
};

constexpr IndexEntry kExceptIndex[] = {
    {XMLExcepts::Gen_UnexpectedEOF, 38},
    {XMLExcepts::Trans_CantCreateCvtrFor, 39},
};

template <size_t N>
int lookup(const IndexEntry (&entries)[N], unsigned code)
{
    for (const IndexEntry &entry : entries) {
        if (entry.code == code)
            return entry.index;
    }
    return 0;
}

}  // namespace

int xml_perr_index(unsigned code, const XMLCh *domain)
{
    // The number spaces of the domains overlap: the domain decides first.
    if (domain == nullptr)
        return 0;
    if (xercesc::XMLString::equals(domain, xercesc::XMLUni::fgXMLErrDomain))
        return lookup(kXmlErrIndex, code);
    if (xercesc::XMLString::equals(domain, xercesc::XMLUni::fgExceptDomain))
        return lookup(kExceptIndex, code);
    return 0;
}

}  // namespace cblxml
