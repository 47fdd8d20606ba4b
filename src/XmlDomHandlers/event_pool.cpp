#include "XmlDomHandlers/event_pool.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include <malloc.h>

#include "XmlParseErr/event_record.h"

namespace cblxml {

struct EventPool::Slot {
    xd_parse_info record;  // first: a record's address is its slot's
    char name[CBLXML_EVENT_NAME_LEN];
    Slot *nextFree;
};

struct EventPool::Block {
    Slot slots[kBlockSlots];
    Block *next;
};

EventPool::~EventPool()
{
    for (size_t i = 0; i < keptCount; ++i)
        std::free(keptTexts[i]);
    while (blocks != nullptr) {
        Block *next = blocks->next;
        std::free(blocks);
        blocks = next;
    }
}

xd_parse_info *EventPool::take(const char *name)
{
    if (freeSlots == nullptr) {
        auto *block = static_cast<Block *>(std::malloc(sizeof(Block)));
        if (block == nullptr)
            throw std::bad_alloc();
        block->next = blocks;
        blocks = block;
        for (size_t i = kBlockSlots; i > 0; --i) {
            block->slots[i - 1].nextFree = freeSlots;
            freeSlots = &block->slots[i - 1];
        }
    }
    Slot *slot = freeSlots;
    freeSlots = slot->nextFree;
    slot->record = xd_parse_info{};
    slot->record.event_name = slot->name;
    slot->nextFree = nullptr;
    std::memcpy(slot->name, padded(name), CBLXML_EVENT_NAME_LEN);
    return &slot->record;
}

const char *EventPool::padded(const char *name)
{
    PaddedName &entry = names[(reinterpret_cast<uintptr_t>(name) >> 3) % kNameCache];
    if (entry.name != name) {
        xd_parse_info scratch{};
        scratch.event_name = entry.padded;
        rename_event(&scratch, name);
        entry.name = name;
    }
    return entry.padded;
}

void EventPool::give(xd_parse_info *record)
{
    Slot *slot = reinterpret_cast<Slot *>(record);
    slot->nextFree = freeSlots;
    freeSlots = slot;
}

bool EventPool::owns(const xd_parse_info *record) const
{
    const auto at = reinterpret_cast<uintptr_t>(record);
    for (const Block *block = blocks; block != nullptr; block = block->next) {
        const auto first = reinterpret_cast<uintptr_t>(&block->slots[0]);
        if (at >= first && at < first + sizeof block->slots)
            return true;
    }
    return false;
}

char *EventPool::textBlock(size_t bytes)
{
    for (size_t i = keptCount; i > 0; --i) {
        if (keptSizes[i - 1] >= bytes) {
            char *text = keptTexts[i - 1];
            --keptCount;
            keptTexts[i - 1] = keptTexts[keptCount];
            keptSizes[i - 1] = keptSizes[keptCount];
            return text;
        }
    }
    auto *text = static_cast<char *>(std::malloc(bytes > kSmallestText ? bytes : kSmallestText));
    if (text == nullptr)
        throw std::bad_alloc();
    return text;
}

void EventPool::keepText(char *text)
{
    if (text == nullptr)
        return;
    const size_t size = malloc_usable_size(text);
    if (keptCount == kKeptTexts || size > kLargestKept) {
        std::free(text);
        return;
    }
    keptTexts[keptCount] = text;
    keptSizes[keptCount] = size;
    ++keptCount;
}

void release_event(EventPool *pool, xd_parse_info *record)
{
    if (record == nullptr)
        return;
    if (pool != nullptr && pool->owns(record)) {
        pool->keepText(record->text);
        record->text = nullptr;
        pool->give(record);
        return;
    }
    kvt_xe_xmlparse_delete_info(record);
}

}  // namespace cblxml
