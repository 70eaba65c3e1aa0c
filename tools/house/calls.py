"""What stands on the platform goes through it: no operation called past the table, no header of the system."""

import re

from .floors import is_under
from .includes import without_comments

LIBRARY = "source"
PLATFORM = "source/platform"
OPERATIONS = "source/platform/operations"
BINDING = "source/platform/windows"

OPERATION = re.compile(r"^OPERATION\([^,]+, *(\w+),", re.MULTILINE)
SYSTEM_HEADER = re.compile(r"^\s*#\s*include\s*<((?:windows|winspool|winsvc|setupapi|shlwapi|shlobj|winnetwk|unistd|fcntl|dlfcn)\b"
                           r"[^>]*|sys/[^>]*)>", re.MULTILINE)


def check(tree, house):
    names = [name for path, code in tree.code.items() if is_under(path, OPERATIONS) for name in OPERATION.findall(code)]
    call = re.compile(r"(Platform\(\)\s*\.\s*)?\b(" + "|".join(sorted(names)) + r")\s*\(") if names else None
    findings = []
    for path, code in tree.code.items():
        if not is_under(path, LIBRARY):
            continue
        if not is_under(path, BINDING):
            found = [(match.start(1), f"a header of the system: <{match[1]}>") for match in SYSTEM_HEADER.finditer(code)]
            findings += unless_exempt(house, "system-header", path, code, found)
        if call and not is_under(path, PLATFORM):
            bare = without_comments(code, texts_too=True)
            found = [(match.start(2), f"{match[2]} called without Platform()") for match in call.finditer(bare) if not match[1]]
            findings += unless_exempt(house, "direct-call", path, bare, found)
    return findings


def unless_exempt(house, rule, path, code, found):
    if not found or house.is_exempt(rule, path):
        return []
    return [(path, code.count("\n", 0, place) + 1, text) for place, text in found]
