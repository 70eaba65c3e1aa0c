"""The table of faults: tests/mutants/**/*.txt.

A file holds the faults of one folder of the tree; its path below tests/mutants/ names the folder.

    file source/frame/log.cpp        the file that the faults below are planted in
    tests test_frame                 the programs that should notice them, in the order in which they are tried

    level-inclusive: the detail level starts one too low
    - logLevel > 1
    + logLevel >= 1

"-" lines are what stands in the file, "+" lines what is planted in its place; a fault may have several of either, and no
"+" line plants nothing. What stands must match exactly once; blanks and line breaks match each other, so that a
reformatted file still matches. Between the head and the lines may stand:

    tests test_frame test_cli:Log*   programs for this fault alone; a test filter may follow a program's name
    survives REASON                  why no test can tell this fault
"""

import re
from dataclasses import dataclass, field


class TableError(Exception):
    """Everything that is wrong with the table, a line each."""

    def __init__(self, lines):
        super().__init__("\n".join(lines))


@dataclass
class Fault:
    """One fault of the table."""

    id: str
    folder: str
    file: str
    tests: list
    mistake: str
    where: str
    survives: str = ""
    stands: list = field(default_factory=list)
    planted: list = field(default_factory=list)

    def is_named(self, name):
        return name in (self.id, self.folder, self.file) or self.folder.startswith(name.rstrip("/") + "/")

    def pattern(self):
        return re.compile(r"\s+".join(re.escape(word) for word in " ".join(self.stands).split()))

    def plant(self, text):
        """The file's text with the fault in it."""
        return self.pattern().sub(lambda _: "\n".join(self.planted), text, count=1)


HEAD = re.compile(r"([a-z0-9-]+): (\S.*)")


def read_file(path, folder, where):
    """The faults of one file of the table."""
    faults, errors = [], []
    file, tests, fault = "", [], None
    for number, line in enumerate(path.read_text().split("\n"), 1):
        word, _, rest = line.partition(" ")
        rest = rest.strip()
        head = HEAD.fullmatch(line)
        if not line.strip():
            fault = None
        elif line.startswith("#"):
            continue
        elif head:
            fault = Fault(f"{folder}/{head[1]}", folder, file, list(tests), head[2], f"{where}:{number}")
            faults.append(fault)
        elif word == "file" and fault is None:
            file = rest
        elif word == "tests":
            if fault:
                fault.tests = rest.split()
            else:
                tests = rest.split()
        elif word == "survives" and fault and rest:
            fault.survives = rest
        elif word == "-" and fault:
            fault.stands.append(rest)
        elif word == "+" and fault:
            fault.planted.append(rest)
        else:
            errors.append(f"{where}:{number}: not understood: {line}")
    return faults, errors


def read(root):
    """All faults. Raises TableError."""
    base = root / "tests" / "mutants"
    faults, errors = [], []
    for path in sorted(base.rglob("*.txt")):
        folder = path.relative_to(base).with_suffix("").as_posix()
        more, wrong = read_file(path, folder, path.relative_to(root).as_posix())
        faults += more
        errors += wrong
    seen = {}
    for fault in faults:
        if fault.id in seen:
            errors.append(f"{fault.where}: {fault.id} stands at {seen[fault.id]} already")
        seen[fault.id] = fault.where
        if not fault.file or not fault.tests or not "".join(fault.stands):
            errors.append(f"{fault.where}: {fault.id} needs a file, tests and a line of what stands there")
        elif fault.stands == fault.planted:
            errors.append(f"{fault.where}: {fault.id} plants what stands there")
    if errors:
        raise TableError(errors)
    return faults


def check(root, faults):
    """Raises TableError unless every fault stands exactly once in its file."""
    texts, errors = {}, []
    for fault in faults:
        path = root / fault.file
        if fault.file not in texts:
            texts[fault.file] = path.read_text() if path.is_file() else None
        text = texts[fault.file]
        if text is None:
            errors.append(f"{fault.where}: {fault.id}: there is no {fault.file}")
            continue
        count = len(fault.pattern().findall(text))
        if count != 1:
            errors.append(f"{fault.where}: {fault.id}: stands {count} times in {fault.file}")
    if errors:
        raise TableError(errors)
