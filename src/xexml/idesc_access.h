// Field access for compiled item descriptors.
//
// Descriptors are packed one after another, so a descriptor and its pointer
// fields are often misaligned (every second 132-byte head starts 4 bytes off
// an 8-byte boundary). Every read and write goes through memcpy at the
// field's offset: MISALIGNED DESCRIPTOR.
#ifndef CBLXML_XEXML_IDESC_ACCESS_H
#define CBLXML_XEXML_IDESC_ACCESS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cblxml.h"

namespace cblxml::xexml {

template <typename T>
T desc_load(const IDESC *desc, size_t offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const unsigned char *>(desc) + offset,
                sizeof(T));  // NOLINT(bugprone-sizeof-expression): T may be a pointer
    return value;
}

template <typename T>
void desc_store(IDESC *desc, size_t offset, T value)
{
    std::memcpy(reinterpret_cast<unsigned char *>(desc) + offset, &value,
                sizeof(T));  // NOLINT(bugprone-sizeof-expression): T may be a pointer
}

// DESC_GET(desc, occurs_max) reads a field; DESC_SET(desc, parent, p) writes one.
#define DESC_GET(desc, field)                                                                      \
    ::cblxml::xexml::desc_load<decltype(IDESC::field)>(desc, offsetof(IDESC, field))
#define DESC_SET(desc, field, value)                                                               \
    ::cblxml::xexml::desc_store<decltype(IDESC::field)>(desc, offsetof(IDESC, field), value)

// Levels are one byte, and a descendant always has a greater level than its
// ancestors, so no parent chain made by linkage is longer than this. Walks up
// a chain stop here even when the chain was not made by linkage.
constexpr int kMaxDepth = 256;

// The head size of a descriptor: 136 bytes when any of flag bits 8 to 15 is set.
inline uint32_t desc_head_size(const IDESC *desc)
{
    return (DESC_GET(desc, flags) & IDESC_WIDE_FLAGS) != 0 ? IDESC_WIDE_HEAD_SIZE : IDESC_HEAD_SIZE;
}

// Bytes that an inline string of `length` bytes takes (0 for none).
inline uint64_t desc_padded(uint32_t length)
{
    return length == 0 ? 0 : (uint64_t{length - 1} / IDESC_STRING_UNIT + 1) * IDESC_STRING_UNIT;
}

inline bool desc_is_table(const IDESC *desc) { return DESC_GET(desc, occurs_max) != 0; }

}  // namespace cblxml::xexml

#endif
