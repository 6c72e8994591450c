"""What stands on the screen: the lines of a look, and the windows, items and drawings in them."""

from dataclasses import dataclass, field


@dataclass
class Rect:
    left: int
    top: int
    width: int
    height: int

    def moved(self, x, y):
        return Rect(self.left + x, self.top + y, self.width, self.height)

    def centre(self):
        return self.left + self.width // 2, self.top + self.height // 2

    def within(self, other):
        left, top = max(self.left, other.left), max(self.top, other.top)
        return Rect(left, top, min(self.left + self.width, other.left + other.width) - left,
                    min(self.top + self.height, other.top + other.height) - top)

    def has(self, x, y):
        return self.left <= x < self.left + self.width and self.top <= y < self.top + self.height

    def __str__(self):
        return f"{self.left},{self.top} {self.width}x{self.height}"


@dataclass
class Shown:
    """A window or control."""
    name: str
    kind: str
    id: int
    parent: str
    place: Rect
    client: Rect
    visible: bool
    enabled: bool
    focus: bool
    state: int
    text: str


@dataclass
class Item:
    """Of a menu or of an open list; level 0 is the bar, 1 an open menu."""
    level: int
    index: int
    place: Rect
    state: int
    text: str


@dataclass
class Drawing:
    window: str
    call: str
    area: Rect
    text: str


@dataclass
class Look:
    windows: dict = field(default_factory=dict)
    thumbs: dict = field(default_factory=dict)
    items: list = field(default_factory=list)
    entries: list = field(default_factory=list)
    drawings: list = field(default_factory=list)

    def root(self, window):
        return self.root(self.windows[window.parent]) if window.parent else window

    # A dialog over the others, a message box of the desktop before all.
    def top_level(self):
        roots = [window for window in self.windows.values() if not window.parent and window.visible]
        return max(roots, key=lambda window: (window.name == "foreign", serial(window.name)))

    # The visible control with this id in the dialog or page that was made last.
    def control(self, number):
        found = [window for window in self.windows.values() if window.id == number and window.visible and
                 window.parent]
        return max(found, key=lambda window: serial(window.parent), default=None)

    # What of a control lies inside all that it lies in.
    def seen(self, window):
        place = window.place
        while window.parent:
            window = self.windows[window.parent]
            place = place.within(window.client)
        return place

    # Of a top-level window and all in it, with their places in its client area.
    def drawings_in(self, name):
        client, found = self.client_of(name), []
        for drawing in self.drawings:
            window = self.windows.get(drawing.window)
            if window and self.root(window).name == name:
                found.append((drawing, drawing.area.moved(window.client.left - client.left,
                                                          window.client.top - client.top)))
        return found

    def client_of(self, name):
        return self.windows[name].client


def serial(name):
    return int(name.split(".")[1].split("/")[0]) if "." in name else 0


def rect(fields):
    return Rect(*map(int, fields))


def read_look(lines):
    look = Look()
    controls = []
    for kind, *fields in lines:
        if kind == "win":
            flags = [int(value) for value in fields[12:16]]
            controls.append(Shown(fields[0], fields[1], int(fields[2]), fields[3], rect(fields[4:8]),
                                  rect(fields[8:12]), bool(flags[0]), bool(flags[1]), bool(flags[2]), flags[3],
                                  fields[16]))
        elif kind == "part":
            look.thumbs[fields[0]] = rect(fields[2:6])
        elif kind == "menu":
            look.items.append(Item(int(fields[0]), int(fields[1]), rect(fields[2:6]), int(fields[6]), fields[7]))
        elif kind == "entry":
            look.entries.append(Item(2, int(fields[0]), rect(fields[1:5]), int(fields[5]), fields[6]))
        elif kind == "draw":
            look.drawings.append(Drawing(fields[0], fields[1], rect(fields[2:6]), fields[6]))
    # Controls without an id of their own are told apart by their places.
    controls.sort(key=lambda window: (window.place.top, window.place.left))
    for window in controls:
        name, count = window.name, 1
        while window.name in look.windows:
            count += 1
            window.name = f"{name}#{count}"
        look.windows[window.name] = window
    return look
