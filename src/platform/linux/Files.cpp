// Plain files, as far as <cstdio> does not reach: replaced in one step, put on the disk, deleted. Also CreateFileA and
// CloseHandle, which serve files and ports alike.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/linux/Handles.h"
#include "platform/linux/Layer.h"
#include "platform/linux/PortTable.h"

namespace layer {

namespace {

struct File {
    HANDLE handle = nullptr;  // null while the row is free
    int descriptor = -1;
    bool writable = false;
};

std::array<File, 8> Files;

File* findFile(HANDLE handle) {
    const auto found = std::ranges::find(Files, handle, &File::handle);
    return handle == nullptr || found == Files.end() ? nullptr : &*found;
}

// The real system speaks of devices so. A path that a user has chosen may end like that here.
bool isDeviceName(std::string_view name) {
    return name.starts_with("\\\\.\\") || (name.ends_with(':') && name.find('/') == std::string_view::npos);
}

int openUninterrupted(const char* path, int flags) {
    int descriptor = -1;
    do {
        descriptor = open(path, flags | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

bool synchronise(int descriptor) {
    int result = 0;
    do {
        result = fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool isDirectory(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// A file that nobody may write is read-only to the superuser too, as one with that attribute is on the real system.
bool isReadOnly(const char* path) {
    constexpr mode_t anybodyWrites = S_IWUSR | S_IWGRP | S_IWOTH;
    struct stat status {};
    return stat(path, &status) == 0 && ((status.st_mode & anybodyWrites) == 0 || access(path, W_OK) != 0);
}

// A new name is on the disk when its directory is. The name stands by then, so a directory that cannot be read does
// not make the call fail.
void synchroniseDirectoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = openUninterrupted(directory.c_str(), O_RDONLY | O_DIRECTORY);
    if (descriptor >= 0) {
        synchronise(descriptor);
        close(descriptor);
    }
}

HANDLE openFile(const char* path, bool reads, bool writes) {
    const auto row = std::ranges::find(Files, nullptr, &File::handle);
    if (row == Files.end() || (writes && isReadOnly(path))) {
        return INVALID_HANDLE_VALUE;
    }
    const int descriptor = openUninterrupted(path, !writes ? O_RDONLY : reads ? O_RDWR : O_WRONLY);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        if (descriptor >= 0) {
            close(descriptor);
        }
        return INVALID_HANDLE_VALUE;
    }
    *row = {.handle = nextHandle(), .descriptor = descriptor, .writable = writes};
    return row->handle;
}

}  // namespace

HANDLE nextHandle() {
    static std::uintptr_t last = 0x1000;
    last += 4;
    return reinterpret_cast<HANDLE>(last);
}

bool isPlainFile(HANDLE handle) {
    return findFile(handle) != nullptr;
}

void refusePlainFile(HANDLE handle) {
    if (isPlainFile(handle)) {
        reportUnsupported("handle", QStringLiteral("a plain file, where only a port is served"));
    }
}

}  // namespace layer

using namespace layer;

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags,
                   HANDLE templateFile) {
    if (name == nullptr) {
        return INVALID_HANDLE_VALUE;
    }
    if (share != 0 || security != nullptr || creation != OPEN_EXISTING || flags != 0 || templateFile != nullptr ||
        access == 0 || (access & ~(GENERIC_READ | GENERIC_WRITE)) != 0) {
        reportUnsupported("way to open", QString::fromLocal8Bit(name));
    }
    const bool reads = (access & GENERIC_READ) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    if (!isDeviceName(name)) {
        return openFile(name, reads, writes);
    }
    if (portNumber(name) != 0 && (!reads || !writes)) {
        reportUnsupported("port in one direction", QString::fromLocal8Bit(name));
    }
    return openPort(name);
}

BOOL CloseHandle(HANDLE handle) {
    File* file = findFile(handle);
    if (file == nullptr) {
        return closePort(handle) ? TRUE : FALSE;
    }
    const int descriptor = file->descriptor;
    *file = {};
    return close(descriptor) == 0 || errno == EINTR ? TRUE : FALSE;
}

BOOL FlushFileBuffers(HANDLE handle) {
    if (isPort(handle)) {
        reportUnsupported("handle", QStringLiteral("a port, where only a plain file is served"));
    }
    const File* file = findFile(handle);
    return file != nullptr && file->writable && synchronise(file->descriptor) ? TRUE : FALSE;
}

BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags) {
    if ((flags & ~MOVEFILE_WRITE_THROUGH) != MOVEFILE_REPLACE_EXISTING) {
        reportUnsupported("way to move", QString::number(flags));
    }
    if (from == nullptr || to == nullptr || isDirectory(to) || isReadOnly(to) || std::rename(from, to) != 0) {
        return FALSE;
    }
    if ((flags & MOVEFILE_WRITE_THROUGH) != 0) {
        synchroniseDirectoryOf(to);
    }
    return TRUE;
}

BOOL DeleteFileA(LPCSTR path) {
    return path != nullptr && !isReadOnly(path) && unlink(path) == 0 ? TRUE : FALSE;
}
