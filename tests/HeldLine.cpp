#include "HeldLine.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>

#include "platform/linux/Line.h"

// The program's end.
class HeldLine : public layer::Line {
public:
    explicit HeldLine(FarEnd& at) : far(&at) {
        at.user = this;
    }
    ~HeldLine() override {
        if (far) {
            far->user = nullptr;
        }
    }
    HeldLine(const HeldLine&) = delete;
    HeldLine& operator=(const HeldLine&) = delete;

    bool configure(DWORD bitsPerSecond) override {
        return far && bitsPerSecond == 9600;
    }
    State awaitByte(Moment end) override {
        if (far) {
            far->clock.waitFor([this] { return !far || !received.empty(); }, end);
        }
        return !received.empty() ? State::Ready : far ? State::Quiet : State::Gone;
    }
    State awaitRoom(Moment) override {
        return far ? State::Ready : State::Gone;
    }
    ssize_t read(std::span<BYTE> into) override {
        const size_t count = std::min(into.size(), received.size());
        std::copy_n(received.begin(), count, into.begin());
        received.erase(received.begin(), received.begin() + static_cast<std::ptrdiff_t>(count));
        return far ? static_cast<ssize_t>(count) : -1;
    }
    ssize_t write(std::span<const BYTE> bytes) override {
        if (!far) {
            return -1;
        }
        far->take(bytes);
        return static_cast<ssize_t>(bytes.size());
    }
    bool dropReceived() override {
        received.clear();
        return far != nullptr;
    }
    bool dropUnsent() override {
        return far != nullptr;
    }

    FarEnd* far;  // null once the device has gone
    std::deque<BYTE> received;
};

FarEnd::FarEnd(HeldClock& held, int number) : clock(held), port(number) {
    layer::holdPort(port, [this]() -> std::unique_ptr<layer::Line> {
        return plugged && !user ? std::make_unique<HeldLine>(*this) : nullptr;
    });
}

FarEnd::~FarEnd() {
    loseUser();
    layer::holdPort(port, {});
}

void FarEnd::unplug() {
    plugged = false;
    cut();
    loseUser();
}

void FarEnd::send(std::span<const BYTE> bytes) {
    if (user) {
        user->received.insert(user->received.end(), bytes.begin(), bytes.end());
    }
}

void FarEnd::loseUser() {
    if (user) {
        user->received.clear();
        std::exchange(user, nullptr)->far = nullptr;
    }
}
