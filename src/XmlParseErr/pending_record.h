// Ownership of event records that are being built and have not yet joined
// the event list: whatever fails on the way, the records are freed.
#ifndef CBLXML_XMLPARSEERR_PENDING_RECORD_H
#define CBLXML_XMLPARSEERR_PENDING_RECORD_H

#include <memory>

#include "cblxml.h"

namespace cblxml {

// Frees a record and the records that follow it through `next`.
struct EventChainDeleter {
    void operator()(xd_parse_info *record) const
    {
        while (record != nullptr) {
            xd_parse_info *next = record->next;
            kvt_xe_xmlparse_delete_info(record);
            record = next;
        }
    }
};

using PendingRecord = std::unique_ptr<xd_parse_info, EventChainDeleter>;

}  // namespace cblxml

#endif
