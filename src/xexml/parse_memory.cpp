#include "xexml/parse_memory.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <xercesc/util/OutOfMemoryException.hpp>

namespace cblxml {

// Each block starts with its links; the header's alignment keeps what
// follows it aligned for any type.
struct alignas(std::max_align_t) ParseMemory::Header {
    Header *prev;
    Header *next;
};

ParseMemory::~ParseMemory()
{
    while (blocks != nullptr) {
        Header *next = blocks->next;
        std::free(blocks);
        blocks = next;
    }
}

void *ParseMemory::allocate(XMLSize_t size)
{
    if (size > SIZE_MAX - sizeof(Header))
        throw xercesc::OutOfMemoryException();
    auto *header = static_cast<Header *>(std::malloc(sizeof(Header) + size));
    if (header == nullptr)
        throw xercesc::OutOfMemoryException();
    header->prev = nullptr;
    header->next = blocks;
    if (blocks != nullptr)
        blocks->prev = header;
    blocks = header;
    return header + 1;
}

void ParseMemory::deallocate(void *block)
{
    if (block == nullptr)
        return;
    Header *header = static_cast<Header *>(block) - 1;
    if (header->prev != nullptr)
        header->prev->next = header->next;
    else
        blocks = header->next;
    if (header->next != nullptr)
        header->next->prev = header->prev;
    std::free(header);
}

}  // namespace cblxml
