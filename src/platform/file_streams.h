// The run-time's file services: name resolution, stream open and the name
// handle's release. The defaults are POSIX files; a host replaces all three
// through cblxml_register_services.
#ifndef CBLXML_PLATFORM_FILE_STREAMS_H
#define CBLXML_PLATFORM_FILE_STREAMS_H

#include <cstdint>

#include "cblxml.h"

namespace cblxml::platform {

// Resolves `length` bytes of `name` (trailing spaces and NULs removed) into a
// name handle, and copies the resolved name, terminated, into `result` (1024
// bytes) when it is not null. Null for an empty name or one with a NUL
// inside. The handle is released with release_name.
void *resolve_name(const char *name, uint32_t length, char *result, int32_t flag);
void release_name(void *handle);
// Opens the stream of a name handle in run-time mode 1 (read), 10 (create or
// truncate, write) or 3 (read and write, created when missing). ":CI:" is
// standard input and ":CO:" standard output. Null on failure. The stream is
// freed by its close operation.
cblxml_stream *open_stream(int32_t zero, void *handle, int32_t mode, char *result);

// For the registration entry: a table that sets some of the three file
// services but not all is refused, as handles of one family cannot be given
// to the open of another.
bool file_services_complete(const cblxml_services &table);
// Installs the table's file services (all three, or the defaults when the
// table sets none or is too short to hold them).
void install_file_services(const cblxml_services &table);
void restore_file_services();

}  // namespace cblxml::platform

#endif
