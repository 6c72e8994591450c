"""Mouse and keys on a real X server, closer together than an exchange takes: what the controller is told by them."""

import contextlib
import os
import re
import subprocess
import sys
import tempfile
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TARVEX, SIMULATOR, LANG = (str(Path(path).resolve()) for path in sys.argv[1:4])
LONGEST_WAIT = 20
ENOUGH = 4  # polls of a page or dialog until all that was done before is dealt with


def click(x, y):
    return f"mousemove {x} {y} click 1 "


def focus(x, y):
    return f"mousemove {x} {y} mousedown 1 mousemove {x} {y + 70} mouseup 1 "


# The polls that tell a page or dialog: Readings, Options, the dialogs.
LIVE, PARAMETERS, STORED = "> 65 02", "> 65 03", "> 65 05"
ON_GAS = LIVE + ".* .[13579BDF] ..$"
# Places in the size 1280x1024, whose window is the whole screen.
FILE, SAVE_AS, READINGS, OPTIONS, INFORMATION = (17, 10), (55, 52), (218, 10), (368, 10), (631, 10)
LEARN, CORRECTIONS, IDLE_UP, LOAD_UP, TEMPERATURE = (1155, 887), (181, 161), (1036, 172), (1036, 260), (406, 688)
REGISTRATION, CHANGE = (685, 409), (815, 409)

# Each step: what the user does in one go, what is read or which file is there afterwards, what was written.
SCRIPTS = {
    "a typed number is stored whole": [
        (click(*INFORMATION) + "key --delay 3 Down Down Return", STORED, []),
        (click(*CHANGE), STORED, []),
        (click(*REGISTRATION) + "key --delay 3 ctrl+a w b 7 4 2 1 k " + click(*CHANGE), STORED,
         ["65 2B 57 E7", "65 2C 42 D3", "65 2D 37 C9", "65 2E 34 C7", "65 2F 32 C6", "65 30 31 C6", "65 31 4B E1"]),
    ],
    "a box behind a list chosen by keys": [
        (click(*OPTIONS), PARAMETERS, []),
        (click(*IDLE_UP) + "key --delay 3 Down Down Return " + click(*TEMPERATURE), PARAMETERS,
         ["65 20 1F A4", "65 20 20 A5", "65 06 E0 4B"]),
    ],
    "a press where the page that was left had a list": [
        (click(*OPTIONS), PARAMETERS, []),
        (click(*READINGS) + click(*LOAD_UP) + "sleep 2", LIVE, []),
    ],
    "a dialog that keys open and close": [
        (click(*OPTIONS), PARAMETERS, []),
        (focus(*CORRECTIONS) + "key space", STORED, []),
        ("key Escape", PARAMETERS, []),
        (focus(*CORRECTIONS) + "key --delay 3 space Escape", PARAMETERS, []),
    ],
    "a button whose key repeats": [
        (focus(*LEARN) + "keydown space sleep 1", LIVE, []),
        ("keyup space", LIVE, ["65 1F 32 B6"]),
    ],
    "a box beside an open menu": [
        (click(*OPTIONS), PARAMETERS, []),
        (click(*FILE), PARAMETERS, []),
        (click(*TEMPERATURE), PARAMETERS, ["65 06 E0 4B"]),
        (click(*FILE) + click(*TEMPERATURE), PARAMETERS, ["65 06 E2 4D"]),
    ],
    "a name for a file dialog that is about to open": [
        (click(*FILE) + click(*SAVE_AS) + "key --delay 3 s a v e d Return", "saved.vr2", []),
    ],
}


class Controller:
    def __init__(self, output, place):
        self.place = place
        self.lines = [output.readline()]  # the port is there
        self.news = threading.Condition()
        threading.Thread(target=self.read, args=[output], daemon=True).start()

    def read(self, output):
        for line in output:
            with self.news:
                self.lines.append(line.rstrip())
                self.news.notify()

    # A file, or so many lines of this kind.
    def wait_for(self, since, wanted, count):
        def is_there():
            found = [line for line in self.lines[since:] if re.search(wanted, line)]
            return len(found) >= count or Path(self.place, wanted).is_file()

        with self.news:
            assert self.news.wait_for(is_there, LONGEST_WAIT), f"no '{wanted}'; the line had {self.lines[-20:]}"

    def written(self, since):
        return [match[1] for line in self.lines[since:] if (match := re.search("> (65 (?!0[1-5]).. .. ..)", line))]


def start(stack, *command, **how):
    process = stack.enter_context(subprocess.Popen(command, **how))
    stack.callback(process.terminate)
    return process


def screen(stack):
    told, number = os.pipe()
    start(stack, "Xvfb", "-displayfd", str(number), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
          pass_fds=[number], stderr=subprocess.DEVNULL)
    os.close(number)
    with os.fdopen(told) as display:
        return ":" + display.readline().strip()


class DesktopTest(unittest.TestCase):
    def play(self, steps, loses):
        with contextlib.ExitStack() as stack:
            place = stack.enter_context(tempfile.TemporaryDirectory())
            environment = {**os.environ, "DISPLAY": screen(stack), "QT_QPA_PLATFORM": "xcb", "HOME": place,
                           "XDG_RUNTIME_DIR": place, "DBUS_SESSION_BUS_ADDRESS": "disabled:"}
            Path(place, "Lang").symlink_to(LANG)
            Path(place, "Tarvex.ini").write_text("[Ustawienia]\nCommPort= 1\nLanguage= ang\n", encoding="ascii")
            simulator = start(stack, SIMULATOR, "--port=ports/COM1", "--scenario=cruise", "--verbose", cwd=place,
                              text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            controller = Controller(simulator.stdout, place)
            tool = start(stack, TARVEX, cwd=place, env=environment)
            controller.wait_for(0, ON_GAS, ENOUGH)
            for actions, wanted, written in steps:
                since = len(controller.lines)
                if loses:
                    print("fault silence 2", file=simulator.stdin, flush=True)
                    controller.wait_for(since, "<$", 1)
                subprocess.run(["xdotool", *actions.split()], env=environment, check=True)
                controller.wait_for(len(controller.lines), wanted, ENOUGH)
                self.assertEqual(controller.written(since), written, actions)
            tool.terminate()
            self.assertEqual(tool.wait(LONGEST_WAIT), 0)

    def test_scripts_on_a_line_that_answers_and_on_one_that_loses_replies(self):
        with ThreadPoolExecutor(3) as pool:
            plays = {(name, loses): pool.submit(self.play, steps, loses)
                     for name, steps in SCRIPTS.items() for loses in (False, True)}
        for (name, loses), play in plays.items():
            with self.subTest(name, loses=loses):
                play.result()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
