"""The sessions that both programs are led through: rows of a telling name and an action.

The actions are the `do_` words of parity_actions.py: `bar` and `item` are entries of the menu bar and of the open menu
by their place, a number is a control's id from src/resources/Ids.h. A row whose name begins with "polls" also compares
what goes over the line while nobody does anything.
"""

from dataclasses import dataclass


@dataclass
class Session:
    name: str
    family: int
    language: str
    steps: list


SESSIONS = [
    Session("slice", 4, "ang", [
        ("polls of Readings", "wait"),
        ("open Configuration", "bar 5"),
        ("polls of Configuration", "wait"),
        ("drop the Lambda type", "click 1003"),
        ("choose the second", "entry 1"),
        ("open Options", "bar 6"),
        ("open Oscilloscope", "bar 9"),
        ("open Diagram", "bar 7"),
        ("open Reset", "bar 8"),
        ("back to Readings", "bar 4"),
        ("close", "close"),
    ]),
]
