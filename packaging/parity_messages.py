"""The messages of the real desktop: names, what of them is compared, and which are left out and why."""

# Message: name, and the parts that mean the same on both systems.
COMPARED = {
    0x0001: ("WM_CREATE", ()),
    0x0002: ("WM_DESTROY", ()),
    0x000F: ("WM_PAINT", ()),
    0x0010: ("WM_CLOSE", ()),
    0x0100: ("WM_KEYDOWN", ("wParam",)),
    0x0101: ("WM_KEYUP", ("wParam",)),
    0x0102: ("WM_CHAR", ("wParam",)),
    0x0104: ("WM_SYSKEYDOWN", ("wParam",)),
    0x0105: ("WM_SYSKEYUP", ("wParam",)),
    0x0106: ("WM_SYSCHAR", ("wParam",)),
    0x0110: ("WM_INITDIALOG", ()),
    0x0111: ("WM_COMMAND", ("wParam", "control")),
    0x0113: ("WM_TIMER", ("wParam",)),
    0x0114: ("WM_HSCROLL", ("wParam", "control")),
    0x0115: ("WM_VSCROLL", ("wParam", "control")),
    0x0201: ("WM_LBUTTONDOWN", ("wParam",)),
    0x0202: ("WM_LBUTTONUP", ("wParam",)),
    0x0203: ("WM_LBUTTONDBLCLK", ("wParam",)),
    0x0204: ("WM_RBUTTONDOWN", ("wParam",)),
    0x0205: ("WM_RBUTTONUP", ("wParam",)),
    0x020A: ("WM_MOUSEWHEEL", ("wParam",)),
    0x0211: ("WM_ENTERMENULOOP", ("wParam",)),
    0x0212: ("WM_EXITMENULOOP", ("wParam",)),
}

NO_ANSWER = "no procedure of ours handles it, and its default does nothing that the program sees"
ASKED = "the desktop asks a window for something, and the default answers"
PLACES = "places and sizes, which the look compares"
FOCUS = "activation and focus, which the look compares"
FRAME = "the frame, which belongs to the desktop"
PAINTED = "colours and backgrounds, which the picture compares"
MOUSE = "the way of the mouse; no procedure of ours looks at it"
CLOSES = "a dialog's default closes the list of the control that has the focus; the look compares what is open"
MENU = "the way through a menu; the look compares what is open and marked"

LEFT_OUT = {
    PLACES: (0x03, 0x05, 0x24, 0x46, 0x47, 0x83, 0x18, 0x22, 0x7E, 0x214, 0x216, 0x231, 0x232, 0x285),
    FOCUS: (0x06, 0x07, 0x08, 0x1C, 0x21, 0x86, 0x0A, 0x1F, 0x215, 0x281, 0x282, 0x287, 0x28),
    FRAME: (0x81, 0x82, 0x85, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xAE, 0xAF, 0x112, 0x2A2, 0x88, 0x7F),
    PAINTED: (0x14, 0x30, 0x132, 0x133, 0x134, 0x135, 0x136, 0x137, 0x138, 0x30F, 0x31, 0x128, 0x129),
    MOUSE: (0x20, 0x84, 0x200, 0x2A1, 0x2A3, 0x210),
    MENU: (0x116, 0x117, 0x11F, 0x121, 0x120, 0x125, 0x122),
    CLOSES: (0x14F,),
    ASKED: (0x0C, 0x0D, 0x0E, 0x87, 0x127, 0x400, 0x401),
    NO_ANSWER: (0x00, 0x81, 0x82, 0x90, 0x7C, 0x7D, 0x118, 0x11, 0x16, 0x1A, 0x1B, 0x207, 0x208, 0x7B, 0x2A0, 0x53),
}
KNOWN = {message for messages in LEFT_OUT.values() for message in messages}
TIMER = 0x113
# Template, message and notification of what every tick does again: the gas level's fields are set anew.
BY_TICKS = {("217", 0x111, 0x300), ("217", 0x111, 0x400)}


def is_timer(line):
    return line[0] == "msg" and int(line[2]) == TIMER


# Whether a line takes part in the comparison; what no table knows does.
def is_compared(line):
    if line[0] != "msg":
        return line[0] != "beat"
    return int(line[2]) not in KNOWN and (line[1].partition(".")[0], int(line[2]), int(line[3]) >> 16) not in BY_TICKS


def told(line):
    """A line of the log as it is compared and printed."""
    if line[0] == "fileend":
        return " ".join([*line[:2], line[2].replace("\\", "/").rpartition("/")[2]])
    if line[0] != "msg":
        return " ".join(line)
    message, w_param, l_param, control = int(line[2]), int(line[3]), int(line[4]), line[5]
    name, parts = COMPARED.get(message, (f"message {message:#06x}", ("wParam",)))
    text = name
    if "wParam" in parts:
        low, high = w_param & 0xFFFF, w_param >> 16 & 0xFFFF
        text += f" {low}" + (f"/{high}" if high else "")
    if "control" in parts:
        text += f" of {control}" if l_param else ""
    return text
