#include "xmldom/dom_arena.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define CBLXML_ARENA_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CBLXML_ARENA_ASAN 1
#endif
#endif

#ifdef CBLXML_ARENA_ASAN
#include <sanitizer/asan_interface.h>
// Memory not handed out (the rest of a block, the nodes on the free list) is
// poisoned, so that AddressSanitizer still reports a use after DELETE or
// outside a string.
#define ARENA_POISON(p, n) ASAN_POISON_MEMORY_REGION((p), (n))
#define ARENA_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION((p), (n))
#else
#define ARENA_POISON(p, n) ((void)(p), (void)(n))
#define ARENA_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace cblxml {
namespace {

constexpr size_t kBlockSize = 256 * 1024;
// Once an arena holds this much, its blocks are 2 MiB, mapped on a 2 MiB
// boundary so that the system can back each with one large page: a large
// document then takes one page fault per block instead of 512.
constexpr size_t kLargeFrom = 4 * 1024 * 1024;
constexpr size_t kLargeBlock = 2 * 1024 * 1024;
// Larger strings get a block of their own, so that a block is never mostly
// left unused.
constexpr size_t kOwnBlock = kBlockSize / 8;
constexpr size_t kAlign = alignof(xd_dom_node_t);

size_t aligned(size_t size) { return (size + kAlign - 1) & ~(kAlign - 1); }

#ifdef CBLXML_ARENA_ASAN
// Under AddressSanitizer every block comes from the heap, where the leak
// checker looks for the heap strings that nodes point to.
void *map_large_block() { return nullptr; }
#else
// A 2 MiB block on a 2 MiB boundary, mapped exactly (the allocator's aligned
// blocks keep up to another 2 MiB of address space behind them) and advised
// for a large page; null when the system refuses.
void *map_large_block()
{
    const size_t span = 2 * kLargeBlock;
    void *mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    const auto start = reinterpret_cast<uintptr_t>(mapped);
    const uintptr_t block = (start + kLargeBlock - 1) & ~(kLargeBlock - 1);
    if (block > start)
        munmap(mapped, block - start);
    const uintptr_t end = block + kLargeBlock;
    if (start + span > end)
        munmap(reinterpret_cast<void *>(end), start + span - end);
    madvise(reinterpret_cast<void *>(block), kLargeBlock, MADV_HUGEPAGE);  // advice only
    return reinterpret_cast<void *>(block);
}
#endif

void release_block(void *block, size_t size, bool mapped)
{
    if (mapped)
        munmap(block, size);
    else
        std::free(block);
}

}  // namespace

DomArena::~DomArena()
{
    for (const Block &b : blocks_) {
        ARENA_UNPOISON(reinterpret_cast<void *>(b.start), b.end - b.start);
        release_block(reinterpret_cast<void *>(b.start), b.end - b.start, b.mapped);
    }
}

void *DomArena::new_block(size_t size)
{
    void *block = size == kLargeBlock ? map_large_block() : nullptr;
    const bool mapped = block != nullptr;
    if (!mapped)
        block = std::malloc(size);
    if (block == nullptr)
        return nullptr;
    const Block b{reinterpret_cast<uintptr_t>(block), reinterpret_cast<uintptr_t>(block) + size,
                  mapped};
    try {
        blocks_.insert(
            std::upper_bound(blocks_.begin(), blocks_.end(), b,
                             [](const Block &x, const Block &y) { return x.start < y.start; }),
            b);
    } catch (const std::bad_alloc &) {
        release_block(block, size, mapped);
        return nullptr;
    }
    ARENA_POISON(block, size);
    return block;
}

void *DomArena::take(size_t size)
{
    size = aligned(size == 0 ? 1 : size);
    if (size >= kOwnBlock) {
        void *own = new_block(size);
        if (own != nullptr)
            ARENA_UNPOISON(own, size);
        return own;
    }
    if (size > left_) {
        const size_t block_size = held_ >= kLargeFrom ? kLargeBlock : kBlockSize;
        auto *block = static_cast<char *>(new_block(block_size));
        if (block == nullptr)
            return nullptr;
        held_ += block_size;
        next_ = block;
        left_ = block_size;
    }
    char *p = next_;
    next_ += size;
    left_ -= size;
    ARENA_UNPOISON(p, size);
    return p;
}

xd_dom_node_t *DomArena::node(uint32_t kind)
{
    void *p = free_nodes_;
    if (p != nullptr) {
        ARENA_UNPOISON(p, sizeof(xd_dom_node_t));
        free_nodes_ = free_nodes_->next_sibling;
    } else {
        p = take(sizeof(xd_dom_node_t));
        if (p == nullptr)
            return nullptr;
    }
    auto *n = static_cast<xd_dom_node_t *>(std::memset(p, 0, sizeof(xd_dom_node_t)));
    n->kind = kind;
    return n;
}

void DomArena::release(xd_dom_node_t *node)
{
    std::memset(node, 0, sizeof *node);
    node->next_sibling = free_nodes_;
    free_nodes_ = node;
    ARENA_POISON(node, sizeof *node);
}

char *DomArena::copy(const char *bytes, size_t size)
{
    auto *p = static_cast<char *>(take(size + 1));
    if (p == nullptr)
        return nullptr;
    if (size > 0)
        std::memcpy(p, bytes, size);
    p[size] = '\0';
    return p;
}

char *DomArena::shared(const char *bytes, size_t size)
{
    if (bytes == nullptr || size == 0)
        return shared_view(std::string_view());
    Recent &r = recent_[(reinterpret_cast<uintptr_t>(bytes) >> 3) % kRecent];
    // The bytes at an address may have changed since: the copy is compared
    // with them before it is taken.
    if (r.bytes == bytes && r.size == size && std::memcmp(r.copy, bytes, r.length) == 0 &&
        (r.length == size || bytes[r.length] == '\0'))
        return r.copy;
    const void *nul = std::memchr(bytes, '\0', size);
    const size_t length =
        nul != nullptr ? static_cast<size_t>(static_cast<const char *>(nul) - bytes) : size;
    char *copy = shared_view(std::string_view(bytes, length));
    if (copy != nullptr)
        r = Recent{bytes, size, copy, length};
    return copy;
}

char *DomArena::shared(const char *text) { return shared_view(std::string_view(text)); }

char *DomArena::shared_view(std::string_view key)
{
    const char *text = key.data();
    const auto found = shared_.find(key);
    if (found != shared_.end())
        return found->second;
    char *p = copy(text, key.size());
    if (p == nullptr)
        return nullptr;
    try {
        shared_.emplace(std::string_view(p, key.size()), p);
    } catch (const std::bad_alloc &) {
        // Not shared, but still a valid copy that the arena frees.
    }
    return p;
}

char *DomArena::text_name()
{
    if (text_name_ == nullptr)
        text_name_ = shared("text");
    return text_name_;
}

bool DomArena::owns(const void *p) const
{
    const auto at = reinterpret_cast<uintptr_t>(p);
    // Strings of neighbouring nodes mostly share a block; their names, made
    // once, mostly share another.
    if (at >= last_.start && at < last_.end)
        return true;
    if (at >= prev_.start && at < prev_.end) {
        std::swap(last_, prev_);
        return true;
    }
    auto it = std::upper_bound(blocks_.begin(), blocks_.end(), at,
                               [](uintptr_t x, const Block &b) { return x < b.start; });
    if (it == blocks_.begin())
        return false;
    --it;
    if (at >= it->end)
        return false;
    prev_ = last_;
    last_ = *it;
    return true;
}

}  // namespace cblxml
