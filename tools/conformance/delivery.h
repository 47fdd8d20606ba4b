// Drives one parse through the XML PARSE entry the way a COBOL run-time
// does, and sums up how the event stream ended.
#ifndef CBLXML_CONFORMANCE_DELIVERY_H
#define CBLXML_CONFORMANCE_DELIVERY_H

#include <cstdint>
#include <string>

namespace conformance {

// Plain data only: a parse is summed up without allocating, so that the
// allocation count around it sees the library's blocks alone.
struct DeliverySummary {
    uint64_t events = 0;
    uint64_t eventsAfterEnd = 0;  // events delivered after the first END-OF-DOCUMENT
    uint64_t exceptions = 0;
    int32_t lastExceptionCode = 0;
    bool lastIsEnd = false;
    bool lastIsException = false;
    bool terminalRecord = false;  // a code of -1: the caller may not call again
    bool overEventLimit = false;
    char lastName[31] = {};  // the last event's name, blanks removed

    bool operator==(const DeliverySummary &o) const;
};

// Delivers every event of `document` with the given option word, then
// frees the last text as the run-time does.
DeliverySummary deliver_all_events(const std::string &document, uint32_t options);

// The outcome word of a summary: "end", "exception N", "exception N then
// end" (the parse went on after a recoverable error), or "FAILURE: ...".
std::string outcome_of(const DeliverySummary &summary);

}  // namespace conformance

#endif
