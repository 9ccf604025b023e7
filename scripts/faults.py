"""For check-faults: the tool, how it is started, waited for and ended, and what was found."""

import collections
import contextlib
import os
import pathlib
import random
import re
import resource
import subprocess
import threading
import time

TIME_LIMIT = 60  # seconds: whatever takes longer hangs

Result = collections.namedtuple("Result", "status out err")


class Faults:
    """The tool, a folder to work in, and what was found."""

    def __init__(self, tool, folder, seed):
        self.tool, self.folder, self.random = str(tool), folder, random.Random(seed)
        self.checks, self.failures, self.skipped = 0, [], 0
        self.lock = threading.Lock()  # the locked stores are waited for meanwhile

    def check(self, what, holds, seen=""):
        with self.lock:
            self.checks += 1
            if not holds:
                self.failures.append(f"{what}: {str(seen)[:1500]}")

    def equal(self, what, seen, expected, said=""):
        self.check(what, seen == expected, f"{seen}, not {expected}\n{said}")

    def skip(self, what, why):
        self.skipped += 1
        print(f"  {what}: skipped, {why}")

    def expect(self, what, result, status, *lines, absent=()):
        """The exit status, and lines that standard error must have, once each, and what it must not have."""
        said = result.err.splitlines()
        wrong = [f"{said.count(line)} times the line {line!r}" for line in lines if said.count(line) != 1]
        wrong += [f"a line with {text!r}" for text in (*absent, "terminate called", "std::") if text in result.err]
        if result.status != status:
            wrong.append(f"exit status {result.status}, not {status}")
        self.check(what, not wrong, f"{wrong}\n{result.err}")

    def wait(self, what, condition, process=None):
        """Checks that it comes to hold in time, and before the process ends."""
        self.check(f"{what}: comes about", wait_until(condition, process))

    def wait_for_rest(self, what, process):
        """Until all its threads wait, and go on waiting: for an input, or for a reader."""
        last = None

        def rests():
            nonlocal last
            before, last = last, waits_of(process)
            return last is not None and before == last

        self.wait(f"{what}: it rests", rests, process)

    def path(self, name):
        return str(self.folder / name)

    def write(self, name, text):
        pathlib.Path(self.path(name)).write_text(text)
        return self.path(name)

    def read(self, name):
        return pathlib.Path(self.path(name)).read_text()

    def start(self, *arguments, limits=(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, before=None):
        def prepare():
            for limit, value in limits:
                resource.setrlimit(limit, (value, value))
            if before:
                before()

        return subprocess.Popen([self.tool, *arguments], cwd=self.folder, stdin=stdin, stdout=stdout,
                                stderr=subprocess.PIPE,
                                preexec_fn=prepare if limits or before else None,  # which no thread may do
                                bufsize=0)  # or what is read ahead of a line is lost to `finish`, and stdin kept back

    def finish(self, process):
        try:
            out, err = process.communicate(timeout=TIME_LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            out, err = process.communicate()
            self.check(f"hangs: {process.args}", False)
        return Result(process.returncode, (out or b"").decode(), err.decode())

    def run(self, *arguments, **how):
        return self.finish(self.start(*arguments, **how))

    def open_pipe(self, process, name, flags):
        """The other end of a named pipe, once the tool has opened its own."""
        end = None

        def is_open():
            nonlocal end
            with contextlib.suppress(OSError):  # nobody reads it yet
                end = os.open(self.path(name), flags | os.O_NONBLOCK) if end is None else end
            return end is not None and has_open(process, self.path(name))

        if not wait_until(is_open, process):
            process.kill()
            raise TimeoutError(f"{process.args} does not open {name}: {self.finish(process)}")
        os.set_blocking(end, True)
        return os.fdopen(end, "rb" if flags == os.O_RDONLY else "wb", buffering=0)


@contextlib.contextmanager
def ended(process):
    """Ends the process whatever happens, and in time."""
    watchdog = threading.Timer(2 * TIME_LIMIT, process.kill)
    watchdog.start()
    try:
        yield process
    finally:
        watchdog.cancel()
        if process.poll() is None:
            process.kill()
        for pipe in (process.stdin, process.stdout, process.stderr):
            if pipe:
                with contextlib.suppress(OSError):
                    pipe.close()
        process.wait()


def wait_until(condition, process=None):
    """False if it takes too long, or the process ends before."""
    end = time.monotonic() + TIME_LIMIT
    while not condition():
        if time.monotonic() > end or process and process.poll() is not None:
            return False
        time.sleep(0.01)
    return True


def waits_of(process):
    """How often each of its threads has waited; None if one does not wait now."""
    waits = {}
    with contextlib.suppress(OSError):  # a thread ends while they are listed
        for task in pathlib.Path(f"/proc/{process.pid}/task").iterdir():
            status = (task / "status").read_text()
            if "\nState:\tS" not in status:
                return None
            waits[task.name] = re.findall(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.M)
        return waits
    return None


def catches(process, number):
    caught = re.search(r"^SigCgt:\s*(\w+)", pathlib.Path(f"/proc/{process.pid}/status").read_text(), re.M)
    return int(caught[1], 16) >> (number - 1) & 1 == 1


def has_open(process, file):
    descriptors = pathlib.Path(f"/proc/{process.pid}/fd")
    with contextlib.suppress(FileNotFoundError):  # one is closed while they are listed
        return any(os.readlink(descriptor) == file for descriptor in descriptors.iterdir())
    return False
