#include "xml_parse_run.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "xml_delivery.h"

namespace cblxml_bench {

ParseTally xml_parse(std::string &document, std::vector<char> &textArea, uint32_t flags)
{
    ParseTally tally;
    const auto end = cblxml_support::deliver(
        document.data(), static_cast<uint32_t>(document.size()), flags,
        [&](const cblxml_support::Delivered &d) {
            if (d.text != nullptr && d.length > 0) {
                const size_t n = std::min<size_t>(d.length, textArea.size());
                std::memcpy(textArea.data(), d.text, n);
                tally.textBytes += n;
            }
            if (d.is("EXCEPTION"))
                tally.clean = false;
            return true;
        },
        UINT64_MAX);
    tally.events = end.events;
    return tally;
}

}  // namespace cblxml_bench
