"""The language sources build, and every slip that would garble the screen is refused."""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

LANGUAGES = Path(__file__).resolve().parent.parent / "languages"


def line_14(line):
    def change(content):
        lines = content.decode().split("\n")
        lines[13] = line.format(name=lines[13].partition("=")[0])
        return "\n".join(lines).encode()

    return change


class LanguagesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = Path(folder.name, "source")
        self.out = Path(folder.name, "out")
        shutil.copytree(LANGUAGES, self.source, ignore=shutil.ignore_patterns("__pycache__"))

    # Gives what is told on the error output with a source changed.
    def build(self, path, change):
        good = path.read_bytes()
        path.write_bytes(change(good))
        command = [sys.executable, str(LANGUAGES / "build_languages.py"), str(self.source), str(self.out)]
        result = subprocess.run(command, capture_output=True, encoding="utf-8", env={"PYTHONIOENCODING": "utf-8"})
        self.assertEqual(result.returncode, 1 if result.stderr else 0)
        path.write_bytes(good)
        return result.stderr

    def test_sources_build_in_their_code_pages(self):
        self.assertEqual(self.build(self.source / "ang.txt", line_14("{name}=" + "a" * 127)), "")
        for code, page in (("pol", 1250), ("rus", 1251), ("lit", 1250), ("cs", 1250)):
            built = (self.out / f"Tarvex_lang.{code}").read_bytes()
            self.assertEqual(built.decode(f"cp{page}"), (self.source / f"{code}.txt").read_bytes().decode())
        self.assertIn(b"=" + b"a" * 127 + b"\n", (self.out / "Tarvex_lang.ang").read_bytes())

    def test_a_slip_is_refused_at_its_place_and_nothing_is_written(self):
        for code, change, message in (
            ("lit", line_14("{name}=Dujų lygis"), "build '{}:14': code page 1250 lacks ų"),
            ("rus", line_14("{name}=Zamień"), "build '{}:14': code page 1251 lacks ń"),
            ("cs", line_14("{name}=" + "ř" * 128), "build '{}:14': the text has 128 bytes, 127 fit"),
            ("ang", line_14("{name}=a=b"), "build '{}:14': the text holds \"=\""),
            ("ang", line_14("{name}="), "build '{}:14': the text is empty; one blank stands for no text"),
            ("pol", line_14("{name}"), "build '{}:14': no \"=\" after the name"),
            ("rus", line_14("Other=a"), "build '{}:14': the name is Other, in pol.txt it is StatusOnGas"),
            ("cs", lambda good: good + b"More=a\n", "build '{}:204': 204 lines, 203 expected"),
            ("cs", lambda good: good[: good.rindex(b"\n", 0, -1) + 1], "build '{}:202': 202 lines, 203 expected"),
            ("cs", lambda good: good + b"\xb3", "read '{}:204': not UTF-8"),
        ):
            with self.subTest(message):
                path = self.source / f"{code}.txt"
                self.assertEqual(self.build(path, change), message.format(path) + "\n")
                self.assertFalse(self.out.exists())


if __name__ == "__main__":
    unittest.main()
