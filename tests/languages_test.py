"""The language sources build, and every slip that would garble the screen is refused."""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

LANGUAGES = Path(__file__).resolve().parent.parent / "languages"


class LanguagesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = Path(folder.name, "source")
        self.out = Path(folder.name, "out")
        shutil.copytree(LANGUAGES, self.source, ignore=shutil.ignore_patterns("__pycache__"))

    def build(self):
        command = [sys.executable, str(LANGUAGES / "build_languages.py"), str(self.source), str(self.out)]
        return subprocess.run(command, capture_output=True, encoding="utf-8", env={"PYTHONIOENCODING": "utf-8"})

    def set_line(self, code, number, line):
        path = self.source / f"{code}.txt"
        lines = path.read_text(encoding="utf-8").splitlines()
        lines[number - 1] = line.format(name=lines[number - 1].partition("=")[0])
        path.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def test_sources_build_in_their_code_pages(self):
        self.set_line("ang", 1, "{name}=" + "a" * 127)
        self.assertEqual(self.build().stderr, "")
        for code, page in (("pol", 1250), ("ang", 1250), ("rus", 1251), ("lit", 1250), ("cs", 1250)):
            built = (self.out / f"Tarvex_lang.{code}").read_bytes()
            self.assertEqual(built.count(b"\n"), 203)
            self.assertNotIn(b"\r", built)
            self.assertEqual(built.decode(f"cp{page}"), (self.source / f"{code}.txt").read_text(encoding="utf-8"))

    def test_bad_line_is_refused_at_its_place_and_nothing_is_written(self):
        for code, line, reason in (
            ("lit", "{name}=Dujų lygis", "code page 1250 lacks ų"),
            ("rus", "{name}=Zamień", "code page 1251 lacks ń"),
            ("cs", "{name}=" + "ř" * 128, "the text has 128 bytes, 127 fit"),
            ("ang", "{name}=a=b", 'the text holds "="'),
            ("ang", "{name}=", "the text is empty; one blank stands for no text"),
            ("pol", "{name}", 'no "=" after the name'),
            ("rus", "Other=a", "the name is Other, in pol.txt it is StatusOnGas"),
        ):
            with self.subTest(reason):
                path = self.source / f"{code}.txt"
                good = path.read_bytes()
                self.set_line(code, 14, line)
                result = self.build()
                path.write_bytes(good)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stderr, f"build '{path}:14': {reason}\n")
                self.assertFalse(self.out.exists())

    def test_wrong_line_count_and_unreadable_source_are_refused(self):
        path = self.source / "cs.txt"
        good = path.read_bytes()
        for content, message in (
            (good + b"More=a\n", f"build '{path}:204': 204 lines, 203 expected\n"),
            (good[: good.rindex(b"\n", 0, -1) + 1], f"build '{path}:202': 202 lines, 203 expected\n"),
            (good + b"\xb3", f"read '{path}:204': not UTF-8\n"),
        ):
            with self.subTest(message):
                path.write_bytes(content)
                result = self.build()
                self.assertEqual((result.returncode, result.stderr), (1, message))


if __name__ == "__main__":
    unittest.main()
