#!/usr/bin/env python3
"""Builds the language files that the program reads from the UTF-8 sources beside this script.

The program finds a text by its line alone, in the language's code page, and keeps at most 127 bytes of it. An empty
text or a second "=" would move or cut texts without a word, so every such slip ends the build here.
"""

import sys
from pathlib import Path

CODE_PAGES = {"pol": "cp1250", "ang": "cp1250", "rus": "cp1251", "lit": "cp1250", "cs": "cp1250"}
LINE_COUNT = 203
LONGEST_TEXT = 127


def read_source(path, code_page, errors):
    """Returns the names and the built bytes of one source; adds to errors what is wrong with it."""
    try:
        lines = path.read_text(encoding="utf-8").split("\n")
    except OSError as error:
        errors.append(f"read '{path}': {error.strerror}")
        return [], b""
    except UnicodeDecodeError as error:
        line = error.object[: error.start].count(b"\n") + 1
        errors.append(f"read '{path}:{line}': not UTF-8")
        return [], b""

    if lines[-1] == "":
        lines.pop()
    if len(lines) != LINE_COUNT:
        errors.append(f"build '{path}:{len(lines)}': {len(lines)} lines, {LINE_COUNT} expected")

    names = []
    for number, line in enumerate(lines, start=1):
        name, separator, text = line.partition("=")
        names.append(name)
        reason = refusal(separator, text, code_page)
        if reason:
            errors.append(f"build '{path}:{number}': {reason}")
    return names, ("\n".join(lines) + "\n").encode(code_page, errors="replace")


def refusal(separator, text, code_page):
    """Returns why the program could not show this text as it stands, or None."""
    if not separator:
        return 'no "=" after the name'
    if not text:
        return "the text is empty; one blank stands for no text"
    if "=" in text:
        return 'the text holds "="'
    lacking = [letter for letter in text if not letter.encode(code_page, errors="ignore")]
    if lacking:
        return f"code page {code_page[2:]} lacks {', '.join(lacking)}"
    length = len(text.encode(code_page))
    if length > LONGEST_TEXT:
        return f"the text has {length} bytes, {LONGEST_TEXT} fit"
    return None


def compare_names(path, names, first_path, first_names, errors):
    for number, (name, first_name) in enumerate(zip(names, first_names), start=1):
        if name != first_name:
            errors.append(f"build '{path}:{number}': the name is {name}, in {first_path.name} it is {first_name}")
            return


def build(source_dir, out_dir):
    """Writes all five files, or none and returns what is wrong."""
    errors = []
    paths = {code: source_dir / f"{code}.txt" for code in CODE_PAGES}
    sources = {code: read_source(paths[code], page, errors) for code, page in CODE_PAGES.items()}
    for code in CODE_PAGES:
        compare_names(paths[code], sources[code][0], paths["pol"], sources["pol"][0], errors)
    if errors:
        return errors

    try:
        out_dir.mkdir(parents=True, exist_ok=True)
        for code, (_, content) in sources.items():
            (out_dir / f"Tarvex_lang.{code}").write_bytes(content)
    except OSError as error:
        errors.append(f"write '{error.filename}': {error.strerror}")
    return errors


def main(arguments):
    if len(arguments) != 2:
        print("usage: build_languages.py SOURCE_DIR OUT_DIR", file=sys.stderr)
        return 2
    errors = build(Path(arguments[0]), Path(arguments[1]))
    for error in errors:
        print(error, file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
