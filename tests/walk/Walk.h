// A walk: the program with a random user on a random line, and who watches that all stays right.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "Desktop.h"
#include "HeldClock.h"
#include "HeldController.h"

namespace walk {

// The same numbers from the same seed with every library.
class Dice {
public:
    explicit Dice(unsigned seed) : generator(seed) {
    }
    // 0 to before the limit.
    unsigned below(size_t limit) {
        return static_cast<unsigned>(generator() % limit);
    }
    bool oneIn(unsigned times) {
        return below(times) == 0;
    }
    template <typename List>
    auto oneOf(const List& list) {
        return list[below(std::size(list))];
    }

private:
    std::mt19937 generator;
};

struct Digest {
    void add(BYTE value) {
        sum = (sum ^ value) * 0x100000001B3;
    }
    std::uint64_t sum = 0xCBF29CE484222325;
};

// What is on top: one of the pages, by its number, or a dialog of the program's own over it.
enum class Place {
    Readings = 1,
    Configuration,
    Options,
    Diagram,
    Reset,
    Oscilloscope,
    About,
    Port,
    Controller,
    Emulation,
    GasLevel,
    Corrections,
};
Place placeOnTop();
const char* nameOf(Place place);
const layer::Window* dialogOnTop();
// Whether a message box or a file dialog lies over it.
bool boxOnTop();
bool fileDialogOnTop();

// Two controllers, the first at COM 1, whose lines go bad and good again by themselves.
class Line {
public:
    Line(HeldClock& clock, Dice& dice);
    // From when on nothing has been wrong with the line that the program uses; layer::Never while something is.
    Moment soundSince() const;
    // From now on it stays sound.
    void mend();
    // At the port that the program uses; null for one that leads nowhere.
    HeldController* inUse() const;

    std::vector<std::unique_ptr<HeldController>> controllers;

private:
    void change();
    void goBad(HeldController& controller);

    HeldClock& clock;
    Dice& dice;
    Moment good = 0;
    bool bad = false;
    bool mended = false;
};

// Looks at every frame as it goes out and at the program whenever it is at rest. The first thing that is not as it
// should be ends the walk.
class Watch {
public:
    Watch(HeldClock& clock, Line& line);
    // The user's next input meets this window and, for a key, the file dialog or the box.
    void noteInput(const layer::Window* met);
    void lookAtRest();
    // Whether there was nothing over the main screen at the last rest, so that all was counted.
    bool hasCounted() const {
        return counted;
    }

    std::string fault;  // empty as long as all is right
    int polls = 0;
    int writes = 0;
    std::set<Place> visited;
    Digest digest;

private:
    struct Touch {
        Place place;
        int control;
        auto operator<=>(const Touch&) const = default;
    };

    void takeByte(BYTE value);
    void takeRequest(std::span<const BYTE> frame);
    bool mayRead(unsigned command) const;
    static bool mayWrite(const Touch& touch, unsigned cell, BYTE value);
    bool mayWrite(unsigned cell, BYTE value) const;
    void forgetTouches();
    void checkFlags();
    void checkSound();
    void checkControls();
    void countAll();
    void fail(const std::string& what);

    HeldClock& clock;
    Line& line;
    std::set<Touch> touched;  // until the program was at rest for a while
    std::set<Touch> recent;
    Moment forgotten = 0;
    bool fileFlow = false;  // a file dialog or its box was
    Moment lastFrame = 0;
    Moment lastWrite = 0;
    Moment lastBusy = 0;  // when bytes were on the way to the program, or the device had gone by itself
    Moment changed = 0;   // when what is on top last changed
    // What polls hang on.
    using State = std::tuple<Place, HWND, const layer::Window*, int, unsigned>;
    State before{};
    std::map<std::string, size_t> had;  // when the main screen first had nothing over it
    HWND hadWindow = nullptr;
    bool counted = false;
};

// Does one thing after the other, each at a moment of its own choice.
class User {
public:
    User(Dice& dice, Watch& watch) : dice(dice), watch(watch) {
    }
    // How long until the next input.
    Moment pause();
    // Whether what was begun is done.
    bool isDone() const {
        return planned.empty();
    }
    // Closes what is on top; false if only the page is there.
    bool close();
    // Puts the next input; gives it in words.
    std::string act();

private:
    struct Input {
        std::string words;
        std::function<void()> put;
    };

    void plan();
    void planMenu();
    void planList();
    void planFileDialog();
    void planDialog();
    void planPage();
    void then(const std::string& words, std::optional<QPoint> place, const std::function<void()>& put);
    void click(QPoint at, const std::string& what, Qt::MouseButton button = Qt::LeftButton);
    void drag(QPoint from, QPoint to, const std::string& what);
    void strike(const desktop::Key& key);
    void hold(const desktop::Key& key);
    // The window manager closes what is on top, or another program has the keyboard for a while.
    void disturb();
    void type(const QString& text);
    void roll(QPoint at);
    void anyKey();
    // A control of the window on top that can be worked.
    const layer::Window* anyControl();

    Dice& dice;
    Watch& watch;
    std::vector<Input> planned;  // the last one first
    Moment rest = 0;
};

}  // namespace walk
