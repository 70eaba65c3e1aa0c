"""The source files, what they include, and whether they may."""

import re
from dataclasses import dataclass
from pathlib import Path

from .floors import is_under

SUFFIXES = (".c", ".cpp", ".h", ".def")
NOT_OURS = ("build",)  # what a build makes, and no path of ours begins with
# Where the builds look for a header that isn't beside the file that includes it.
FOLDERS = ("source", "source/platform", "")
# Clients find the public header by its bare name, and each its own headers.
CLIENT_FOLDERS = ("source/frame", "tests")

QUOTED = re.compile(r'\s*#\s*include\s*"([^"]+)"')
# Comments go; texts and characters are matched so that what looks like a comment in them stays.
COMMENT_OR_TEXT = re.compile(r"""//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"|(?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)*'""",
                             re.DOTALL)


@dataclass
class Include:
    path: str
    line: int
    name: str
    target: str  # from the root; None for a name that leads nowhere
    exempt: bool = False


class Tree:
    """The source files below the root, in order, with their includes; `code` holds each one's text without comments."""

    def __init__(self, root):
        self.root = root.resolve()
        self.code = {}
        for folder in sorted(self.root.iterdir()):
            if folder.is_dir() and not folder.name.startswith(".") and folder.name not in NOT_OURS:
                for path in sorted(folder.rglob("*")):
                    if path.suffix in SUFFIXES and path.is_file() and not path.is_symlink():
                        text = path.read_text(encoding="utf-8", errors="replace")
                        self.code[path.relative_to(self.root).as_posix()] = without_comments(text)
        self.files = list(self.code)
        self.includes = [each for path in self.files for each in self._includes_of(path)]

    def _includes_of(self, path):
        for number, line in enumerate(self.code[path].split("\n"), 1):
            if match := QUOTED.match(line):
                yield Include(path, number, match[1], self._find(path, match[1]))

    def _find(self, path, name):
        folders = [Path(path).parent.as_posix(), *FOLDERS]
        if path.split("/")[0] not in ("source", "machine"):
            folders += CLIENT_FOLDERS
        for folder in folders:
            candidate = self.root / folder / name
            if candidate.is_file():
                return candidate.resolve().relative_to(self.root).as_posix()
        return None


def without_comments(text, texts_too=False):
    """The text with its lines kept, without comments and, if asked for, with every string and character empty."""
    def replaced(match):
        found = match[0]
        if found.startswith(("//", "/*")):
            return "\n" * found.count("\n")
        return '""' + "\n" * found.count("\n") if texts_too else found
    return COMMENT_OR_TEXT.sub(replaced, text)


def check(tree, house):
    """Includes that lead nowhere, up, aside, or into a wing that isn't for the file; marks those that are exempt."""
    findings = []
    for each in tree.includes:
        trouble = fault(each, house)
        if trouble is None:
            continue
        if each.target and house.is_exempt("include", each.path, each.target):
            each.exempt = True
        else:
            findings.append((each.path, each.line, trouble))
    return findings


def fault(include, house):
    """What is wrong with an include; None for nothing, or where the folder's missing floor is the finding."""
    if include.target is None:
        return f'"{include.name}" is nowhere'
    here, there = house.room_of(include.path), house.room_of(include.target)
    if here is None or there is None or here is there:
        return None
    wing = house.wing_of(include.path)
    if wing is not house.wing_of(include.target):
        if any(is_under(include.target, used) for used in wing.uses):
            return None
        return f"{wing.name}/ may not use {include.target}"
    if there.floor < here.floor:
        return None
    direction = "looks aside to" if there.floor == here.floor else "looks up to"
    return f"{here.path} {direction} {there.path}: {include.target}"
