// Event records of a progressive parse. Such a record never leaves the
// library (the program sees only the texts), so its name lives inside the
// record and freed records are kept for reuse: at most a few records are
// alive at a time, so after the first events no record costs an allocation.
// Slots come in blocks that the pool keeps until it ends, so a record is
// known for the pool's by its address alone.
// Records built with new_event may join the same list; release_event frees
// either kind. The texts are handled alike: a text's block (a malloc block,
// handed to the program with the text) comes back to the pool when its
// record is released or the program's next call returns it, and serves a
// later text.
#ifndef CBLXML_XMLDOMHANDLERS_EVENT_POOL_H
#define CBLXML_XMLDOMHANDLERS_EVENT_POOL_H

#include <cstddef>
#include <cstdint>

#include "cblxml.h"

namespace cblxml {

class EventPool {
public:
    EventPool() = default;
    ~EventPool();
    EventPool(const EventPool &) = delete;
    EventPool &operator=(const EventPool &) = delete;

    // A record named `name`, code 0, no text, no links. The name must not
    // change while the pool lives (event names are literals).
    xd_parse_info *take(const char *name);
    // Keeps a record of this pool for reuse; its text must already be gone.
    void give(xd_parse_info *record);

    // True for a record that take() of this pool made: its address lies in
    // one of the pool's blocks of slots.
    bool owns(const xd_parse_info *record) const;

    // A block of at least `bytes` bytes for an event's text: one kept for
    // reuse when one is large enough, else a new one. Every block comes from
    // malloc, so that whoever ends up owning it (a record, the program) may
    // free it. Throws std::bad_alloc.
    char *textBlock(size_t bytes);
    // Keeps a text block for textBlock (or frees it, when it is large or
    // enough are kept). Null is ignored.
    void keepText(char *text);

private:
    struct Slot;
    struct Block;
    static constexpr size_t kBlockSlots = 16;
    // The 30-byte form of the names last asked for, by the address of the
    // name: callers name events with literals, so the padding is worked out
    // once per name rather than once per event.
    struct PaddedName {
        const char *name = nullptr;
        char padded[CBLXML_EVENT_NAME_LEN];
    };
    static constexpr size_t kNameCache = 32;
    const char *padded(const char *name);

    Block *blocks = nullptr;  // every slot ever made, in blocks
    Slot *freeSlots = nullptr;
    PaddedName names[kNameCache]{};

    // Text blocks kept for reuse and their usable sizes. A few suffice: a
    // text lives from its call-back until the program's next call.
    static constexpr size_t kKeptTexts = 16;
    static constexpr size_t kLargestKept = 64 * 1024;
    static constexpr size_t kSmallestText = 256;  // most texts fit any block
    char *keptTexts[kKeptTexts] = {};
    size_t keptSizes[kKeptTexts] = {};
    size_t keptCount = 0;
};

// Frees a record, its text and its name, whichever way it was built. A
// pooled record goes back to `pool`, which must be the pool that made it.
void release_event(EventPool *pool, xd_parse_info *record);

}  // namespace cblxml

#endif
