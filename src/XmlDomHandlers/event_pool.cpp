#include "XmlDomHandlers/event_pool.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "XmlParseErr/event_record.h"

namespace cblxml {

struct EventPool::Slot {
    xd_parse_info record;  // first: a record's address is its slot's
    char name[CBLXML_EVENT_NAME_LEN];
    Slot *nextFree;
};

EventPool::~EventPool()
{
    while (freeSlots != nullptr) {
        Slot *next = freeSlots->nextFree;
        std::free(freeSlots);
        freeSlots = next;
    }
}

xd_parse_info *EventPool::take(const char *name)
{
    Slot *slot = freeSlots;
    if (slot != nullptr) {
        freeSlots = slot->nextFree;
    } else {
        slot = static_cast<Slot *>(std::malloc(sizeof(Slot)));
        if (slot == nullptr)
            throw std::bad_alloc();
    }
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

bool EventPool::owns(const xd_parse_info *record)
{
    // A record built by new_event has its name in a block of its own, which
    // can never start right behind the record's 40 bytes.
    return record->event_name == reinterpret_cast<const char *>(record) + offsetof(Slot, name);
}

void release_event(EventPool *pool, xd_parse_info *record)
{
    if (record == nullptr)
        return;
    if (pool != nullptr && EventPool::owns(record)) {
        std::free(record->text);
        record->text = nullptr;
        pool->give(record);
        return;
    }
    kvt_xe_xmlparse_delete_info(record);
}

} // namespace cblxml
