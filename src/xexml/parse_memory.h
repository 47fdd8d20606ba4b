// The memory of one parse as the parser sees it: every block that the
// parser's reader, scanner and input source take during the parse comes
// from here, and whatever is still held when the parse ends (what the
// parser leaves half built after running out of memory) is released with
// it. The parser's process-wide state is not made here: it was built by
// its initialisation, with the parser's own memory manager.
#ifndef CBLXML_XEXML_PARSE_MEMORY_H
#define CBLXML_XEXML_PARSE_MEMORY_H

#include <xercesc/framework/MemoryManager.hpp>

namespace cblxml {

class ParseMemory : public xercesc::MemoryManager {
public:
    ParseMemory() = default;
    // Releases every block not given back; it must outlive all users.
    ~ParseMemory() override;
    ParseMemory(const ParseMemory &) = delete;
    ParseMemory &operator=(const ParseMemory &) = delete;

    // Throws the parser's OutOfMemoryException when no block is to be had.
    void *allocate(XMLSize_t size) override;
    void deallocate(void *block) override;
    // The parser's exceptions take their memory here too: one that runs out
    // of it while being built leaves its first blocks behind. They must not
    // outlive the manager.
    xercesc::MemoryManager *getExceptionMemoryManager() override { return this; }

private:
    struct Header;
    Header *blocks = nullptr;  // the blocks held, newest first
};

}  // namespace cblxml

#endif
