#include "xml_parse_run.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cblxml.h"

namespace cblxml_bench {

ParseTally xml_parse(std::string &document, std::vector<char> &textArea)
{
    ParseTally tally;
    xd_parse_info *state = nullptr;
    void *documentAddress = document.data();
    void *text = nullptr;
    auto documentLength = static_cast<uint32_t>(document.size());
    uint32_t textLength = 0;
    uint32_t options = 0;
    unsigned char code[4];
    char eventName[CBLXML_EVENT_NAME_LEN];
    static const char kException[] = "EXCEPTION";
    do {
        CBL_XMLPARSE_INTERFACE(&state, &documentAddress, &text, &documentLength, &textLength,
                               code, eventName, &options);
        ++tally.events;
        if (text != nullptr && textLength > 0) {
            const size_t n = std::min<size_t>(textLength, textArea.size());
            std::memcpy(textArea.data(), text, n);
            tally.textBytes += n;
        }
        if (std::memcmp(eventName, kException, sizeof kException - 1) == 0)
            tally.clean = false;
    } while (state != nullptr);
    std::free(text);
    return tally;
}

} // namespace cblxml_bench
