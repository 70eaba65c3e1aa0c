"""The floors: tools/floors.txt, read and asked."""

import re
from dataclasses import dataclass, field

FILE = "tools/floors.txt"
RULES = ("include", "system-header", "direct-call")


@dataclass
class Room:
    path: str  # from the root: "source/frame", or of one file "machine/operations.h"
    words: str
    line: int
    floor: tuple = ()  # (1, 2) for 1.2; empty for a wing without rooms of its own, which is one


@dataclass
class Wing:
    name: str
    words: str
    line: int
    uses: list = field(default_factory=list)
    rooms: list = field(default_factory=list)  # from the ground, as written

    @property
    def path(self):
        return self.name


@dataclass
class Exemption:
    rule: str
    file: str
    target: str
    line: int
    used: bool = False


class House:
    def __init__(self, root):
        self.root = root
        self.wings = {}
        self.exemptions = []
        self._wing_rooms = {}

    def wing_of(self, path):
        return self.wings.get(path.split("/")[0])

    def room_of(self, path):
        """The room of a file: named itself, or by its folder; None for a folder without a floor."""
        wing = self.wing_of(path)
        if wing is None:
            return None
        if not wing.rooms:
            return self._wing_rooms.setdefault(wing.name, Room(wing.name, wing.words, wing.line))
        named = {room.path: room for room in wing.rooms}
        return named.get(path) or named.get(path.rpartition("/")[0])

    def is_exempt(self, rule, path, target=""):
        """Whether an exemption lets this pass; it counts as used then."""
        for exemption in self.exemptions:
            if (exemption.rule, exemption.file) == (rule, path) and is_under(target, exemption.target):
                exemption.used = True
                return True
        return False

    def unused_exemptions(self):
        return [(FILE, each.line, f"the exemption of {each.file} isn't needed any more")
                for each in self.exemptions if not each.used]

    def check_rooms(self, files):
        """Folders without a floor, floors without a folder, and names of other wings that lead nowhere."""
        findings = []
        first_file = {path.rpartition("/")[0]: path for path in reversed(files)}
        for folder, path in first_file.items():
            if self.room_of(path) is None:
                findings.append((path, 1, f"{FILE} doesn't know the folder {folder}"))
        inhabited = {room.path for path in files if (room := self.room_of(path))}
        for wing in self.wings.values():
            for room in wing.rooms or [wing]:
                if room.path not in inhabited:
                    findings.append((FILE, room.line, f"there is no source file in {room.path}"))
            for used in wing.uses:
                if not (self.root / used).exists():
                    findings.append((FILE, wing.line, f"{wing.name} uses {used}, which isn't there"))
        return findings


def is_under(path, folder):
    return path == folder or path.startswith(folder + "/")


WING = re.compile(r"\[(\w+)\] (.+)")
USES = re.compile(r"uses: (.+)")
ROOM = re.compile(r"(\d+(?:\.\d+)?) (\S+) (.+)")
EXEMPTION = re.compile(rf"exempt ({'|'.join(RULES)}) (\S+)(?: -> (\S+))?: (.+)")


def read(root):
    """The house that the floors describe. ValueError, with the line, for what isn't in their form."""
    house = House(root)
    wing = None
    for number, line in logical_lines((root / FILE).read_text(encoding="utf-8")):
        if match := WING.fullmatch(line):
            wing = house.wings[match[1]] = Wing(match[1], match[2], number)
        elif match := EXEMPTION.fullmatch(line):
            house.exemptions.append(Exemption(match[1], match[2], match[3] or "", number))
        elif wing and (match := USES.fullmatch(line)):
            wing.uses = [] if match[1] == "-" else [each.strip() for each in match[1].split(",")]
        elif wing and (match := ROOM.fullmatch(line)):
            add_room(wing, match, number)
        else:
            raise ValueError(f"{FILE}:{number}: neither a wing, a room of one, nor an exemption with a reason: {line}")
    return house


def add_room(wing, match, number):
    floor = tuple(int(part) for part in match[1].split("."))
    path = f"{wing.name}/{match[2]}"
    if any(room.path == path for room in wing.rooms):
        raise ValueError(f"{FILE}:{number}: {path} stands on two floors")
    if wing.rooms and floor < wing.rooms[-1].floor:
        raise ValueError(f"{FILE}:{number}: floor {match[1]} comes after a higher one; they go from the ground up")
    wing.rooms.append(Room(path, match[3], number, floor))


def logical_lines(text):
    """(number, line) of the lines, without comments, an indented one joined to the one before it."""
    lines = []
    for number, line in enumerate(text.split("\n"), 1):
        if line.startswith(" ") and lines:
            lines[-1] = (lines[-1][0], f"{lines[-1][1]} {line.strip()}")
        elif line.strip() and not line.startswith("#"):
            lines.append((number, line.rstrip()))
    return lines
