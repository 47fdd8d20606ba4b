// Default file services on Linux: a name handle is the trimmed name; a stream
// is a POSIX file descriptor behind the run-time's stream operation table.
// Writes go straight to the descriptor (nothing is buffered here), so flush
// has nothing to hand on.
#include "platform/file_streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <deque>
#include <new>
#include <string>

namespace cblxml::platform {
namespace {

struct NameHandle {
    std::string name;
};

struct FileStream {
    cblxml_stream base;  // first: the library holds a cblxml_stream *
    int fd;
    bool owns_fd;  // false for standard input and output, which stay open
};

FileStream *file_of(cblxml_stream *stream) { return reinterpret_cast<FileStream *>(stream); }

// The stream error code for errno: 31 when the file system has no room,
// 18 for every other failure.
int32_t fail(cblxml_stream *stream)
{
    const int error = errno;
    stream->error_code = (error == ENOSPC || error == EFBIG || error == EDQUOT)
                             ? CBLXML_STREAM_NO_ROOM
                             : CBLXML_STREAM_IO_ERROR;
    return -1;
}

int32_t stream_close(cblxml_stream *stream)
{
    FileStream *file = file_of(stream);
    int32_t result = 0;
    if (file->owns_fd && ::close(file->fd) != 0)
        result = fail(stream);
    delete file;
    return result;
}

int32_t stream_write(cblxml_stream *stream, const void *data, uint32_t length)
{
    const auto *bytes = static_cast<const char *>(data);
    while (length > 0) {
        const ssize_t done = ::write(file_of(stream)->fd, bytes, length);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return fail(stream);
        bytes += done;
        length -= static_cast<uint32_t>(done);
    }
    return 0;
}

int64_t stream_seek(cblxml_stream *stream, int64_t offset, int32_t whence)
{
    const int how = whence == CBLXML_SEEK_END ? SEEK_END : whence == 1 ? SEEK_CUR : SEEK_SET;
    const off_t position = ::lseek(file_of(stream)->fd, offset, how);
    return position < 0 ? fail(stream) : static_cast<int64_t>(position);
}

int32_t stream_truncate(cblxml_stream *stream, int64_t size)
{
    return ::ftruncate(file_of(stream)->fd, size) != 0 ? fail(stream) : 0;
}

int32_t stream_flush(cblxml_stream *) { return 0; }

int64_t stream_read(cblxml_stream *stream, void *buffer, uint32_t length)
{
    for (;;) {
        const ssize_t done = ::read(file_of(stream)->fd, buffer, length);
        if (done >= 0)
            return done;
        if (errno != EINTR)
            return fail(stream);
    }
}

const cblxml_stream_ops kFileOps = {stream_close,    stream_write, stream_seek,
                                    stream_truncate, stream_flush, stream_read};

void *default_resolve(const char *name, uint32_t length, char *result, int32_t)
{
    if (name == nullptr)
        return nullptr;
    while (length > 0 && (name[length - 1] == ' ' || name[length - 1] == '\0'))
        --length;
    if (length == 0 || std::memchr(name, '\0', length) != nullptr)
        return nullptr;
    auto *handle = new (std::nothrow) NameHandle;
    if (handle == nullptr)
        return nullptr;
    try {
        handle->name.assign(name, length);
    } catch (...) {
        delete handle;
        return nullptr;
    }
    if (result != nullptr) {
        const size_t n = length < 1023 ? length : 1023;
        std::memcpy(result, name, n);
        result[n] = '\0';
    }
    return handle;
}

void default_release(void *handle) { delete static_cast<NameHandle *>(handle); }

cblxml_stream *default_open(int32_t, void *handle, int32_t mode, char *)
{
    if (handle == nullptr)
        return nullptr;
    const std::string &name = static_cast<NameHandle *>(handle)->name;
    int fd = -1;
    bool owns = true;
    if (name == ":CI:" || name == ":CO:") {
        fd = name == ":CI:" ? STDIN_FILENO : STDOUT_FILENO;
        owns = false;
    } else {
        int flags;
        switch (mode) {
        case CBLXML_STREAM_READ:
            flags = O_RDONLY;
            break;
        case CBLXML_STREAM_CREATE:
            flags = O_WRONLY | O_CREAT | O_TRUNC;
            break;
        case CBLXML_STREAM_READ_WRITE:
            flags = O_RDWR | O_CREAT;
            break;
        default:
            return nullptr;
        }
        fd = ::open(name.c_str(), flags | O_CLOEXEC, 0666);
        if (fd < 0)
            return nullptr;
        // A directory opens for reading on Linux but is no document.
        struct stat info;
        if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
            ::close(fd);
            return nullptr;
        }
    }
    auto *stream = new (std::nothrow) FileStream{{&kFileOps, 0}, fd, owns};
    if (stream == nullptr && owns)
        ::close(fd);
    return stream == nullptr ? nullptr : &stream->base;
}

using ResolveFunction = void *(*)(const char *, uint32_t, char *, int32_t);
using ReleaseFunction = void (*)(void *);
using OpenFunction = cblxml_stream *(*)(int32_t, void *, int32_t, char *);

struct FileServices {
    ResolveFunction resolve;
    ReleaseFunction release;
    OpenFunction open;
};

const FileServices kDefaultFileServices{default_resolve, default_release, default_open};

// Installed sets stay alive until the process ends: a name handle resolved
// under one set may still be released after another set was installed.
// Called under the registration lock (services.cpp).
std::deque<FileServices> &installed_file_services()
{
    static std::deque<FileServices> sets;
    return sets;
}

std::atomic<const FileServices *> current_file_services{&kDefaultFileServices};

bool table_reaches_file_services(const cblxml_services &table)
{
    return table.size >= offsetof(cblxml_services, open_stream) + sizeof table.open_stream;
}

}  // namespace

bool file_services_complete(const cblxml_services &table)
{
    if (!table_reaches_file_services(table))
        return true;
    const int set = (table.resolve_name != nullptr) + (table.release_name != nullptr) +
                    (table.open_stream != nullptr);
    return set == 0 || set == 3;
}

void install_file_services(const cblxml_services &table)
{
    if (!table_reaches_file_services(table) || table.resolve_name == nullptr) {
        restore_file_services();
        return;
    }
    installed_file_services().push_back(
        FileServices{table.resolve_name, table.release_name, table.open_stream});
    current_file_services.store(&installed_file_services().back());
}

void restore_file_services() { current_file_services.store(&kDefaultFileServices); }

void *resolve_name(const char *name, uint32_t length, char *result, int32_t flag)
{
    return current_file_services.load()->resolve(name, length, result, flag);
}

void release_name(void *handle)
{
    if (handle != nullptr)
        current_file_services.load()->release(handle);
}

cblxml_stream *open_stream(int32_t zero, void *handle, int32_t mode, char *result)
{
    return current_file_services.load()->open(zero, handle, mode, result);
}

}  // namespace cblxml::platform
