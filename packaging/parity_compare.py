"""What each step did in both programs, and where they differ: a line each, which the table of known ones may name."""

from dataclasses import dataclass

from parity_look import Look, Rect
from parity_messages import is_compared, is_timer, told
from parity_picture import Area, differing, save_difference

POLLS = {"01", "02", "03", "04", "05"}
# These look as Qt or the desktop makes them, their texts and states are compared by the look.
OWN_LOOK = {"Button", "ComboBox", "Edit", "ScrollBar", "msctls_progress32"}
FRAME = 12  # pixels that a menu's or list's frame and bar may stand out beside its items
BAR_OF_LIST = 24
SQUARE = 16


@dataclass
class Record:
    """One program after one step."""
    lines: list
    frames: list
    polls: list
    look: Look
    rows: list
    ended: bool = False


@dataclass
class Difference:
    """Told once for all steps by what it is; `save` makes its picture."""
    what: str
    detail: str = ""
    save: object = None


def is_poll(frame):
    return frame.split()[1] in POLLS


def writes(frames):
    return [frame for frame in frames if not is_poll(frame)]


def pattern(frames):
    """The shortest run of polls that the frames repeat, from its smallest beginning; all of them if none repeats."""
    kinds = [frame.split()[1] for frame in frames]
    for length in range(1, len(kinds) // 2 + 1):
        if all(kinds[at] == kinds[at + length] for at in range(len(kinds) - length)):
            return min(kinds[at:length] + kinds[:at] for at in range(length))
    return kinds


def by_window(lines):
    """The compared messages of each window in their order; ticks as what they are, in any number."""
    found = {}
    for line in lines:
        if not is_compared(line) or is_timer(line):
            continue
        name = line[1] if line[0] == "msg" else "desktop"
        found[name] = found[name] + ", " + told(line) if name in found else told(line)
    return found


# Those that come at the end of the step.
def timers(lines):
    found = {}
    for line in reversed(lines):
        if is_timer(line):
            found[f"{line[1]} {told(line)}"] = "comes"
        elif is_compared(line):
            break
    return found


def place_of(look, window):
    if not window.parent:
        return str(window.place)
    client = look.client_of(window.parent)
    return str(window.place.moved(-client.left, -client.top))


def facts(look, draws):
    """All that must be the same on both screens: name of the thing and its property -> value."""
    found = {}
    for window in look.windows.values():
        if window.name.startswith("foreign"):
            # A box's buttons are found by their ids; a file dialog is the desktop's own.
            if window.id in (0, 1, 6, 7) and ("foreign/1148" not in look.windows or not window.parent):
                found[window.name] = "there"
            continue
        found[f"{window.name} class"] = window.kind if "." in window.name else "frame"
        found[f"{window.name} place"] = place_of(look, window)
        found[f"{window.name} shown"] = (window.visible, window.enabled)
        found[f"{window.name} focus"] = window.focus
        found[f"{window.name} state"] = window.state
        found[f"{window.name} text"] = window.text
    for item in look.items:
        found[f"item {item.level}/{item.index}"] = (item.state, item.text) if item.text else "separator"
    for entry in look.entries:
        found[f"entry {entry.index}"] = (entry.state, entry.text)
    for drawing in look.drawings if draws else ():
        if drawing.call == "ExtTextOutA":
            found[f"{drawing.window} text at {drawing.area.left},{drawing.area.top}"] = drawing.text
    return found


def differing_sets(kind, ours, theirs):
    for key in sorted(set(ours) | set(theirs)):
        mine, other = ours.get(key, "nothing"), theirs.get(key, "nothing")
        if mine != other:
            yield f"{kind} {key}: {mine} | {other}"


def masks_of(name, looks):
    """What of a window's client area is not compared by its pixels, in client coordinates."""
    for look in looks:
        client = look.client_of(name)
        over = [window.place for window in look.windows.values()
                if window.visible and (is_masked(window) or covers(look, window, name))]
        over += [around(item.place) for item in look.items if item.level > 0]
        over += [around(entry.place) for entry in look.entries]
        yield from (place.moved(-client.left, -client.top) for place in over)
        yield from (area for drawing, area in look.drawings_in(name) if drawing.call == "ExtTextOutA")


def is_masked(window):
    return window.parent != "" and (window.kind in OWN_LOOK or (window.kind == "Static" and window.text != ""))


def covers(look, window, name):
    """A dialog or box above the window; its frame is the desktop's."""
    return window.parent == "" and window.name not in (name, "main")


def around(place):
    return Rect(place.left - FRAME, place.top - FRAME, place.width + 2 * FRAME + BAR_OF_LIST, place.height + 2 * FRAME)


def culprits(name, looks):
    """What may have drawn a pixel, with its place: what was drawn last first, then controls, the smallest first."""
    for look in looks:
        for drawing, area in reversed(look.drawings_in(name)):
            yield area, f"{drawing.window} {drawing.call}", str(drawing.area)
    for look in looks:
        client = look.client_of(name)
        inner = [window for window in look.windows.values() if window.visible and window.parent and
                 window.kind != "#32770" and look.root(window).name == name]
        for window in sorted(inner, key=lambda window: window.place.width * window.place.height):
            yield window.place.moved(-client.left, -client.top), f"{window.name} {window.kind}", place_of(look, window)


class Culprits:
    """Finds them by squares of the window, since the oscilloscope draws thousands."""

    def __init__(self, name, looks):
        self.name = name
        self.squares = {}
        for candidate in culprits(name, looks):
            area = candidate[0]
            for x in range(area.left // SQUARE, (area.left + area.width) // SQUARE + 1):
                for y in range(area.top // SQUARE, (area.top + area.height) // SQUARE + 1):
                    self.squares.setdefault((x, y), []).append(candidate)

    def of(self, x, y):
        for area, what, where in self.squares.get((x // SQUARE, y // SQUARE), ()):
            if area.has(x, y):
                return what, where
        return f"{self.name} background", ""


def compare_pixels(ours, theirs, picture_path):
    looks = (ours.look, theirs.look)
    for name, window in ours.look.windows.items():
        other = theirs.look.windows.get(name)
        if window.parent or not other or name == "foreign":
            continue
        first, second = Area(ours.rows, window.client), Area(theirs.rows, other.client)
        found, candidates = {}, None
        for point in differing(first, second, list(masks_of(name, looks))):
            candidates = candidates or Culprits(name, looks)
            what, where = candidates.of(*point)
            found.setdefault(what, ([], where))[0].append(point)
        for what, (points, where) in found.items():
            yield Difference(f"pixels {what}", f" {where}: {len(points)} pixels",
                             lambda points=points: save_difference(picture_path(), first, second, points))


def compare_facts(ours, theirs, draws):
    if ours.ended != theirs.ended:
        yield f"end: {ours.ended} | {theirs.ended}"
    mine, other = writes(ours.frames), writes(theirs.frames)
    if mine != other:
        yield f"writes: {', '.join(mine) or 'nothing'} | {', '.join(other) or 'nothing'}"
    mine, other = pattern(ours.polls), pattern(theirs.polls)
    if mine != other:
        yield f"polls: {' '.join(mine) or 'none'} | {' '.join(other) or 'none'}"
    yield from differing_sets("messages", by_window(ours.lines), by_window(theirs.lines))
    if ours.ended or theirs.ended:
        return
    if draws:
        yield from differing_sets("timers", timers(ours.lines), timers(theirs.lines))
    yield from differing_sets("look", facts(ours.look, draws), facts(theirs.look, draws))


def compare(ours, theirs, picture_path, draws):
    """The differences of a step; without `draws` those of what is drawn and of its pixels are left out."""
    for line in compare_facts(ours, theirs, draws):
        yield Difference(line)
    if draws and not ours.ended and not theirs.ended:
        yield from compare_pixels(ours, theirs, picture_path)
