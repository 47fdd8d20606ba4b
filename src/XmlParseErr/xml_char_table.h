// The XML 1.0 character set within 16 bits, as a flag table indexed by the
// UTF-16 unit: 0x9, 0xA, 0xD, 0x20 to 0xD7FF and 0xE000 to 0xFFFD carry
// kXmlCharFlag. Surrogate halves are not characters on their own.
#ifndef CBLXML_XMLPARSEERR_XML_CHAR_TABLE_H
#define CBLXML_XMLPARSEERR_XML_CHAR_TABLE_H

#include <array>
#include <cstdint>

namespace cblxml {

constexpr uint8_t kXmlCharFlag = 0x40;

extern const std::array<uint8_t, 65536> kXmlCharFlags;

inline bool is_xml_char(char16_t unit) { return (kXmlCharFlags[unit] & kXmlCharFlag) != 0; }

}  // namespace cblxml

#endif
