"""The documents: the drawing of the floors, and paths that must lead somewhere."""

import re
import textwrap
from fnmatch import filter as matching
from itertools import groupby

from .includes import NOT_OURS

ARCHITECTURE = "docs/architecture.md"
BEGIN = "<!-- The floors, drawn by tools/check-house --write from tools/floors.txt -->"
END = "<!-- End of the floors -->"

WIDTH = 100
NAME_WIDTH = 30
# Names that can only be of a file of the tree. Others (.ini, .dll, .inf) are mostly a machine's.
OWN_SUFFIXES = (".c", ".cpp", ".h", ".def", ".md", ".py", ".txt", ".cmake")
# A path is looked for from here; a bare file name anywhere.
FOLDERS = ("", "source", "source/platform", "machine")


def drawing(house):
    """The wings with floors as boxes, the roof on top; then those without, in a list."""
    text = "```\n"
    for wing in house.wings.values():
        if wing.rooms:
            text += row(f"{wing.name}/", words(wing)) + boxes(wing) + "\n"
    for wing in house.wings.values():
        if not wing.rooms:
            text += row(f"{wing.name}/", words(wing))
    return text + "```\n"


def words(wing):
    return f"{wing.words} Uses {', '.join(wing.uses)}." if wing.uses else wing.words


def boxes(wing):
    rule = "+" + "-" * (WIDTH - 2) + "+\n"
    floors = [list(rooms) for _, rooms in groupby(wing.rooms, key=lambda room: room.floor[0])]
    text = rule
    for floor in reversed(floors):
        for room in sorted(floor, key=lambda room: room.floor, reverse=True):
            text += row(room.path[len(wing.name) + 1:], room.words, "| ", " |")
        text += rule
    return text


def row(name, words, left="", right=""):
    """A name and its words beside it, over as many lines as they need."""
    room = WIDTH - len(left) - len(right)
    if len(name) >= NAME_WIDTH:
        lines = [name] + [" " * NAME_WIDTH + line for line in textwrap.wrap(words, room - NAME_WIDTH)]
    else:
        lines = textwrap.wrap(words, room, initial_indent=name.ljust(NAME_WIDTH), subsequent_indent=" " * NAME_WIDTH)
    return "".join(f"{left}{line.ljust(room)}{right}".rstrip() + "\n" for line in lines)


def write_drawing(root, house):
    path = root / ARCHITECTURE
    before, _, after = parts_of(path.read_text(encoding="utf-8"))
    path.write_text(f"{before}{BEGIN}\n{drawing(house)}{END}{after}", encoding="utf-8")


def parts_of(text):
    """What stands before the drawing, the drawing, and what stands after it."""
    before, begin, rest = text.partition(BEGIN)
    block, end, after = rest.partition(END)
    if not begin or not end:
        raise ValueError(f"{ARCHITECTURE} lacks the marks of the drawing: {BEGIN} and {END}")
    return before, block, after


def check(root, house, files):
    return check_drawing(root, house) + check_paths(root, files)


def check_drawing(root, house):
    try:
        text = (root / ARCHITECTURE).read_text(encoding="utf-8")
        before, block, _ = parts_of(text)
    except (OSError, ValueError) as error:
        return [(ARCHITECTURE, 1, str(error))]
    if block != "\n" + drawing(house):
        line = before.count("\n") + 1
        return [(ARCHITECTURE, line, "the drawing isn't that of the floors; tools/check-house --write draws it anew")]
    return []


def check_paths(root, files):
    """Paths between backticks, and targets of links, that lead nowhere. Examples in fenced blocks are left out."""
    names = {path.rpartition("/")[2] for path in files}
    findings = []
    for document in [root / "README.md", *sorted((root / "docs").glob("*.md"))]:
        if not document.is_file():
            continue
        for number, line in enumerate(without_fences(document.read_text(encoding="utf-8")).split("\n"), 1):
            wrong = [word for word in re.findall(r"`([^`]+)`", line) if not is_there(root, word, names)]
            wrong += [link for link in re.findall(r"\]\(([^)#:]+)[^):]*\)", line) if not (document.parent / link).exists()]
            findings += [(document.relative_to(root).as_posix(), number, f"{word} is nowhere") for word in wrong]
    return findings


def without_fences(text):
    return re.sub(r"^```.*?^```", lambda match: "\n" * match[0].count("\n"), text, flags=re.DOTALL | re.MULTILINE)


def is_there(root, word, names):
    """Whether what looks like a path of the tree is one; anything else passes."""
    first = word.split("/")[0]
    if first in NOT_OURS or not re.fullmatch(r"\w[\w.*/-]*", word):
        return True
    own_suffix = word.endswith(OWN_SUFFIXES)
    if "/" not in word:
        return not own_suffix or matching(names, word) or (root / word).exists()
    if not (own_suffix or word.endswith("/") or (root / first).is_dir()):
        return True
    return any(any((root / folder).glob(word.rstrip("/"))) for folder in FOLDERS)
