#!/usr/bin/env python3
"""Tests of tools/mutate: the table, the choice of faults, and the report. Nothing is built."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools"))

from mutation import report, run, table, workshop  # noqa: E402

TABLE = """# What the folder is.
file source/a.cpp
tests test_a

level-inclusive: the level starts one too low
- level > 1
+ level >= 1

close-left-out: a file stays open
tests test_b test_c:Close*
survives the process ends right behind it
- Close();
"""

SOURCE = """if (level >
        1) {
    Close();
}
"""


class FakeWorkshop:
    """Notes what is tried. A planted fault is noticed by the programs that are named, with their filters."""

    def __init__(self, noticing, compiles=True, passes=True):
        self.noticing = noticing
        self.compiles = compiles
        self.passes = passes
        self.is_planted = False
        self.tested = []

    def restore(self):
        self.is_planted = False

    def plant(self, fault):
        self.is_planted = True

    def build(self, program):
        if self.is_planted and not self.compiles:
            raise workshop.BuildError("no such name")

    def test(self, program, test_filter, timeout):
        self.tested.append((program, test_filter, self.is_planted))
        fails = (program, test_filter) in self.noticing if self.is_planted else not self.passes
        return "A.B" if fails else None, 1.0


class MutateTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("tests/mutants/a.txt", TABLE)
        self.write("source/a.cpp", SOURCE)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def errors(self, text, source=SOURCE):
        """What is wrong with a table."""
        self.write("tests/mutants/a.txt", text)
        self.write("source/a.cpp", source)
        with self.assertRaises(table.TableError) as caught:
            table.check(self.root, table.read(self.root))
        return str(caught.exception)

    def test_a_table_gives_its_faults_with_their_programs(self):
        first, second = table.read(self.root)
        self.assertEqual((first.id, first.file, first.tests), ("a/level-inclusive", "source/a.cpp", ["test_a"]))
        self.assertEqual((first.mistake, first.survives), ("the level starts one too low", ""))
        self.assertEqual((second.tests, second.survives), (["test_b", "test_c:Close*"],
                                                           "the process ends right behind it"))

    def test_a_folder_is_named_by_the_tables_path(self):
        self.write("tests/mutants/machine/b.txt", "file source/a.cpp\ntests t\n\nx: y\n- Close();\n")
        fault = next(fault for fault in table.read(self.root) if fault.folder == "machine/b")
        self.assertEqual([name for name in ("machine/b/x", "machine/b", "machine", "source/a.cpp", "b", "mach")
                          if fault.is_named(name)], ["machine/b/x", "machine/b", "machine", "source/a.cpp"])

    def test_what_stands_there_matches_across_line_breaks(self):
        first, _ = table.read(self.root)
        self.assertEqual(first.plant(SOURCE), "if (level >= 1) {\n    Close();\n}\n")

    def test_no_planted_line_takes_the_text_away(self):
        _, second = table.read(self.root)
        self.assertEqual(second.plant("Close();\n"), "\n")

    def test_what_is_planted_is_taken_letter_for_letter(self):
        self.write("tests/mutants/a.txt", "file source/a.cpp\ntests t\n\nx: y\n- Close();\n+ \"\\1\\n\\g<0>\"\n")
        self.assertEqual(table.read(self.root)[0].plant("Close();"), '"\\1\\n\\g<0>"')

    def test_a_text_that_stands_nowhere_is_an_error(self):
        self.assertIn("stands 0 times in source/a.cpp", self.errors(TABLE, "level > 1\n"))

    def test_a_text_that_stands_twice_is_an_error(self):
        self.assertIn("a/close-left-out: stands 2 times", self.errors(TABLE, SOURCE + "Close();\n"))

    def test_a_file_that_is_not_there_is_an_error(self):
        self.assertIn("there is no source/b.cpp", self.errors(TABLE.replace("a.cpp", "b.cpp")))

    def test_a_line_that_says_nothing_is_an_error_with_its_place(self):
        self.assertIn("tests/mutants/a.txt:4: not understood: frobnicate", self.errors("\n\n\nfrobnicate\n"))

    def test_an_identifier_may_stand_once(self):
        self.assertIn("a/level-inclusive stands at", self.errors(TABLE + TABLE))

    def test_a_fault_that_changes_nothing_is_an_error(self):
        self.assertIn("plants what stands there", self.errors(TABLE.replace(">= 1", "> 1")))

    def test_a_fault_without_programs_is_an_error(self):
        self.assertIn("needs a file, tests", self.errors(TABLE.replace("tests test_a\n", "")))

    def outcome(self, kind, survives=""):
        fault = table.Fault("a/x", "a", "source/a.cpp", ["t"], "m", "a.txt:1", survives)
        return run.Outcome(fault, kind, "", 1.0)

    def exit_code(self, *outcomes):
        with contextlib.redirect_stdout(io.StringIO()) as output:
            code = report.write(list(outcomes))
        return code, output.getvalue()

    def test_a_run_passes_from_97_per_cent_on(self):
        self.assertEqual(self.exit_code(*[self.outcome("caught")] * 97, *[self.outcome("survived")] * 3)[0], 0)
        code, output = self.exit_code(*[self.outcome("caught")] * 96, *[self.outcome("survived")] * 4)
        self.assertEqual(code, 1)
        self.assertIn("96 of 100 caught, 96.0 %", output)
        self.assertIn("a/x  (a.txt:1) m", output)

    def test_a_listed_survivor_is_not_counted(self):
        code, output = self.exit_code(self.outcome("caught"), self.outcome("survived", "no way to tell"))
        self.assertEqual(code, 0)
        self.assertIn("1 of 1 caught", output)

    def test_a_listed_survivor_that_is_caught_fails_as_stale(self):
        code, output = self.exit_code(self.outcome("caught"), self.outcome("caught", "no way to tell"))
        self.assertEqual(code, 1)
        self.assertIn("listed as survivors, and caught:", output)

    def test_a_fault_that_does_not_build_is_an_error(self):
        self.assertEqual(self.exit_code(self.outcome("caught"), self.outcome("error"))[0], 2)

    def test_the_first_failed_test_is_named(self):
        self.assertEqual(workshop.first_failure("x\n[  FAILED  ] A.B (3 ms)\n[  FAILED  ] A.C\n", 1), "A.B")
        self.assertEqual(workshop.first_failure("", -11), "(ended by signal 11)")

    def run_fault(self, workshop_of_test, tests=("test_a", "test_b:X*")):
        fault = table.Fault("a/x", "a", "source/a.cpp", list(tests), "m", "a.txt:1")
        runner = run.Runner(run.State(self.root / "build"), 1)
        with contextlib.redirect_stdout(io.StringIO()):
            runner.run_fault(workshop_of_test, fault)
        return runner.outcomes[0]

    def test_programs_are_tried_until_one_notices(self):
        shop = FakeWorkshop({("test_b", "X*")})
        outcome = self.run_fault(shop)
        self.assertEqual((outcome.kind, outcome.text), ("caught", "A.B"))
        self.assertEqual(shop.tested, [("test_a", "", False), ("test_b", "X*", False), ("test_a", "", True),
                                       ("test_b", "X*", True)])

    def test_the_test_that_caught_it_last_is_tried_first(self):
        shop = FakeWorkshop({("test_a", ""), ("test_a", "A.B")})
        self.run_fault(shop)
        shop.tested.clear()
        self.run_fault(shop)
        self.assertEqual(shop.tested, [("test_a", "A.B", True)])

    def test_a_fault_that_no_program_notices_survives(self):
        self.assertEqual(self.run_fault(FakeWorkshop(set())).kind, "survived")

    def test_what_the_compiler_refuses_is_told(self):
        outcome = self.run_fault(FakeWorkshop(set(), compiles=False))
        self.assertEqual((outcome.kind, outcome.text), ("error", "no such name"))

    def test_a_program_that_fails_without_a_fault_tells_nothing(self):
        outcome = self.run_fault(FakeWorkshop({("test_a", "")}, passes=False))
        self.assertEqual((outcome.kind, outcome.text), ("error", "test_a fails without a fault: A.B"))

    def test_the_table_of_this_tree_matches_it(self):
        faults = table.read(ROOT)
        table.check(ROOT, faults)
        self.assertGreaterEqual(len(faults), 300)


if __name__ == "__main__":
    unittest.main()
