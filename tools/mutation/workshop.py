"""A copy of the tree with a build of its own, in which faults are planted."""

import os
import resource
import shutil
import signal
import subprocess
import time

MEMORY_LIMIT = 8 << 30  # bytes: a fault may make a loop that never ends
FILE_LIMIT = 1 << 30


class BuildError(Exception):
    """What the compiler said."""


def limit_program():
    """In the child, before the test program starts."""
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def tree_files(root):
    """Paths of the tree, from its root: what git knows and what it doesn't ignore."""
    listing = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=root, check=True,
                             capture_output=True).stdout.decode()
    return sorted(name for name in set(listing.split("\0")) if name and (root / name).is_file())


class Workshop:
    def __init__(self, root, folder, jobs):
        self.root = root
        self.tree = folder / "tree"
        self.build_folder = folder / "build"
        self.temporary = folder / "tmp"
        self.jobs = jobs
        self.planted = None
        self.running = None
        self.built = set()
        self.temporary.mkdir(parents=True, exist_ok=True)
        self.log = open(folder / "build.log", "w", encoding="utf-8")

    def sync(self, files):
        """Makes the copy equal to the tree; a fault that a broken run left goes with it."""
        wanted = set(files)
        for name in files:
            source, target = self.root / name, self.tree / name
            if not target.is_file() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                target.unlink(missing_ok=True)
                shutil.copyfile(source, target)
                shutil.copymode(source, target)
        for path in self.tree.rglob("*"):
            if path.is_file() and path.relative_to(self.tree).as_posix() not in wanted:
                path.unlink()

    def configure(self):
        """Warnings are off, since a fault may leave a variable unused. The second flag lets ccache do its work."""
        self.run_build(["cmake", "--preset", "native-plain", "-B", str(self.build_folder),
                        "-DCMAKE_CXX_FLAGS=-w -fpch-preprocess", "-DCMAKE_C_FLAGS=-w"])

    def run_build(self, command):
        done = subprocess.run(command, cwd=self.tree, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.log.write(f"$ {' '.join(command)}\n{done.stdout}")
        self.log.flush()
        if done.returncode != 0:
            lines = done.stdout.rstrip().split("\n")
            errors = [line for line in lines if "error: " in line or "undefined" in line]
            raise BuildError("\n".join((errors or lines[-5:])[:3]))

    def build(self, program):
        """Builds a test program, for the first time on all cores. Raises BuildError."""
        jobs = self.jobs if program in self.built else os.cpu_count() or 1
        self.run_build(["ninja", "-C", str(self.build_folder), f"-j{jobs}", program])
        self.built.add(program)

    def plant(self, fault):
        path = self.tree / fault.file
        text = path.read_text()
        path.write_text(fault.plant(text))
        self.planted = (path, text)

    def restore(self):
        """Takes the fault out. What was built from it is built anew with the next fault."""
        if self.planted:
            path, text = self.planted
            path.write_text(text)
            self.planted = None

    def test(self, program, test_filter, timeout):
        """Runs a test program to its first failure.
        Returns (what failed or None, seconds)."""
        command = [str(self.build_folder / "bin" / program), "--gtest_fail_fast", "--gtest_brief=1"]
        if test_filter:
            command.append(f"--gtest_filter={test_filter}")
        started = time.monotonic()
        process = subprocess.Popen(command, cwd=self.tree, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   stdin=subprocess.DEVNULL, env=os.environ | {"TMPDIR": str(self.temporary)},
                                   start_new_session=True, preexec_fn=limit_program)
        self.running = process
        try:
            output = process.communicate(timeout=timeout)[0].decode(errors="replace")
            failed = None if process.returncode == 0 else first_failure(output, process.returncode)
        except subprocess.TimeoutExpired:
            failed = "(no end)"
        finally:
            end_group(process)
        self.clear_temporary()
        return failed, time.monotonic() - started

    def stop(self):
        """Ends the test program that runs now, for a run that is broken off."""
        if self.running and self.running.poll() is None:
            os.killpg(self.running.pid, signal.SIGKILL)

    def clear_temporary(self):
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir(parents=True, exist_ok=True)


def end_group(process):
    """Ends a test program with all that it started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.communicate()


def first_failure(output, code):
    """Name of the first test that failed; how the program ended where it names none."""
    for line in output.split("\n"):
        if line.startswith("[  FAILED  ] "):
            return line[13:].split(" ")[0].rstrip(",")
    return f"(ended by signal {-code})" if code < 0 else f"(exit code {code})"
