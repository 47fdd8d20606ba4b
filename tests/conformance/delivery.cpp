#include "delivery.h"

#include <cstdlib>
#include <cstring>

#include "cblxml.h"

namespace conformance {
namespace {

// Far above the events of any suite document; reaching it means the list
// does not end.
constexpr uint64_t EventLimit = 1000000;

int32_t big_endian(const unsigned char *code)
{
    return static_cast<int32_t>((uint32_t{code[0]} << 24) | (uint32_t{code[1]} << 16) |
                                (uint32_t{code[2]} << 8) | code[3]);
}

bool name_is(const char *eventName, const char *wanted)
{
    const size_t n = std::strlen(wanted);
    if (std::memcmp(eventName, wanted, n) != 0)
        return false;
    for (size_t i = n; i < CBLXML_EVENT_NAME_LEN; ++i) {
        if (eventName[i] != ' ')
            return false;
    }
    return true;
}

void keep_name(DeliverySummary &summary, const char *eventName)
{
    size_t n = CBLXML_EVENT_NAME_LEN;
    while (n > 0 && eventName[n - 1] == ' ')
        --n;
    std::memcpy(summary.lastName, eventName, n);
    summary.lastName[n] = '\0';
}

} // namespace

bool DeliverySummary::operator==(const DeliverySummary &o) const
{
    return events == o.events && eventsAfterEnd == o.eventsAfterEnd &&
           exceptions == o.exceptions && lastExceptionCode == o.lastExceptionCode &&
           lastIsEnd == o.lastIsEnd && lastIsException == o.lastIsException &&
           terminalRecord == o.terminalRecord && overEventLimit == o.overEventLimit &&
           std::strcmp(lastName, o.lastName) == 0;
}

DeliverySummary deliver_all_events(const std::string &document, uint32_t options)
{
    DeliverySummary summary;
    xd_parse_info *state = nullptr;
    void *documentAddress = const_cast<char *>(document.data());
    auto documentLength = static_cast<uint32_t>(document.size());
    void *text = nullptr;
    uint32_t textLength = 0;
    unsigned char code[4] = {};
    char eventName[CBLXML_EVENT_NAME_LEN];
    bool seenEnd = false;
    do {
        std::memset(eventName, ' ', sizeof eventName);
        CBL_XMLPARSE_INTERFACE(&state, &documentAddress, &text, &documentLength, &textLength,
                               code, eventName, &options);
        ++summary.events;
        if (seenEnd)
            ++summary.eventsAfterEnd;
        keep_name(summary, eventName);
        const int32_t xmlCode = big_endian(code);
        summary.lastIsEnd = name_is(eventName, "END-OF-DOCUMENT");
        summary.lastIsException = name_is(eventName, "EXCEPTION");
        seenEnd = seenEnd || summary.lastIsEnd;
        if (summary.lastIsException) {
            ++summary.exceptions;
            summary.lastExceptionCode = xmlCode;
        }
        if (xmlCode == -1) {
            // The delivery leaves the head on a freed record and the text
            // pointer on a freed buffer: neither may be touched again.
            summary.terminalRecord = true;
            return summary;
        }
        if (summary.events >= EventLimit && state != nullptr) {
            summary.overEventLimit = true;
            CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr,
                                   nullptr);
        }
    } while (state != nullptr);
    std::free(text);
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

} // namespace conformance
