"""tools/check-house on small made-up trees: each rule is broken once, and the tree with nothing wrong passes."""

import contextlib
import io
import subprocess
import sys
import tempfile
import unittest
from importlib.machinery import SourceFileLoader
from importlib.util import module_from_spec, spec_from_loader
from pathlib import Path

HOUSE = Path(__file__).resolve().parent.parent.parent
CHECK = HOUSE / "tools" / "check-house"


def load_check():
    """The program as a module: a process for each of its many runs would take longer than the runs."""
    sys.dont_write_bytecode = True
    loader = SourceFileLoader("check_house", str(CHECK))
    module = module_from_spec(spec_from_loader("check_house", loader))
    loader.exec_module(module)
    return module


check_house = load_check()

FLOORS = """# A small house.
[source] The library.
uses: -
1.0 platform/operations The list.
1.0 platform/windows/system_headers.h The system's own headers.
1.1 platform The table of operations.
1.2 platform/windows The binding.
2 frame The public header
  and the log.
3 inf Sections.
3 spooler Records.
4 table The table.

[machine] The machine.
uses: source/platform
0 operations.h The declarations.
1 base Texts.
2 files Files.
3 binding.cpp The roof.

[cli] The tool.
uses: source/frame/pikel.h, source/platform, machine/files

[tests] The tests.
uses: source, machine

exempt include source/table/module.cpp -> machine/files: the module
  begins on a machine
exempt system-header source/frame/pikel.h: stands on the system's own
"""

GOOD = {
    "tools/floors.txt": FLOORS,
    "docs/architecture.md": "# Architecture\n"
                            "<!-- The floors, drawn by tools/check-house --write from tools/floors.txt -->\n"
                            "<!-- End of the floors -->\nRead `frame/log.h`.\n",
    "README.md": "`source/frame/pikel.h`, `log.h`, `operations/*.def`, `windows/`, `machine.ini`, `pikel.dll`,\n"
                 "`build/native/bin/x.h`, `/n\"PRINTER\"`, [more](docs/architecture.md), [far](https://example.org/x)\n"
                 "```\n`no/such.cpp`\n```\n",
    "source/platform/operations/all.def": '#include "platform/operations/spooler.def"\n',
    "source/platform/operations/spooler.def": "// A printer's handle.\n"
                                              "OPERATION(BOOL, OpenPrinterA, (LPSTR pName), ReturnsFalse)\n"
                                              "LOOKED_UP(\"m\", BOOL, AddPrinterDriverExA, (LPSTR pName), ReturnsFalse)\n",
    "source/platform/windows/system_headers.h": "#include <windows.h>\n",
    "source/platform/windows/binding.cpp": '#include "platform/platform.h"\n',
    "source/platform/types.h": '#include "platform/windows/system_headers.h"\n',
    "source/platform/platform.h": '#include "types.h"\n#include "platform/operations/all.def"\n',
    "source/frame/pikel.h": "#include <windows.h>\n",
    "source/frame/log.h": '#include "platform.h"\n',
    "source/frame/log.cpp": '#include "frame/log.h"\n',
    "source/inf/section.cpp": '#include "frame/log.h"\n'
                              '// OpenPrinterA(name) in a comment, "spooler/records.h" too\n'
                              'const char* kText = "OpenPrinterA(\\"x\\")";\n'
                              "bool Open() { return Platform().OpenPrinterA(name) && MyOpenPrinterA(name); }\n",
    "source/spooler/records.h": '#include "frame/pikel.h"\n',
    "source/table/module.cpp": '#include "machine/files/files.h"\n#include "spooler/records.h"\n',
    "machine/operations.h": '#include "platform/operations/all.def"\n',
    "machine/base/text.h": "",
    "machine/files/files.h": '#include "machine/base/text.h"\n#include "machine/operations.h"\n',
    "machine/binding.cpp": '#include "machine/files/files.h"\n#include "platform/platform.h"\n',
    "cli/main.cpp": '#include "view.h"\n#include "frame/pikel.h"\n#include "machine/files/files.h"\n',
    "cli/view.h": '#include "platform/platform.h"\n',
    "tests/frame/log_test.cpp": '#include "support/test.h"\n#include "frame/log.h"\n#include "machine/base/text.h"\n',
    "tests/support/test.h": "",
}


class MadeUpHouse(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for path, text in GOOD.items():
            self.write(path, text)
        self.assertEqual((0, "", ""), self.run_check("--write"))

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text, encoding="utf-8")

    def append(self, path, text):
        with open(self.root / path, "a", encoding="utf-8") as file:
            file.write(text)

    def replace(self, path, old, new):
        text = (self.root / path).read_text(encoding="utf-8")
        self.assertIn(old, text)
        self.write(path, text.replace(old, new))

    def run_check(self, *arguments):
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            code = check_house.main(["--root", str(self.root), *arguments])
        return code, out.getvalue(), err.getvalue()

    def assert_found(self, *findings):
        """Just these lines are told, and the exit code says so."""
        code, out, err = self.run_check()
        self.assertEqual(("", sorted(findings), 1), (err, sorted(out.splitlines()), code))


class Includes(MadeUpHouse):
    def test_nothing_is_found_in_a_good_house(self):
        self.assertEqual((0, "", ""), self.run_check())

    def test_an_include_upwards_is_found(self):
        self.append("source/frame/log.h", "\n#  include \"inf/section.h\"\n")
        self.write("source/inf/section.h", "")
        self.assert_found("source/frame/log.h:3: source/frame looks up to source/inf: source/inf/section.h",
                          "source/frame/log.h:3: circle of rooms source/frame -> source/inf -> source/frame: "
                          "source/frame/log.h:3 includes source/inf/section.h, "
                          "source/inf/section.cpp:1 includes source/frame/log.h",
                          "source/frame/log.h:3: circle of files source/frame/log -> source/inf/section -> source/frame/log: "
                          "source/frame/log.h:3 includes source/inf/section.h, "
                          "source/inf/section.cpp:1 includes source/frame/log.h")

    def test_an_include_of_a_room_on_the_same_floor_is_found(self):
        self.append("source/inf/section.cpp", '#include "spooler/records.h"\n')
        self.assert_found("source/inf/section.cpp:5: source/inf looks aside to source/spooler: source/spooler/records.h")

    def test_an_include_of_a_part_of_a_room_that_lies_above_is_found(self):
        self.write("source/platform/windows/binding.h", "")
        self.append("source/platform/types.h", '#include "windows/binding.h"\n')
        code, out, _ = self.run_check()
        self.assertEqual(1, code)
        self.assertIn("source/platform/types.h:2: source/platform looks up to source/platform/windows: "
                      "source/platform/windows/binding.h", out)

    def test_an_include_of_the_roof_is_found(self):
        self.write("machine/binding.h", "")
        self.replace("tools/floors.txt", "3 binding.cpp The roof.", "3 binding.cpp The roof.\n3 binding.h The roof's edge.")
        self.append("machine/base/text.h", '#include "machine/binding.h"\n')
        self.run_check("--write")
        self.assert_found("machine/base/text.h:1: machine/base looks up to machine/binding.h: machine/binding.h",
                          *self.circle_lines())

    def circle_lines(self):
        return [line for line in self.run_check()[1].splitlines() if "circle of" in line]

    def test_the_machine_may_not_know_the_library(self):
        self.append("machine/files/files.h", '#include "frame/log.h"\n')
        self.assert_found("machine/files/files.h:3: machine/ may not use source/frame/log.h")

    def test_the_library_may_not_know_the_machine_but_for_the_exempt_file(self):
        self.append("source/table/table.cpp", '#include "machine/files/files.h"\n')
        self.append("source/table/module.cpp", '#include "machine/base/text.h"\n')
        self.assert_found("source/table/table.cpp:1: source/ may not use machine/files/files.h",
                          "source/table/module.cpp:3: source/ may not use machine/base/text.h")

    def test_the_tool_may_use_what_it_is_given_alone(self):
        self.append("cli/main.cpp", '#include "frame/log.h"\n#include "machine/base/text.h"\n')
        self.assert_found("cli/main.cpp:4: cli/ may not use source/frame/log.h",
                          "cli/main.cpp:5: cli/ may not use machine/base/text.h")

    def test_what_a_wing_may_use_is_a_whole_folder_not_the_beginning_of_a_name(self):
        self.replace("tools/floors.txt", "2 files Files.", "2 files Files.\n2 files_of_old Older files.")
        self.run_check("--write")
        self.write("machine/files_of_old/old.h", "")
        self.append("cli/view.h", '#include "machine/files_of_old/old.h"\n')
        self.assert_found("cli/view.h:2: cli/ may not use machine/files_of_old/old.h")

    def test_an_include_that_leads_nowhere_is_found(self):
        self.append("source/inf/section.cpp", '#include "frame/gone.h"\n')
        self.assert_found('source/inf/section.cpp:5: "frame/gone.h" is nowhere')

    def test_a_header_of_the_tests_is_nowhere_for_the_library(self):
        self.append("source/inf/section.cpp", '#include "support/test.h"\n')
        self.assert_found('source/inf/section.cpp:5: "support/test.h" is nowhere')

    def test_includes_in_comments_are_none(self):
        self.append("source/inf/section.cpp", '/*\n#include "frame/gone.h"\n*/\n// #include "frame/gone.h"\n')
        self.assertEqual((0, "", ""), self.run_check())

    def test_a_line_below_a_long_comment_is_told_by_its_number(self):
        self.append("source/inf/section.cpp", '/* One,\n * two\n */\n#include "frame/gone.h"\nauto a = OpenPrinterA(name);\n')
        self.assert_found('source/inf/section.cpp:8: "frame/gone.h" is nowhere',
                          "source/inf/section.cpp:9: OpenPrinterA called without Platform()")


class Circles(MadeUpHouse):
    def test_a_circle_of_three_files_is_found_through_their_sources(self):
        for name, other in (("a", "b"), ("b", "c"), ("c", "a")):
            self.write(f"source/inf/{name}.h", "")
            self.write(f"source/inf/{name}.cpp", f'#include "inf/{name}.h"\n#include "inf/{other}.h"\n')
        self.assert_found("source/inf/a.cpp:2: circle of files source/inf/a -> source/inf/b -> source/inf/c -> source/inf/a: "
                          "source/inf/a.cpp:2 includes source/inf/b.h, source/inf/b.cpp:2 includes source/inf/c.h, "
                          "source/inf/c.cpp:2 includes source/inf/a.h")

    def test_a_way_that_only_leads_to_a_circle_is_not_told(self):
        self.write("source/inf/a.h", '#include "inf/b.h"\n')
        self.write("source/inf/b.h", '#include "inf/c.h"\n')
        self.write("source/inf/c.h", '#include "inf/b.h"\n')
        self.assert_found("source/inf/b.h:1: circle of files source/inf/b -> source/inf/c -> source/inf/b: "
                          "source/inf/b.h:1 includes source/inf/c.h, source/inf/c.h:1 includes source/inf/b.h")

    def test_a_circle_of_rooms_is_found_where_no_files_stand_in_one(self):
        self.append("source/inf/section.cpp", '#include "spooler/records.h"\n')
        self.write("source/inf/names.h", "")
        self.write("source/spooler/read.cpp", '#include "inf/names.h"\n')
        self.assert_found("source/inf/section.cpp:5: source/inf looks aside to source/spooler: source/spooler/records.h",
                          "source/spooler/read.cpp:1: source/spooler looks aside to source/inf: source/inf/names.h",
                          "source/inf/section.cpp:5: circle of rooms source/inf -> source/spooler -> source/inf: "
                          "source/inf/section.cpp:5 includes source/spooler/records.h, "
                          "source/spooler/read.cpp:1 includes source/inf/names.h")


class Floors(MadeUpHouse):
    def test_a_folder_without_a_floor_is_found_once(self):
        self.write("machine/network/browse.cpp", "")
        self.write("machine/network/shares.cpp", '#include "machine/base/text.h"\n')
        self.assert_found("machine/network/browse.cpp:1: tools/floors.txt doesn't know the folder machine/network")

    def test_a_folder_inside_a_room_needs_a_floor_too(self):
        self.write("machine/files/disk/disk.cpp", "")
        self.assert_found("machine/files/disk/disk.cpp:1: tools/floors.txt doesn't know the folder machine/files/disk")

    def test_a_wing_without_an_entry_is_found(self):
        self.write("annex/main.c", "")
        self.assert_found("annex/main.c:1: tools/floors.txt doesn't know the folder annex")

    def test_a_floor_without_a_folder_is_found(self):
        self.replace("tools/floors.txt", "4 table", "4 cellar Wine.\n4 table")
        self.run_check("--write")
        self.assert_found("tools/floors.txt:12: there is no source file in source/cellar")

    def test_a_use_of_what_is_not_there_is_found(self):
        self.replace("tools/floors.txt", "machine/files\n\n", "machine/files, machine/attic\n\n")
        self.run_check("--write")
        self.assert_found("tools/floors.txt:21: cli uses machine/attic, which isn't there")

    def test_an_exemption_without_a_use_is_found(self):
        self.write("source/table/module.cpp", "")
        self.write("source/frame/pikel.h", "")
        self.assert_found("tools/floors.txt:27: the exemption of source/table/module.cpp isn't needed any more",
                          "tools/floors.txt:29: the exemption of source/frame/pikel.h isn't needed any more")

    def test_an_exempt_include_makes_no_circle(self):
        self.write("source/spooler/read.cpp", '#include "inf/names.h"\n')
        self.write("source/inf/names.h", '#include "spooler/records.h"\n')
        self.append("tools/floors.txt", "exempt include source/spooler/read.cpp -> source/inf/names.h: a reason\n"
                                        "exempt include source/inf/names.h -> source/spooler: a reason\n")
        self.assertEqual((0, "", ""), self.run_check())

    def test_what_is_not_in_the_form_of_the_floors_ends_the_check(self):
        for line, told in (("exempt include source/inf/section.cpp -> source/spooler:", "an exemption with a reason"),
                           ("exempt everything source/inf/section.cpp: why not", "an exemption with a reason"),
                           ("1 attic Below what stands before it.\n", "neither a wing"),
                           ("[annex] Rooms.\n2 upper Above.\n1 lower Below.", "they go from the ground up"),
                           ("[annex] Rooms.\n1 one Once.\n2 one Twice.", "stands on two floors")):
            with self.subTest(line):
                self.write("tools/floors.txt", line if line.endswith("\n") else FLOORS + line + "\n")
                code, out, err = self.run_check()
                self.assertEqual((2, ""), (code, out))
                self.assertIn(told, err)

    def test_missing_floors_end_the_check(self):
        (self.root / "tools/floors.txt").unlink()
        code, out, err = self.run_check()
        self.assertEqual((2, ""), (code, out))
        self.assertIn("floors.txt", err)


class Platform(MadeUpHouse):
    def test_an_operation_called_past_the_platform_is_found(self):
        self.append("source/inf/section.cpp", "bool Past() { return ::OpenPrinterA(name); }\n"
                                              "bool Through() { return Platform()\n    .OpenPrinterA(name); }\n")
        self.assert_found("source/inf/section.cpp:5: OpenPrinterA called without Platform()")

    def test_the_platform_itself_and_the_machine_may_name_operations(self):
        for path in ("source/platform/current.cpp", "machine/files/open.cpp"):
            self.write(path, "bool Open() { return OpenPrinterA(name); }\n")
        self.assertEqual((0, "", ""), self.run_check())

    def test_a_function_that_is_looked_up_may_bear_its_name(self):
        self.append("source/inf/section.cpp", "bool Add() { return AddPrinterDriverExA(name); }\n")
        self.assertEqual((0, "", ""), self.run_check())

    def test_a_header_of_the_system_is_found_above_the_binding(self):
        self.append("source/inf/section.cpp", "#include <winspool.h>\n")
        self.append("source/platform/platform.h", "#include <sys/stat.h>\n#include <string>\n")
        self.assert_found("source/inf/section.cpp:5: a header of the system: <winspool.h>",
                          "source/platform/platform.h:3: a header of the system: <sys/stat.h>")

    def test_a_direct_call_can_be_exempt(self):
        self.append("source/inf/section.cpp", "bool Past() { return OpenPrinterA(name); }\n")
        self.append("tools/floors.txt", "exempt direct-call source/inf/section.cpp: runs before there is a table\n")
        self.assertEqual((0, "", ""), self.run_check())


class Documents(MadeUpHouse):
    def test_the_drawing_has_the_roof_on_top_and_every_word_of_the_floors(self):
        code, drawing, _ = self.run_check("--draw")
        self.assertEqual(0, code)
        names = [line.split()[1] for line in drawing.splitlines() if line.startswith("| ") and line[2] != " "]
        self.assertEqual(["table", "inf", "spooler", "frame", "platform/windows", "platform", "platform/operations",
                          "platform/windows/system_headers.h", "binding.cpp", "files", "base", "operations.h"], names)
        self.assertIn("| frame                         The public header and the log.", drawing)
        self.assertTrue(all(len(line) <= 100 for line in drawing.splitlines()))

    def test_a_drawing_of_other_floors_is_found_and_drawn_anew(self):
        self.replace("tools/floors.txt", "Records.", "Records of the spooler.")
        self.assert_found("docs/architecture.md:2: the drawing isn't that of the floors; "
                          "tools/check-house --write draws it anew")
        self.assertEqual((0, "", ""), self.run_check("--write"))
        self.assertEqual((0, "", ""), self.run_check())
        self.assertIn("Read `frame/log.h`.", (self.root / "docs/architecture.md").read_text(encoding="utf-8"))

    def test_a_missing_mark_of_the_drawing_is_found(self):
        self.replace("docs/architecture.md", "<!-- End of the floors -->", "")
        code, out, _ = self.run_check()
        self.assertEqual(1, code)
        self.assertIn("docs/architecture.md:1: docs/architecture.md lacks the marks of the drawing", out)
        self.assertEqual(2, self.run_check("--write")[0])

    def test_paths_and_links_that_lead_nowhere_are_found(self):
        self.write("docs/adding.md", "Take `source/frame/log.h`,\n`gone.cpp`, `old/place.cpp`, `frame/` or `old/`.\n"
                                     "See `tests/gone`, `operations/*.txt` and [there](gone.md#part).\n")
        self.assert_found("docs/adding.md:2: gone.cpp is nowhere", "docs/adding.md:2: old/ is nowhere",
                          "docs/adding.md:2: old/place.cpp is nowhere", "docs/adding.md:3: gone.md is nowhere",
                          "docs/adding.md:3: operations/*.txt is nowhere", "docs/adding.md:3: tests/gone is nowhere")


class Program(MadeUpHouse):
    def run_program(self, *arguments):
        done = subprocess.run([CHECK, *arguments], capture_output=True, text=True)
        return done.returncode, done.stdout

    def test_the_exit_code_tells_how_it_went(self):
        self.assertEqual((0, ""), self.run_program("--root", self.root))
        self.write("annex/main.c", "")
        self.assertEqual((1, "annex/main.c:1: tools/floors.txt doesn't know the folder annex\n"),
                         self.run_program("--root", self.root))
        self.assertEqual((2, ""), self.run_program("--unknown"))


class RealHouse(unittest.TestCase):
    def test_its_drawing_is_that_of_its_floors(self):
        done = subprocess.run([sys.executable, CHECK, "--draw"], capture_output=True, text=True, check=True)
        self.assertIn("-->\n" + done.stdout + "<!--", (HOUSE / "docs/architecture.md").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
