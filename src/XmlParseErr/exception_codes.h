// The codes of the "EXCEPTION" events that the library makes itself, each
// named once. The codes of classified parser errors live with their
// handlers (perr_handlers.h, perr_codes.h).
#ifndef CBLXML_XMLPARSEERR_EXCEPTION_CODES_H
#define CBLXML_XMLPARSEERR_EXCEPTION_CODES_H

#include <cstdint>

namespace cblxml {

// An error no handler classifies, a document that cannot be read at all, and
// any failure of the library itself during a parse.
constexpr int32_t kGenericExceptionCode = 201;
// A second document type declaration.
constexpr int32_t kSecondDoctypeCode = 123;
// An undeclared entity referenced in content and in an attribute value.
constexpr int32_t kUnknownEntityInContentCode = 161;
constexpr int32_t kUnknownEntityInAttributeCode = 162;
// Refusals: an EBCDIC document without (or with a broken) declaration where
// the program's data is ASCII; an ASCII or UTF-8 document and a UTF-16
// document where the program's data is EBCDIC.
constexpr int32_t kEbcdicRefusedCode = 300;
constexpr int32_t kAsciiRefusedCode = 306;
constexpr int32_t kUtf16RefusedCode = 310;

}  // namespace cblxml

#endif
