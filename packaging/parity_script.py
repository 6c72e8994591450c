"""The sessions that both programs are led through: rows of a telling name and an action.

The actions are the `do_` words of parity_actions.py: `bar` and `item` are entries of the menu bar and of the open menu
by their place, a number is a control's id from src/resources/Ids.h. A step whose name begins with "polls" also compares
what goes over the line while nobody does anything; one that begins with "sweeping" leaves out what is drawn, since the
oscilloscope runs at its own pace.
"""

from dataclasses import dataclass


@dataclass
class Session:
    """All that the controller shows is held at `live`, by its byte, so that it stands still."""
    name: str
    steps: list
    live: dict
    family: int = 4
    language: str = "ang"


FILE, PORT, SIZE, LANGUAGE, READINGS, CONFIGURATION, OPTIONS, DIAGRAM, RESET, SCOPE, INFORMATION = range(11)
PAGES = {"Readings": READINGS, "Configuration": CONFIGURATION, "Options": OPTIONS, "Diagram": DIAGRAM, "Reset": RESET}
ABOUT, CONTROLLER = 0, 1

# A warm engine on gas.
RUNNING = {1: 40, 2: 110, 3: 110, 4: 120, 5: 112, 6: 23, 7: 105, 8: 3, 9: 90}


def page(name):
    return (f"open {name}", f"bar {PAGES[name]}")


def menu(name, bar, item):
    return [(f"open the menu of {name}", f"bar {bar}"), (name, f"item {item}")]


def choose(name, control, entry):
    return [(f"drop {name}", f"click {control}"), (f"choose from {name}", f"entry {entry}")]


def keys(*presses):
    return [(f"key {press}", f"key {press}") for press in presses]


# A cold one that stands.
STANDING = {1: 5, 2: 110, 3: 110, 4: 200, 5: 255, 6: 255, 7: 96, 8: 0, 9: 20}

readings = Session("readings", [
    ("polls on Readings", "wait"),
    *[(f"live byte {byte}", f"tell live {byte} {value}") for byte, value in RUNNING.items()],
    ("a menu", f"bar {FILE}"),
    ("polls with a menu open", "wait"),
    ("a press beside the menu", "desktop 640 600"),
    ("learn", "click 1005"),
    ("press LEARN", "press 1005"),
    ("polls with LEARN held", "wait"),
    ("let go far away", "release"),
    ("learn by the space bar", "key space"),
    ("right click on LEARN", "click 1005 3"),
    ("right click on the page", "point 300 300 3"),
    ("click on the page", "point 300 300"),
    ("double click on the page", "point 300 300"),
    ("wheel over LEARN", "wheel 1005 2"),
    ("space after a click on the page", "key space"),
    *keys("Tab", "Return", "Escape", "a"),
    *menu("About", INFORMATION, ABOUT),
    ("polls behind About", "wait"),
    ("click beside About", "desktop 100 700"),
    ("close About", "click 1"),
    *menu("About", INFORMATION, ABOUT),
    *keys("Escape"),
    *menu("About", INFORMATION, ABOUT),
    *keys("Return"),
    *menu("About", INFORMATION, ABOUT),
    ("About closed by the window manager", "close"),
    *menu("other port", PORT, 10),
    ("polls behind the ports", "wait"),
    ("drop the ports", "click 1003"),
    ("polls behind the list of ports", "wait"),
    *keys("Escape"),
    ("close the ports", "click 1"),
    ("unplug", "unplug"),
    ("replug", "replug"),
    ("polls after the replug", "wait"),
    ("close", "close"),
], STANDING)

LISTS = {"Lambda type": (1003, 1), "Lambda point": (1013, 5), "Lambda delay": (1017, 5), "ignition": (1021, 2),
         "speed for gas": (1022, 6), "change of speed": (1023, 1), "TPS type": (1024, 1), "overlap": (1026, 2)}

configuration = Session("configuration", [
    page("Configuration"),
    ("polls on Configuration", "wait"),
    *[step for name, (control, entry) in LISTS.items() for step in choose(name, control, entry)],
    ("drop the ignition", "click 1021"),
    ("polls with a list open", "wait"),
    ("press on the box again", "click 1021"),
    ("drop the ignition", "click 1021"),
    ("press beside the list", "point 30 700"),
    ("the focus to Lambda type", "click 1003"),
    *keys("Down", "Down", "Return"),
    *keys("Up", "Down", "Home", "End", "F4", "Home", "Escape", "alt+Down", "End", "Return", "F4", "Up", "F4"),
    ("the focus to ignition", "click 1021"),
    *keys("Escape", "2"),
    ("a pause behind a letter", "beats 30"),
    *keys("3"),
    ("a pause behind a letter", "beats 30"),
    *keys("w", "Prior", "Next"),
    ("drop the delay", "click 1017"),
    ("wheel over the open list", "wheel 1017 1"),
    ("right click on the open list", "click 1017 3"),
    *keys("Escape"),
    ("a disabled list", "click 1019"),
    ("a disabled list again", "click 1019 3"),
    ("low signal", "click 1140"),
    ("low signal back", "key space"),
    ("emergency start", "click 1074"),
    *choose("valve opening", 1149, 6),
    ("emergency start back", "click 1074"),
    ("right click on a box", "click 1074 3"),
    ("press a box", "press 1074"),
    ("let go outside", "release"),
    ("press a list", "press 1021"),
    ("let go outside the list", "release"),
    *keys("Escape"),
    ("drop the emulation", "click 1018"),
    ("choose the wave", "entry 0"),
    ("polls behind the emulation", "wait"),
    *choose("the high time", 1003, 3),
    *choose("the low time", 1004, 4),
    ("polls with a list in the dialog", "click 1003"),
    *keys("Escape", "Tab", "Tab", "Tab", "Escape"),
    ("open the gas level", "click 1206"),
    ("polls behind the gas level", "wait"),
    ("arrow of a bar", "bar_arrow 1137 +"),
    ("arrow back", "bar_arrow 1137 -"),
    ("page of a bar", "bar_page 1122 +"),
    ("page back", "bar_page 1122 -"),
    ("thumb to the end", "thumb 1123 +"),
    ("thumb to the beginning", "thumb 1123 -"),
    ("thumb let go outside", "thumb 1138 away"),
    ("factory thresholds", "click 1141"),
    ("a field", "click 1009"),
    ("type into it", "type 12"),
    *choose("the sensor", 1003, 1),
    *choose("the other sensor", 1003, 0),
    *choose("the third sensor", 1003, 2),
    ("the focus to a field", "click 1009"),
    ("the focus to its bar", "key Tab"),
    *[(f"bar key {press}", f"key {press}") for press in ("Right", "Next", "Home")],
    ("close the gas level", "click 1"),
    ("close with a list open", "click 1021"),
    ("close", "close"),
], RUNNING)

OPTION_LISTS = {"idle down": (1013, 3), "idle up": (1043, 4), "load down": (1044, 5), "load up": (1045, 6),
                "cut-off speed": (1048, 3), "cut-off steps": (1049, 4), "speed off gas": (1050, 2),
                "temperature": (1051, 5), "sound": (1052, 1)}

options = Session("options", [
    page("Options"),
    ("polls on Options", "wait"),
    *choose("base", 1003, 3),
    ("box of the base", "click 1034"),
    ("box of the base back", "click 1034"),
    ("jump", "click 1039"),
    *choose("TPS type of the jump", 1046, 2),
    *choose("jump volts", 1047, 2),
    *[step for name, (control, entry) in OPTION_LISTS.items() for step in choose(name, control, entry)],
    *[(f"box {control}", f"click {control}") for control in (1040, 1041, 1042, 1207)],
    *keys("Tab", "Tab", "space", "shift+Tab"),
    ("corrections", "click 1014"),
    ("polls behind the corrections", "wait"),
    *choose("the first correction", 1003, 2),
    *choose("the last correction", 1123, 3),
    ("drop a correction", "click 1013"),
    ("polls with a list in the corrections", "wait"),
    *keys("Down", "Return", "Escape"),
    ("press Corrections", "press 1014"),
    ("let go outside", "release"),
    ("wheel over a closed list", "wheel 1052 1"),
    ("close", "close"),
], RUNNING)

oscilloscope = Session("oscilloscope", [
    ("unplug", "unplug"),
    ("sweeping, without a link", f"bar {SCOPE}"),
    ("sweeping, a poll of a lost link", "beats 15"),
    ("polls of a lost link", "wait"),
    ("sweeping after the replug", "replug"),
    ("sweeping to the end", "frames 900"),
    ("sweeping on, a menu", f"bar {FILE}"),
    ("sweeping on, polls with a menu open", "wait"),
    ("sweeping on, the menu closed", "key Escape"),
    ("sweeping ends: the value cursor", "click 1071"),
    ("polls with the cursor", "wait"),
    ("cursor: arrow", "bar_arrow 1117 +"),
    ("cursor: arrow back", "bar_arrow 1117 -"),
    ("cursor: page", "bar_page 1117 +"),
    ("cursor: thumb to the end", "thumb 1117 +"),
    ("cursor: thumb to the beginning", "thumb 1117 -"),
    ("cursor: thumb let go outside", "thumb 1117 away"),
    *[(f"cursor: bar key {press}", f"key {press}") for press in ("Right", "Left", "Next", "Prior", "End", "Home")],
    ("cursor: the wheel over the bar", "wheel 1117 2"),
    ("cursor: the wheel over the page", "wheel 1071 -1"),
    ("sweeping again", "click 1071"),
    ("sweeping on, by the space bar", "key space"),
    ("sweeping on, About", f"bar {INFORMATION}"),
    ("sweeping on, About opens", f"item {ABOUT}"),
    ("sweeping on, polls behind About", "wait"),
    ("sweeping on, About closes", "key Return"),
    ("close", "close"),
], RUNNING)

files = Session("files", [
    *menu("Save As", FILE, 1),
    ("polls behind the file dialog", "wait"),
    *keys("Escape"),
    *menu("Save As", FILE, 1),
    ("a name", "type saved"),
    ("save", "key Return"),
    *menu("Save As", FILE, 1),
    ("the same name", "type saved.vr2"),
    ("save over it", "key Return"),
    ("polls behind the question", "wait"),
    ("not over it", "answer 7"),
    ("cancel the next dialog", "key Escape"),
    *menu("Save As", FILE, 1),
    ("the same name", "type saved.vr2"),
    ("save over it", "key Return"),
    ("do so", "answer 6"),
    *menu("Open", FILE, 0),
    ("the name", "type saved.vr2"),
    ("load", "key Return"),
    *menu("Open", FILE, 0),
    ("a missing name", "type missing.vr2"),
    ("load it", "key Return"),
    ("polls behind the message", "wait"),
    ("answer", "answer 1"),
    *menu("Open", FILE, 0),
    ("another file", "type Tarvex.ini"),
    ("load it", "key Return"),
    ("answer by Enter", "key Return"),
    *menu("exit", FILE, 3),
], RUNNING)

service = Session("service", [
    page("Reset"),
    ("polls on Reset", "wait"),
    ("reset of a running engine", "click 126"),
    ("polls behind the refusal", "wait"),
    ("answer", "answer 1"),
    ("the engine stops", "tell live 7 97"),
    ("reset", "click 126"),
    ("answer by Enter", "key Return"),
    *menu("Device information", INFORMATION, CONTROLLER),
    ("polls behind the information", "wait"),
    ("a field that is read only", "click 1164"),
    ("type into it", "type x"),
    ("change the number", "click 1179"),
    ("the field", "click 1164"),
    *keys("Home", "shift+End"),
    ("type", "type ab12"),
    *keys("BackSpace", "Left", "Delete", "Home", "shift+End", "BackSpace"),
    ("type too much", "type wx123456789"),
    ("store the number", "click 1179"),
    ("clear the hours", "click 1182"),
    ("change the date", "click 1180"),
    *choose("the year", 1003, 3),
    *choose("the month", 1004, 1),
    *choose("the day", 1005, 9),
    ("store the date", "click 1180"),
    *keys("Escape"),
    page("Diagram"),
    ("polls on the Diagram", "wait"),
    ("click on the Diagram", "point 400 300"),
    *keys("Right"),
    *menu("640x480", SIZE, 0),
    ("arrow", "bar_arrow 1120 +"),
    ("arrow back", "bar_arrow 1120 -"),
    ("page", "bar_page 1121 +"),
    ("page back", "bar_page 1121 -"),
    ("thumb to the end", "thumb 1121 +"),
    ("thumb to the right", "thumb 1120 +"),
    ("thumb let go outside", "thumb 1121 away"),
    *[(f"bar key {press}", f"key {press}") for press in ("Down", "Right", "Prior", "Home")],
    ("the wheel", "wheel 1121 1"),
    ("close", "close"),
], RUNNING)


def every_page():
    rows = [page(name) for name in PAGES]
    return [*rows, ("sweeping on the Oscilloscope", f"bar {SCOPE}"), page("Readings")]


SIZES = ["640x480", "800x600", "1024x768", "1280x960", "1280x1024"]
sizes = Session("sizes", [
    *[step for index, size in enumerate(SIZES) for step in [*menu(size, SIZE, index), *every_page()]],
    ("a speed", "tell live 6 10"),
    ("petrol", "tell live 8 0"),
    ("cold", "tell live 4 200"),
    ("lean", "tell live 1 12"),
    ("close", "close"),
], RUNNING)

LANGUAGES = ["Polish", "English", "Russian", "Lithuanian", "Czech"]
languages = Session("languages", [
    *[step for index, name in enumerate(LANGUAGES) for step in [
        *menu(name, LANGUAGE, index), *every_page(), *menu("Device information", INFORMATION, CONTROLLER),
        *keys("Escape"), *menu("About", INFORMATION, ABOUT), *keys("Escape")]],
    ("close", "close"),
], RUNNING)

family2 = Session("family 2", [
    ("polls on Readings", "wait"),
    page("Configuration"),
    ("polls on Configuration", "wait"),
    *choose("Lambda type", 1003, 1),
    *choose("ignition", 1021, 2),
    ("emergency start", "click 1074"),
    ("low signal, disabled", "click 1140"),
    ("the gas level, disabled", "click 1206"),
    *keys("Escape"),
    page("Options"),
    ("polls on Options", "wait"),
    ("full panel", "click 1207"),
    ("jump", "click 1039"),
    *choose("the jump", 1046, 2),
    ("corrections", "click 1014"),
    ("polls behind the corrections", "wait"),
    *keys("Escape"),
    *menu("Device information", INFORMATION, CONTROLLER),
    ("polls behind the information", "wait"),
    ("a button without use", "click 1182"),
    *keys("Escape"),
    page("Reset"),
    ("the engine stops", "tell live 7 97"),
    ("reset", "click 126"),
    ("answer", "answer 1"),
    *menu("Save As", FILE, 1),
    ("a name", "type two"),
    ("save", "key Return"),
    ("close", "close"),
], STANDING, family=2, language="pol")

by_keys = Session("menus by keys", [
    ("Alt alone", "key Alt_L"),
    *[("after Alt alone", f"key {press}") for press in ("Right", "Return", "Escape", "Escape")],
    *keys("F10", "Right", "Right", "Down", "Down", "Escape", "Escape"),
    *keys("F10", "Down", "Down", "Up", "Escape", "Escape"),
    *keys("F10", "Right", "Right", "Right", "Right", "Right", "Return"),
    ("polls on the page", "wait"),
    ("a menu by the mouse", f"bar {SIZE}"),
    ("polls with it", "wait"),
    *keys("Down", "Escape", "Escape"),
    ("right click on the bar", "bar_end 3"),
    ("click on the bar", "bar_end 1"),
    ("a menu with a separator", f"bar {PORT}"),
    ("the separator", "item 9"),
    *keys("Escape", "Escape"),
    ("Alt and a letter", "key alt+f"),
    *[("after Alt and a letter", f"key {press}") for press in ("Escape", "Escape")],
    ("Alt and a letter that no menu has", "key alt+x"),
    *[("after Alt and a letter", f"key {press}") for press in ("Escape", "Escape")],
    ("a menu", f"bar {FILE}"),
    ("close behind the menu", "close"),
], RUNNING)

by_program_keys = Session("closed by keys", [
    ("close", "key alt+F4"),
], RUNNING)

SESSIONS = [readings, configuration, options, oscilloscope, files, service, sizes, languages, family2, by_keys, by_program_keys]
