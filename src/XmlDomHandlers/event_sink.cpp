// The event list of an event-mode parse: records are appended at its tail.
#include "XmlDomHandlers/event_sink.h"

#include "XmlParseErr/event_record.h"
#include "XmlParseErr/pending_record.h"

namespace cblxml {

void EventSink::appendEvent(xd_parse_info *record)
{
    if (eventTail == nullptr) {
        // No list to append to (a caller without a sentinel): drop the record.
        EventChainDeleter()(record);
        return;
    }
    record->prev = eventTail;
    eventTail->next = record;
    eventTail = record;
    while (eventTail->next != nullptr)
        eventTail = eventTail->next;
}

xd_parse_info *EventSink::newRecord(const char *name)
{
    return pool != nullptr ? pool->take(name) : new_event(name);
}

xd_parse_info *EventSink::appendTextEvent(const char *name, const XMLCh *text, size_t count)
{
    xd_parse_info *record = newRecord(name);
    appendEvent(record);  // owned by the list from here, even if the text fails
    record->text = h.cobolText(text, count, h.isNational() ? 1 : 0);
    return record;
}

}  // namespace cblxml
