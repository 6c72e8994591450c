"""One of the two programs with its own screen and its own simulated controller: starts them, acts as the user, reads
what the program logs and what goes over the wire."""

import contextlib
import os
import re
import subprocess
import threading
import time
from pathlib import Path

from parity_messages import is_compared, is_timer

SCREEN = (1280, 1024)
LONGEST_WAIT = 20
PAUSE = 0.01  # between two looks at a growing file
QUIET = 6  # beats without anything else: by then all blocks were read once more
ENOUGH_POLLS = 24  # frames in which every page's order of polls comes round twice


class Stuck(Exception):
    """The program did not come to what was waited for."""


class Screen:
    """A virtual screen whose pixels lie in a file."""

    def __init__(self, place):
        self.file = Path(place, "Xvfb_screen0")
        told, number = os.pipe()
        self.process = subprocess.Popen(["Xvfb", "-displayfd", str(number), "-screen", "0", f"{SCREEN[0]}x{SCREEN[1]}x24",
                                         "-nolisten", "tcp", "-nocursor", "-fbdir", place], pass_fds=[number], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(number)
        with os.fdopen(told) as display:
            self.display = ":" + display.readline().strip()

    def close(self):
        end(self.process)

    # Rows of four bytes a pixel: blue, green, red and one of nothing.
    def rows(self):
        data = self.file.read_bytes()
        header = [int.from_bytes(data[at:at + 4], "big") for at in range(0, 100, 4)]
        start, stride = header[0] + 12 * header[19], header[12]
        return [data[at:at + 4 * SCREEN[0]] for at in range(start, start + stride * SCREEN[1], stride)]


class Wire:
    """The simulated controller and all frames on its line."""

    def __init__(self, simulator, options, place, start):
        self.process = start([simulator, "--port=ports/COM1", "--pace=none", "--verbose", *options], cwd=place,
                             text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
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
    """`command` starts the program, `environment` is what it needs beside a display, `logged` turns a path into the
    program's own spelling. All ends with the context."""

    def __init__(self, name, command, environment, screen, logged=str):
        self.name = name
        self.screen = screen
        self.command = command
        self.program_environment = environment
        self.logged = logged
        self.started = []

    @contextlib.contextmanager
    def running(self, place, simulator, options):
        try:
            self.begin(place, simulator, options)
            yield self
        finally:
            self.close()

    def begin(self, place, simulator, options):
        self.log_path = Path(place, "messages.log")
        self.lines = []
        self.partly = b""
        self.read_to = 0
        self.looks = 0
        self.wire = Wire(simulator, options, place, self.start)
        self.environment = {**os.environ, "HOME": place, "XDG_RUNTIME_DIR": place, **self.program_environment,
                            "DBUS_SESSION_BUS_ADDRESS": "disabled:", "DISPLAY": self.screen.display,
                            "TARVEX_MESSAGE_LOG": self.logged(self.log_path)}

    def start_program(self, place):
        self.ended = False
        self.program = self.start(self.command, cwd=place, env=self.environment, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)

    def start(self, command, **how):
        self.started.append(subprocess.Popen(command, **how))
        return self.started[-1]

    # The last one first, so that no program loses its screen.
    def close(self):
        while self.started:
            end(self.started.pop())

    # Takes in what the log has got since, as lists of fields.
    def read_log(self):
        if not self.log_path.exists():
            return
        with open(self.log_path, "rb") as log:
            log.seek(self.read_to)
            data = log.read()
        self.read_to += len(data)
        *whole, self.partly = (self.partly + data).split(b"\n")
        self.lines += [line.decode("latin-1").rstrip("\r").split("\t") for line in whole]

    def wait(self, what, reached, longest=LONGEST_WAIT):
        end = time.monotonic() + longest
        self.read_log()
        while not reached():
            if time.monotonic() > end or self.ended:
                state = "ended" if self.ended else "waited in vain"
                raise Stuck(f"{self.name}: {state} for {what}; the log ends with {self.lines[-5:]}")
            time.sleep(PAUSE)
            self.ended = self.program.poll() is not None
            self.read_log()

    def is_quiet(self, since):
        count = 0
        for line in reversed(self.lines[since:]):
            if is_compared(line) and not is_timer(line):
                return False
            count += line[0] == "beat"
            if count >= QUIET:
                return True
        return False

    # Until the program does nothing but serve its timers, or has ended.
    def rest(self):
        since = len(self.lines)
        self.wait("a rest", lambda: self.is_quiet(since) or self.ended)

    # The frames that go out while nobody does anything; none if the timers come and nothing follows.
    def polls(self):
        frames, since = len(self.wire.frames), len(self.lines)
        self.wait("polls", lambda: len(self.wire.frames) - frames >= ENOUGH_POLLS or
                  (len(self.wire.frames) == frames and self.lines[since:].count(["beat"]) >= 2 * QUIET))
        return self.wire.frames[frames:]

    def wait_for_frames(self, count):
        wanted = len(self.wire.frames) + count
        self.wait(f"{count} frames", lambda: len(self.wire.frames) >= wanted, longest=60)

    def wait_for_beats(self, count):
        since = len(self.lines)
        self.wait(f"{count} beats", lambda: self.lines[since:].count(["beat"]) >= count, longest=60)

    # What stands on the screen, as the program tells it.
    def look(self):
        self.looks += 1
        first, last = ["look", str(self.looks)], ["end", str(self.looks)]
        asked = Path(str(self.log_path) + ".look")
        written = Path(str(self.log_path) + ".asking")
        written.write_text(f"{self.looks};", encoding="ascii")
        written.rename(asked)
        self.wait("a look", lambda: last in self.lines)
        begin, end = self.lines.index(first), self.lines.index(last)
        taken = [line for line in self.lines[begin + 1:end] if line[0] != "msg"]
        # Reading a window's text sends it a message; that is no part of what the user caused.
        del self.lines[begin:end + 1]
        return taken

    # The question comes back when the screen has dealt with all before it.
    def xdotool(self, *words):
        for command in (words, ["getmouselocation"]):
            subprocess.run(["xdotool", *map(str, command)], env=self.environment, check=True,
                           stdout=subprocess.DEVNULL)


def end(process):
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def native_world(build, screen):
    return World("linux", [str(build / "linux/tarvex")], {"QT_QPA_PLATFORM": "xcb"}, screen)


def windows_world(build, prefix, screen):
    return World("windows", ["wine", str(build / "windows/tarvex.exe")], prefix.variables, screen,
                 lambda path: "Z:" + str(path).replace("/", "\\"))
