"""The user: what each word of the script does with mouse and keys, by what stands on the program's screen."""

import ctypes

AWAY = 40  # pixels outside a control


class Missing(Exception):
    """The script means something that does not stand on the screen."""


class User:
    def __init__(self, world, look):
        self.world = world
        self.look = look

    def act(self, action):
        verb, *words = action.split(" ")
        getattr(self, "do_" + verb)(*words)

    def at(self, place, *words):
        self.world.xdotool("mousemove", *place, *words)

    def control(self, number):
        found = self.look.control(int(number))
        if not found:
            raise Missing(f"no control {number}")
        return found

    def centre(self, number):
        return self.look.seen(self.control(number)).centre()

    def do_wait(self):
        """Nothing: shows what goes on by itself."""

    def do_unplug(self):
        """Until the link counts as lost."""
        self.do_tell("unplug")
        self.do_beats(60)

    def do_replug(self):
        """Until all blocks are read again."""
        self.do_tell("replug")
        self.do_frames(16)

    def do_frames(self, count):
        """Waits for so many frames on the line."""
        self.world.wait_for_frames(int(count))

    def do_beats(self, count):
        """Waits for so many beats, twenty a second."""
        self.world.wait_for_beats(int(count))

    def do_tell(self, *words):
        """A command to the simulated controller."""
        self.world.wire.tell(" ".join(words))

    def do_bar(self, index):
        self.press_item(0, int(index))

    def do_item(self, index):
        self.press_item(1, int(index))

    def do_entry(self, index):
        """Of those that show of the open list."""
        if int(index) >= len(self.look.entries):
            raise Missing(f"no entry {index}")
        self.at(self.look.entries[int(index)].place.centre(), "click", 1)

    def press_item(self, level, index):
        found = [item for item in self.look.items if (item.level, item.index) == (level, index)]
        if not found:
            raise Missing(f"no item {index}")
        self.at(found[0].place.centre(), "click", 1)

    def do_click(self, number, button=1):
        self.at(self.centre(number), "click", button)

    def do_point(self, x, y, button=1):
        """A place of the page or dialog that was made last."""
        roots = [window for window in self.look.windows.values() if window.kind == "#32770"]
        client = max(roots, key=lambda window: int(window.name.partition(".")[2] or 0)).client
        self.at((client.left + int(x), client.top + int(y)), "click", button)

    def do_desktop(self, x, y, button=1):
        self.at((x, y), "click", button)

    def do_bar_end(self, button):
        """The bar behind its last item."""
        last = [item.place for item in self.look.items if item.level == 0][-1]
        self.at((last.left + last.width + 60, last.centre()[1]), "click", button)

    def do_answer(self, number):
        """A button of a message box."""
        button = self.look.windows.get(f"foreign/{number}")
        if not button:
            raise Missing("no message box")
        self.at(button.place.centre(), "click", 1)

    def do_press(self, number):
        self.at(self.centre(number), "mousedown", 1)

    def do_release(self, number=None):
        """Over a control, or far outside all."""
        self.at(self.centre(number) if number else (5, 1015), "mouseup", 1)

    def do_wheel(self, number, turns):
        button = 5 if int(turns) > 0 else 4
        self.at(self.centre(number), "click", "--repeat", abs(int(turns)), button)

    def do_bar_arrow(self, number, end):
        """The arrow at an end of a scroll bar: - or +."""
        bar = self.control(number).place
        self.at(self.along(bar, 8 if end == "-" else -8), "click", 1)

    def do_bar_page(self, number, end):
        """Between thumb and arrow."""
        bar = self.control(number).place
        thumb = self.look.thumbs[self.control(number).name]
        across = bar.width > bar.height
        start, length = (thumb.left - bar.left, thumb.width) if across else (thumb.top - bar.top, thumb.height)
        self.at(self.along(bar, start - 4 if end == "-" else start + length + 4), "click", 1)

    def do_thumb(self, number, end):
        """Drags it to an end of its bar: - or +; away drags it out and lets it go there."""
        bar = self.control(number).place
        thumb = self.look.thumbs[self.control(number).name].centre()
        target = {"-": self.along(bar, 3), "+": self.along(bar, -3), "away": (thumb[0] + 30, thumb[1] + 400)}[end]
        self.at(thumb, "mousedown", 1, "mousemove", *target)
        self.at(target, "mouseup", 1)

    @staticmethod
    def along(bar, distance):
        x, y = bar.centre()
        if bar.width > bar.height:
            return (bar.left + distance if distance >= 0 else bar.left + bar.width + distance), y
        return x, (bar.top + distance if distance >= 0 else bar.top + bar.height + distance)

    def do_key(self, *keys):
        self.world.xdotool("key", *keys)

    def do_hold(self, key, milliseconds):
        self.world.xdotool("keydown", key, "sleep", int(milliseconds) / 1000, "keyup", key)

    def do_type(self, text):
        self.world.xdotool("type", "--delay", 5, text)

    def do_close(self):
        """As a window manager asks for it: the topmost window."""
        ask_to_close(self.world.screen.display, self.look.top_level().client)


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("kind", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("rest", ctypes.c_long * 12)]


def ask_to_close(display_name, client):
    """Sends WM_DELETE_WINDOW to the window that shows at the middle of a client area."""
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    x11.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x11.XOpenDisplay(display_name.encode()))
    root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
    child = ctypes.c_ulong()
    x, y = ctypes.c_int(), ctypes.c_int()
    x11.XTranslateCoordinates(display, root, root, *client.centre(), ctypes.byref(x), ctypes.byref(y),
                              ctypes.byref(child))
    atom = [x11.XInternAtom(display, name, 0) for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW")]
    message = ClientMessage(type=33, sent=1, window=child.value, kind=atom[0], format=32)
    message.data[0] = atom[1]
    x11.XSendEvent(display, child, 0, ctypes.c_long(0), ctypes.byref(message))
    x11.XSync(display, 0)
    x11.XCloseDisplay(display)
