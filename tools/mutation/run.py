"""Runs faults through the workshops."""

import fcntl
import hashlib
import json
import os
import queue
import signal
import threading
import time
from dataclasses import dataclass

from .table import Fault
from .workshop import BuildError, Workshop, tree_files


class RunError(Exception):
    """The run can't go on."""


class ProgramError(Exception):
    """A test program fails without a fault, and so can't tell anything."""


@dataclass
class Outcome:
    fault: Fault
    kind: str  # "caught", "survived" or "error"
    text: str  # the test that caught it, or what the compiler said
    seconds: float


class State:
    """What is kept between runs: how each fault ended, and how long each program takes without a fault."""

    def __init__(self, folder):
        self.folder = folder
        self.path = folder / "state.json"
        self.lock = threading.Lock()
        data = json.loads(self.path.read_text()) if self.path.is_file() else {}
        self.results = data.get("results", {})
        self.catchers = data.get("catchers", {})
        self.programs = data.get("programs", {})
        self.tree = data.get("tree", "")

    def claim(self):
        """The copies and what is kept are one run's at a time. The lock goes with the process."""
        self.folder.mkdir(parents=True, exist_ok=True)
        self.claimed = open(self.folder / "lock", "w", encoding="utf-8")
        try:
            fcntl.flock(self.claimed, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            raise RunError("another run is under way in this tree; wait for its end") from None

    def use_tree(self, digest):
        """What was measured of another tree says nothing of this one, and a failure may have been a busy machine's."""
        if self.tree != digest:
            self.programs = {}
        self.tree = digest
        self.programs = {key: value for key, value in self.programs.items() if not isinstance(value, str)}

    def last(self, fault):
        """How a fault ended when it last ran, as an Outcome; None for one that never ran in this form."""
        kind, seconds, pattern = self.results.get(fault.id, ("", 0.0, ""))
        return Outcome(fault, kind, "", seconds) if pattern == fault.pattern().pattern else None

    def save(self):
        self.folder.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps({"results": self.results, "catchers": self.catchers,
                                         "programs": self.programs, "tree": self.tree}, indent=1, sort_keys=True))

    def note(self, outcome, program):
        with self.lock:
            self.results[outcome.fault.id] = [outcome.kind, round(outcome.seconds, 1), str(outcome.fault.pattern().pattern)]
            if outcome.kind == "caught" and not outcome.text.startswith("("):
                self.catchers[outcome.fault.id] = f"{program}:{outcome.text}"
            self.save()


def digest_of(root, files):
    """Tells trees apart by what goes into a build: a change of the table or of the documents keeps what was measured."""
    digest = hashlib.sha256()
    for name in files:
        if name.startswith(("docs/", "tests/mutants/", "tools/")) or name.endswith(".md"):
            continue
        digest.update(name.encode() + b"\0" + (root / name).read_bytes() + b"\0")
    return digest.hexdigest()


class Runner:
    def __init__(self, state, total):
        self.state = state
        self.measuring = threading.Lock()
        self.total = total
        self.outcomes = []
        self.broken = None

    def seconds_without_fault(self, workshop, program, test_filter):
        """Seconds that a program takes; it must pass, or it would catch everything. No fault is planted now."""
        key = f"{program}:{test_filter}".rstrip(":")
        with self.measuring:
            if key not in self.state.programs:
                workshop.build(program)
                failed, seconds = workshop.test(program, test_filter, 1800)
                self.state.programs[key] = failed or round(seconds, 1)
                print(f"{key} {f'fails: {failed}' if failed else f'takes {seconds:.0f} s'} without a fault", flush=True)
        seconds = self.state.programs[key]
        if isinstance(seconds, str):
            raise ProgramError(f"{program} fails without a fault: {seconds}")
        return seconds

    def try_programs(self, workshop, fault, limits):
        """(program, what failed) of the first program that notices, else None."""
        for (program, test_filter), limit in limits.items():
            workshop.build(program)
            # The test that caught it last time first.
            catcher = self.state.catchers.get(fault.id, "")
            filters = [test_filter]
            if catcher.startswith(program + ":"):
                filters.insert(0, catcher.partition(":")[2])
            for each in filters:
                failed, _ = workshop.test(program, each, limit)
                if failed:
                    return program, failed
        return None

    def run_fault(self, workshop, fault):
        started = time.monotonic()
        workshop.restore()
        program = ""
        try:
            limits = {}
            for test in fault.tests:
                program, _, test_filter = test.partition(":")
                limits[(program, test_filter)] = 60 + 5 * self.seconds_without_fault(workshop, program, test_filter)
            workshop.plant(fault)
            noticed = self.try_programs(workshop, fault, limits)
            kind, text = ("caught", noticed[1]) if noticed else ("survived", "")
            program = noticed[0] if noticed else ""
        except (BuildError, ProgramError) as error:
            kind, text = "error", str(error)
        outcome = Outcome(fault, kind, text, time.monotonic() - started)
        self.outcomes.append(outcome)
        self.state.note(outcome, program)
        print(f"[{len(self.outcomes)}/{self.total}] {fault.id}: {kind} {text} ({outcome.seconds:.0f} s)", flush=True)

    def work(self, workshop, faults, files):
        """One worker: takes the faults of one file after the other, until none is left."""
        try:
            workshop.sync(files)
            workshop.configure()
            while self.broken is None:
                for fault in faults.get_nowait():
                    if self.broken is None:
                        self.run_fault(workshop, fault)
        except queue.Empty:
            pass
        except BaseException as error:  # also a key that ends the run
            self.broken = error
        finally:
            workshop.restore()


def run(root, state, faults, workers):
    """Plants every fault. Returns the outcomes; raises RunError."""
    state.claim()
    files = tree_files(root)
    state.use_tree(digest_of(root, files))
    by_file = {}
    for fault in faults:
        by_file.setdefault(fault.file, []).append(fault)
    waiting = queue.Queue()
    for group in by_file.values():
        waiting.put(group)
    runner = Runner(state, len(faults))
    jobs = max(1, (os.cpu_count() or 1) // workers)
    threads, workshops = [], []
    for number in range(1, workers + 1):
        workshop = Workshop(root, state.folder / str(number), jobs)
        workshops.append(workshop)
        thread = threading.Thread(target=runner.work, args=(workshop, waiting, files), daemon=True)
        thread.start()
        threads.append(thread)
    # A run in the background doesn't get the key that ends it, unless it asks for it.
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, signal.default_int_handler)
    try:
        for thread in threads:
            thread.join()
    except KeyboardInterrupt:
        for workshop in workshops:
            workshop.stop()
        raise RunError("broken off") from None
    state.save()
    if isinstance(runner.broken, (RunError, BuildError)):
        raise RunError(str(runner.broken))
    if runner.broken is not None:
        raise runner.broken
    return runner.outcomes
