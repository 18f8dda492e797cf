"""What the checks with SQL engines have in common: the program, the engines, and what was found."""

import argparse
import json
import os
import signal
import subprocess
import sys
import tempfile

from engines import Engines
from exact import require


class Program:
    """Runs `accredit` in a folder of its own. What it says and writes is searched for the passwords it was given."""

    def __init__(self, path, folder, password=None):
        self.path = os.path.abspath(path)
        self.folder = folder
        self.password = password

    def file(self, name):
        return os.path.join(self.folder, name)

    def environment(self, password=None):
        password = password or self.password
        return {**os.environ, **({"ACCREDIT_PASSWORD": password} if password else {})}

    def run(self, *arguments, statuses=(0,)):
        """Standard output and standard error."""
        done = subprocess.run([self.path, *arguments], cwd=self.folder, check=False, capture_output=True,
                              timeout=600, env=self.environment())
        out, err = done.stdout.decode(), done.stderr.decode()
        require(not self.password or self.password not in out + err, "the password is shown", arguments, out, err)
        require(done.returncode in statuses, arguments, done.returncode, out[-3000:], err[-3000:])
        return out, err

    def learn(self, output, *arguments):
        """What `show` has of the reference, by variable."""
        self.run("learn", *arguments, "--output", output)
        with open(self.file(output), encoding="utf-8") as file:
            require(not self.password or self.password not in file.read(), "the password is stored", arguments)
        shown = json.loads(self.run("show", output, "--format", "json")[0])
        return {variable["name"]: variable for variable in shown["variables"]}

    def check(self, reference, *arguments):
        """The report of one new file or table."""
        return json.loads(self.run("check", reference, *arguments, "--format", "json", "--all", statuses=(0, 1))[0])


class Findings:
    """What does not hold, so that one finding does not hide the others."""

    def __init__(self):
        self.count = 0

    def attempt(self, function, *arguments):
        try:
            function(*arguments)
        except (AssertionError, RuntimeError) as error:
            self.count += 1
            print(f"  FINDING {error}", flush=True)


def run_checks(description, check, *names):
    """Calls `check(accredit, engine, findings, quick)` for the engines of these names that run."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("program")
    parser.add_argument("--engines", metavar="FOLDER",
                        help="where scripts/engines has started engines; without it there is SQLite alone")
    parser.add_argument("--quick", action="store_true", help="leave out what takes long")
    parser.add_argument("--only", default="", help="the cases whose name has this in it")
    parser.add_argument("name", nargs="*", help="the engines, all that run unless told")
    given = parser.parse_intermixed_args()
    # Shells let what runs in the background ignore interrupts, and the program would, too.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    findings = Findings()
    with tempfile.TemporaryDirectory() as folder:
        engines = Engines(given.engines or os.path.join(folder, "engines"))
        if not given.engines:
            engines.start(["sqlite"])
        for engine in engines.running():
            if engine.name not in names or (given.name and engine.name not in given.name):
                continue
            print(engine.name, flush=True)
            password = None if engine.name == "sqlite" else engine.password
            accredit = Program(given.program, folder, password)
            check(accredit, engine, findings, given)
            if given.engines:
                engines.save(engine.name)  # a check may have started a server again
    sys.exit(findings.count > 0)
