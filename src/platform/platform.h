// The services that a COBOL run-time would provide, supplied here for Linux.
// A host may replace them through cblxml_register_services (cblxml.h).
#ifndef CBLXML_PLATFORM_PLATFORM_H
#define CBLXML_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "cblxml.h"

namespace cblxml::platform {

// The run-time's process-wide thread lock (one mutex unless a host installs its own).
void thread_lock();
void thread_unlock();

// The two exception-continuation hooks; the defaults do nothing and return null.
void *exception_begin(void *service, intptr_t a, intptr_t b);
void exception_resume(void *handle);

// Environment lookup; null when the name is not set.
const char *get_env(const char *name);

// The run-time's string conversion (cblxml_services.string_convert).
constexpr int32_t kFormUtf8 = 3;
int32_t string_convert(const char *from, int32_t form, const void *text, uint32_t length, void *out,
                       uint32_t *out_length);

// Scoped holder of the run-time lock.
class LockGuard {
public:
    LockGuard() { thread_lock(); }
    ~LockGuard() { thread_unlock(); }
    LockGuard(const LockGuard &) = delete;
    LockGuard &operator=(const LockGuard &) = delete;
};

// The platform's multibyte conversions (what the C library's mbstowcs and
// wcstombs do on a 16-bit wchar_t platform): UTF-8 <-> UTF-16. Invalid input
// becomes U+FFFD / '?' rather than failing.
std::u16string utf8_to_utf16(const char *text, size_t length);
// The same into `out`, which has room for `length` units (UTF-8 never takes
// fewer bytes than UTF-16 units); returns the units written.
size_t utf8_to_utf16_into(const char *text, size_t length, char16_t *out);
std::string utf16_to_utf8(const char16_t *text, size_t units);

// DMGetCblData for the library's own callers, which must tell a conversion
// that fails from memory that runs out: the latter throws std::bad_alloc.
int32_t get_cbl_data(void *handle, const dm_item_desc *desc, const void *item, int32_t form,
                     void *text, uint32_t *text_length);
// The same conversion to UTF-8 (form 64) into a string, without the
// terminator and without a room to size: false, with `text` empty, when
// it fails.
bool get_cbl_text(void *handle, const dm_item_desc *desc, const void *item, std::string &text);
// The same text appended to `text`; false, with `text` as it was, when the
// conversion fails.
bool append_cbl_text(void *handle, const dm_item_desc *desc, const void *item, std::string &text);
// DMSetCblData the same way (the item is cleared before the throw).
int32_t set_cbl_data(void *handle, const dm_item_desc *desc, void *item, int32_t form,
                     const void *text, uint32_t text_length);

// Bytes that `utf8` (length bytes, no terminator) takes when stored by
// DMSetCblData into an item of desc's class on this handle: its code page for
// alphanumeric classes, 2 per UTF-16 unit for national. Lets callers size an
// item to the exact text so that nothing is padded or cut. Running out of
// memory throws std::bad_alloc.
uint32_t dm_stored_size(void *handle, const dm_item_desc *desc, const char *utf8, uint32_t length);

// Room for the UTF-8 form of a document item of `length` bytes and its
// terminator: 3 bytes per byte of a single-byte code page (and per 2 bytes of
// UTF-16), capped where a 32-bit length ends.
inline uint32_t utf8_room(uint32_t length)
{
    const uint64_t room = uint64_t{length} * 3u + 4u;
    return room > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(room);
}

}  // namespace cblxml::platform

#endif
