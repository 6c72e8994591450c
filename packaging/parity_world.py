"""One of the two programs with its own screen and its own simulated controller: starts them, acts as the user, reads
what the program logs and what goes over the wire."""

import contextlib
import os
import re
import subprocess
import tempfile
import threading
import time
from pathlib import Path

SCREEN = (1280, 1024)
LONGEST_WAIT = 20
PAUSE = 0.01  # between two looks at a growing file
TIMER, DESTROY = 0x113, 0x02


class Stuck(Exception):
    """The program did not come to what was waited for."""


class Screen:
    """A virtual screen whose pixels lie in a file."""

    def __init__(self, place):
        self.place = place
        told, number = os.pipe()
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(number), "-screen", "0", f"{SCREEN[0]}x{SCREEN[1]}x24", "-nolisten", "tcp",
             "-fbdir", place], pass_fds=[number], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(number)
        with os.fdopen(told) as display:
            self.display = ":" + display.readline().strip()

    # Rows of blue, green, red and a byte of nothing.
    def pixels(self, left, top, width, height):
        data = Path(self.place, "Xvfb_screen0").read_bytes()
        header = [int.from_bytes(data[at:at + 4], "big") for at in range(0, 100, 4)]
        start, stride = header[0] + 12 * header[19], header[12]
        return [data[start + (top + row) * stride + 4 * left:][:4 * width] for row in range(height)]


class Wire:
    """The simulated controller and all frames on its line."""

    def __init__(self, simulator, place, options):
        self.process = subprocess.Popen([simulator, "--port=ports/COM1", "--verbose", *options], cwd=place, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.process.stdout.readline()  # the port is there
        self.frames = []
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            if match := re.search(r"> ((?:[0-9A-F]{2} ?)+)", line):
                self.frames.append(match[1].strip())

    def tell(self, command):
        print(command, file=self.process.stdin, flush=True)


class World:
    """`name` tells the two apart; `command` starts the program, `environment` is what it needs beside a display."""

    def __init__(self, name, command, environment, place, options, simulator, fixed_ports=None):
        self.name = name
        self.log_path = Path(place, "messages.log")
        self.lines = []
        self.partly = b""
        self.read_to = 0
        self.looks = 0
        self.started = []
        self.place = place
        if fixed_ports:
            Path(place, "ports").symlink_to(fixed_ports)
            Path(fixed_ports).mkdir(exist_ok=True)
        self.screen = Screen(place)
        self.started.append(self.screen.process)
        self.wire = Wire(simulator, place, options)
        self.started.append(self.wire.process)
        self.environment = {**os.environ, **environment, "DISPLAY": self.screen.display, "HOME": place,
                            "XDG_RUNTIME_DIR": place, "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                            "TARVEX_MESSAGE_LOG": self.logged_as(name)}
        self.program = subprocess.Popen(command, cwd=place, env=self.environment, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        self.started.append(self.program)

    def logged_as(self, name):
        return str(self.log_path) if name == "linux" else "Z:" + str(self.log_path).replace("/", "\\")

    def close(self):
        for process in reversed(self.started):
            process.terminate()
        for process in reversed(self.started):
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    # New whole lines of the log, as lists of their fields.
    def read_log(self):
        if not self.log_path.exists():
            return
        with open(self.log_path, "rb") as log:
            log.seek(self.read_to)
            data = log.read()
        self.read_to += len(data)
        *whole, self.partly = (self.partly + data).split(b"\n")
        self.lines += [line.decode("latin-1").rstrip("\r").split("\t") for line in whole]

    def wait(self, what, reached):
        end = time.monotonic() + LONGEST_WAIT
        while not reached():
            if self.program.poll() is not None and what != "the end":
                raise Stuck(f"{self.name}: the program ended while waiting for {what}")
            if time.monotonic() > end:
                raise Stuck(f"{self.name}: waited in vain for {what}; the log ends with {self.lines[-5:]}")
            time.sleep(PAUSE)
            self.read_log()

    # So many timer messages in a row without any other since the given line.
    def wait_quiet(self, since, ticks):
        def is_quiet():
            count = 0
            for line in reversed(self.lines[since:]):
                if line[0] == "msg" and int(line[2]) != TIMER and not is_background(line):
                    break
                count += line[0] == "msg" and int(line[2]) == TIMER
                if count >= ticks:
                    return True
            return False

        self.wait("quiet", is_quiet)

    def look(self):
        self.looks += 1
        wanted = ["end", str(self.looks)]
        asking = Path(str(self.log_path) + ".look")
        asking.with_suffix(".new").write_text(f"{self.looks};", encoding="ascii")
        since = len(self.lines)
        asking.with_suffix(".new").rename(asking)
        self.wait("a look", lambda: wanted in self.lines[since:])
        first = self.lines.index(["look", str(self.looks)], since)
        last = self.lines.index(wanted, first)
        taken = self.lines[first + 1:last]
        del self.lines[first:last + 1]
        return taken

    def act(self, words):
        subprocess.run(["xdotool", *words], env=self.environment, check=True, stdout=subprocess.DEVNULL)


# What comes by itself at a rest, as a paint does.
def is_background(line):
    return int(line[2]) in (0x0F, 0x14)


def native(build, place, options):
    return World("linux", [str(build / "linux/tarvex")], {"QT_QPA_PLATFORM": "xcb"}, place, options,
                 str(build / "linux/tarvex-simulator"))


def windows(build, prefix, place, options):
    environment = {"WINEPREFIX": str(prefix), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml="}
    return World("windows", ["wine", str(build / "windows/tarvex.exe")], environment, place, options,
                 str(build / "linux/tarvex-simulator"), prefix / "ports")
