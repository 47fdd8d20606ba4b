#include "delivery.h"

#include <cstdlib>
#include <cstring>

#include "xml_delivery.h"

namespace conformance {
namespace {

// Far above the events of any suite document; reaching it means the list
// does not end.
constexpr uint64_t EventLimit = 1000000;

}  // namespace

bool DeliverySummary::operator==(const DeliverySummary &o) const
{
    return events == o.events && eventsAfterEnd == o.eventsAfterEnd && exceptions == o.exceptions &&
           lastExceptionCode == o.lastExceptionCode && lastIsEnd == o.lastIsEnd &&
           lastIsException == o.lastIsException && terminalRecord == o.terminalRecord &&
           overEventLimit == o.overEventLimit && std::strcmp(lastName, o.lastName) == 0;
}

DeliverySummary deliver_all_events(const std::string &document, uint32_t options)
{
    DeliverySummary summary;
    bool seenEnd = false;
    const cblxml_support::DeliveryEnd end = cblxml_support::deliver(
        document.data(), static_cast<uint32_t>(document.size()), options,
        [&](const cblxml_support::Delivered &event) {
            if (seenEnd)
                ++summary.eventsAfterEnd;
            const size_t n = event.name_length();
            std::memcpy(summary.lastName, event.name, n);
            summary.lastName[n] = '\0';
            summary.lastIsEnd = event.is("END-OF-DOCUMENT");
            summary.lastIsException = event.is("EXCEPTION");
            seenEnd = seenEnd || summary.lastIsEnd;
            if (summary.lastIsException) {
                ++summary.exceptions;
                summary.lastExceptionCode = event.code;
            }
            return true;
        },
        EventLimit);
    summary.events = end.events;
    summary.terminalRecord = end.terminal;
    summary.overEventLimit = !end.ended && !end.terminal;
    return summary;
}

std::string outcome_of(const DeliverySummary &s)
{
    if (s.terminalRecord)
        return "FAILURE: a record with code -1 was delivered";
    if (s.overEventLimit)
        return "FAILURE: the event list does not end";
    if (s.eventsAfterEnd > 1)
        return "FAILURE: " + std::to_string(s.eventsAfterEnd) + " events after END-OF-DOCUMENT";
    const std::string code = std::to_string(s.lastExceptionCode);
    if (s.lastIsException)
        return "exception " + code;
    if (s.lastIsEnd)
        return s.exceptions == 0 ? "end" : "exception " + code + " then end";
    return std::string("FAILURE: the last event is ") +
           (s.lastName[0] != '\0' ? s.lastName : "blank");
}

}  // namespace conformance
