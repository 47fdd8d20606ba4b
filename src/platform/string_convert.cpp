// cobstringconvert on Linux: iconv between the document's encoding and UTF-8.
#include "platform/string_convert.h"

#include <iconv.h>
#include <strings.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "platform/platform.h"

namespace cblxml::platform {
namespace {

bool names_utf8(const char *name)
{
    return name == nullptr || name[0] == '\0' || strncasecmp(name, "UTF-8", 5) == 0 ||
           strcasecmp(name, "UTF8") == 0;
}

// The whole conversion into `converted`; false when iconv lacks the encoding
// or the text is not valid in it.
bool convert_all(const char *from, const char *text, size_t length, std::string &converted)
{
    iconv_t cd = iconv_open("UTF-8", from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return false;
    converted.clear();
    char chunk[1024];
    auto *in = const_cast<char *>(text);  // iconv's signature; the text is not written
    size_t in_left = length;
    bool ok = true;
    while (ok) {
        char *at = chunk;
        size_t room = sizeof chunk;
        const size_t done = in_left > 0 ? iconv(cd, &in, &in_left, &at, &room)
                                        : iconv(cd, nullptr, nullptr, &at, &room);
        converted.append(chunk, sizeof chunk - room);
        if (done == static_cast<size_t>(-1)) {
            ok = errno == E2BIG;
            continue;
        }
        if (in_left == 0 && at == chunk)
            break;
    }
    iconv_close(cd);
    return ok;
}

}  // namespace

int32_t default_string_convert(const char *from, int32_t form, const void *text, uint32_t length,
                               void *out, uint32_t *out_length)
{
    if (form != kFormUtf8)
        return 1;
    try {
        std::string converted;
        const char *bytes = static_cast<const char *>(text);
        if (names_utf8(from))
            converted.assign(bytes, length);
        else if (!convert_all(from, bytes, length, converted))
            return 1;
        if (out == nullptr) {
            *out_length = static_cast<uint32_t>(converted.size());
            return 0;
        }
        if (converted.size() > *out_length)
            return 1;
        std::memcpy(out, converted.data(), converted.size());
        *out_length = static_cast<uint32_t>(converted.size());
        return 0;
    } catch (...) {
        return 1;  // out of memory: the conversion could not be made
    }
}

}  // namespace cblxml::platform
