"""Wine's own folder for the comparison: made once, with the measures and colours of the real desktop."""

import os
import shutil
import subprocess
from pathlib import Path

import parity_face

# Fixed borders of 3, a caption of 23 and a menu of 20 pixels, as at 96 dots an inch; no theme, no window manager. The
# port is a link that each simulator makes anew.
SETTINGS = r"""Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"
"Decorated"="N"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\ThemeManager]
"ThemeActive"="0"

[HKEY_CURRENT_USER\Control Panel\Colors]
"ButtonFace"="240 240 240"
"ButtonAlternateFace"="240 240 240"
"Menu"="240 240 240"
"MenuBar"="240 240 240"
"ButtonShadow"="160 160 160"
"ButtonHilight"="255 255 255"

[HKEY_CURRENT_USER\Control Panel\Desktop\WindowMetrics]
"CaptionHeight"="22"
"CaptionWidth"="22"
"MenuHeight"="19"
"ScrollHeight"="17"
"ScrollWidth"="17"

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes]
{faces}

[HKEY_LOCAL_MACHINE\Software\Wine\Ports]
"COM1"="{port}"
"""


class Prefix:
    """The folder, with the server that serves its programs until it is closed."""

    def __init__(self, place):
        self.place = Path(place)
        self.ports = self.place / "ports"
        self.variables = {"WINEPREFIX": str(place), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml="}

    # Makes it if it is missing or was made otherwise.
    def make(self):
        made = self.place / "made"
        faces = "\n".join(f'"{name}"="{face}"' for name, face in parity_face.SUBSTITUTES.items())
        settings = SETTINGS.replace("{port}", str(self.ports / "COM1")).replace("{faces}", faces)
        recipe = settings + str(parity_face.FACES)
        if not made.exists() or made.read_text(encoding="utf-8") != recipe:
            shutil.rmtree(self.place, ignore_errors=True)
            self.place.mkdir(parents=True)
            self.run("wineboot", "-i")
            parity_face.install(self.place / "drive_c/windows/Fonts")
            script = self.place / "settings.reg"
            script.write_text(settings, encoding="utf-8")
            self.run("wine", "regedit", "/S", str(script))
            self.run("wineserver", "-w")
            made.write_text(recipe, encoding="utf-8")
        self.ports.mkdir(exist_ok=True)

    def run(self, *command):
        environment = {**os.environ, **self.variables, "DISPLAY": ""}
        subprocess.run(command, env=environment, check=True, timeout=240,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def close(self):
        for option in ("-k", "-w"):
            subprocess.run(["wineserver", option], env={**os.environ, **self.variables}, check=False, timeout=30,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
