// The storage of one document tree: nodes and strings carved from large
// blocks instead of one allocation each, element and attribute names (and
// namespace URIs) kept once per distinct string, and a free list for the
// nodes that DELETE and REWRITE remove. Everything goes when the document
// node is freed. Nothing here throws: a failed allocation gives null.
#ifndef CBLXML_XMLDOM_DOM_ARENA_H
#define CBLXML_XMLDOM_DOM_ARENA_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cblxml.h"

namespace cblxml {

class DomArena {
public:
    DomArena() = default;
    ~DomArena();
    DomArena(const DomArena &) = delete;
    DomArena &operator=(const DomArena &) = delete;

    // A zero-filled node of `kind`; null when memory runs out.
    xd_dom_node_t *node(uint32_t kind);
    // Takes a node back for reuse. Its strings are the caller's business.
    void release(xd_dom_node_t *node);
    // A NUL-terminated copy of `size` bytes; null when memory runs out.
    char *copy(const char *bytes, size_t size);
    // The one copy of `text` this arena keeps; null when memory runs out.
    char *shared(const char *text);
    // The same for the first `size` bytes at `bytes`, cut at a NUL among
    // them. Names that come again from the same place (a record item's
    // name) are found without hashing them.
    char *shared(const char *bytes, size_t size);
    // The arena's copy of the name of every text node, "text"; null when
    // memory runs out.
    char *text_name();
    // True when `p` points into a block of this arena.
    bool owns(const void *p) const;

private:
    void *take(size_t size);
    char *shared_view(std::string_view key);
    void *new_block(size_t size);

    struct Block {
        uintptr_t start;
        uintptr_t end;
        bool mapped;  // a mapping of its own, not a heap block
    };
    // A recent answer of shared(bytes, size), by the address of the bytes.
    struct Recent {
        const char *bytes;
        size_t size;
        char *copy;
        size_t length;  // of copy
    };
    static constexpr size_t kRecent = 64;

    std::vector<Block> blocks_;        // sorted by address
    mutable Block last_{0, 0, false};  // the block owns() found last
    mutable Block prev_{0, 0, false};  // and the one before it
    char *next_ = nullptr;
    size_t left_ = 0;
    size_t held_ = 0;  // bytes of the shared blocks
    xd_dom_node_t *free_nodes_ = nullptr;
    char *text_name_ = nullptr;
    std::unordered_map<std::string_view, char *> shared_;
    Recent recent_[kRecent] = {};
};

}  // namespace cblxml

#endif
