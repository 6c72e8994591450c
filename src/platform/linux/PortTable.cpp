#include "platform/linux/PortTable.h"

#include <sys/stat.h>

#include <array>
#include <charconv>
#include <utility>

namespace layer {

namespace {

struct DeviceRow {
    int firstPort;
    int count;
    const char* prefix;
    int firstDevice;
};

// The first numbers, which the port menu offers, reach some of each kind.
constexpr std::array<DeviceRow, 8> DeviceRows{{
    {1, 4, "/dev/ttyS", 0},
    {5, 4, "/dev/ttyUSB", 0},
    {9, 4, "/dev/ttyACM", 0},
    {13, 4, "/dev/rfcomm", 0},
    {17, 28, "/dev/ttyS", 4},
    {45, 28, "/dev/ttyUSB", 4},
    {73, 28, "/dev/ttyACM", 4},
    {101, 28, "/dev/rfcomm", 4},
}};

constexpr bool coversEveryPortOnce() {
    int next = 1;
    for (const DeviceRow& row : DeviceRows) {
        if (row.firstPort != next) {
            return false;
        }
        next += row.count;
    }
    return next == PortCount + 1;
}
static_assert(coversEveryPortOnce());

std::string tableDevice(int port) {
    for (const DeviceRow& row : DeviceRows) {
        if (port >= row.firstPort && port < row.firstPort + row.count) {
            return row.prefix + std::to_string(row.firstDevice + port - row.firstPort);
        }
    }
    return {};
}

std::string& directory() {
    static std::string path = startDirectory() + "/ports";
    return path;
}

}  // namespace

int portNumber(std::string_view name) {
    constexpr std::string_view devicePrefix = "\\\\.\\";
    if (name.starts_with(devicePrefix)) {
        name.remove_prefix(devicePrefix.size());
    } else if (name.ends_with(':')) {
        name.remove_suffix(1);
    } else {
        return 0;
    }
    if (!name.starts_with("COM")) {
        return 0;
    }
    name.remove_prefix(3);
    int number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool whole = error == std::errc() && end == name.data() + name.size();
    return whole && name.front() != '0' && number >= 1 && number <= PortCount ? number : 0;
}

std::string portDevice(std::string_view name) {
    const int port = portNumber(name);
    if (port == 0) {
        return {};
    }
    std::string entry = directory() + "/COM" + std::to_string(port);
    struct stat status {};
    if (lstat(entry.c_str(), &status) == 0) {
        return entry;
    }
    return tableDevice(port);
}

const std::string& portDirectory() {
    return directory();
}

void setPortDirectory(std::string path) {
    directory() = std::move(path);
}

}  // namespace layer
