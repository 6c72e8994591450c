// What the readers' neighbours need to link without the layer. The fuzzer reads from memory and replaces no file, so a
// call that gets here is a fault.
#include <cstdlib>

#include "link/Link.h"

unsigned PortNumber = 0;

HANDLE CreateFileA(LPCSTR, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) {
    std::abort();
}
BOOL CloseHandle(HANDLE) {
    std::abort();
}
BOOL FlushFileBuffers(HANDLE) {
    std::abort();
}
BOOL MoveFileExA(LPCSTR, LPCSTR, DWORD) {
    std::abort();
}
BOOL DeleteFileA(LPCSTR) {
    std::abort();
}
