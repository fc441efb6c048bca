"""Breaks the sources in one place at a time and runs the tests; scripts/mutate prepares the copy."""

import argparse
import collections
import json
import os
import random
import re
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

# A place matches in a line whose comments and texts are masked. The replacement is a template of re.
OPERATORS = [
    ("comparison", r" == ", " != "),
    ("comparison", r" != ", " == "),
    ("comparison", r" < ", " >= "),
    ("comparison", r" > ", " <= "),
    ("boundary", r" < ", " <= "),
    ("boundary", r" <= ", " < "),
    ("boundary", r" > ", " >= "),
    ("boundary", r" >= ", " > "),
    ("boolean", r" && ", " || "),
    ("boolean", r" \|\| ", " && "),
    ("boolean", r"(?<=[ (])!(?=[a-zA-Z(])", ""),
    ("boolean", r"\btrue\b", "false"),
    ("boolean", r"\bfalse\b", "true"),
    ("constant", r"(?<![\w.'])(?:0|[1-9]\d*)(?![\w.'x])", None),  # The next number.
    ("arithmetic", r" \+ ", " - "),
    ("arithmetic", r" - ", " + "),
    ("arithmetic", r" \* ", " / "),
]

# What changes nothing that a test could see: memory reserved ahead, log lines, compile-time checks.
IRRELEVANT = re.compile(r"reserve\(|squeeze\(|q(?:Debug|Info|Warning|Critical)\(|static_assert|#include|Q_ASSERT"
                        r"|Q_UNREACHABLE|template|using |^\s*(?:class|struct|enum|namespace) ")
# A call or an assignment that is a line of its own.
STATEMENT = re.compile(r"^\s+(?:(?:[\w.:>()-]|->)*\w+\(.*\)|[\w.>-]+ [-+|&]?= .*|(?:\+\+|--)[\w.>-]+);$")
DECLARATION = re.compile(r"^\s+(?:const|auto|static|return|break|continue|delete|case|default|throw|co_)\b")
VOID_FUNCTION = re.compile(r"^(?:static )?void [\w:~]+\(.*\)(?: const)?(?: noexcept)?$")

Change = collections.namedtuple("Change", "path line kind before after")


def mask(text):
    """Returns the text with comments and literals as underscores of the same length."""
    pattern = r'//[^\n]*|/\*.*?\*/|u?R"\((?:.*?)\)"|u?"(?:\\.|[^"\\\n])*"|u?\'(?:\\.|[^\'\\\n])\''

    def blank(match):
        return re.sub(r"[^\n]", "_", match.group())

    return re.sub(pattern, blank, text, flags=re.S)


def changes_of_line(path, number, line, masked):
    """Yields the changes within a line and the removal of the line."""
    if IRRELEVANT.search(masked):
        return
    for kind, pattern, replacement in OPERATORS:
        for match in re.finditer(pattern, masked):
            new = str(int(match.group()) + 1) if replacement is None else replacement
            yield Change(path, number, kind, line, line[: match.start()] + new + line[match.end():])
    if path.endswith(".cpp") and STATEMENT.match(masked) and not DECLARATION.match(masked):
        yield Change(path, number, "removed statement", line, "")


def changes_of_file(root, path):
    """Yields all changes of a file of `root`."""
    text = (root / path).read_text(encoding="utf-8")
    lines = text.split("\n")
    masked = mask(text).split("\n")
    for index, (line, hidden) in enumerate(zip(lines, masked)):
        yield from changes_of_line(path, index, line, hidden)
        previous = masked[index - 1] if index else ""
        if line == "{" and VOID_FUNCTION.match(previous):
            yield Change(path, index, "early return", line, "{ return;")


def choose(root, files, seed):
    """Returns all changes in the order in which to try them.

    The first ones are one of each file. Then a file with twice the places comes up twice as often.
    """
    generator = random.Random(seed)
    first = []
    others = []
    for path in files:
        changes = list(changes_of_file(root, path))
        generator.shuffle(changes)
        first += changes[:1]
        offset = generator.random()
        others += [((rank + offset) / len(changes), change) for rank, change in enumerate(changes) if rank]
    generator.shuffle(first)
    return first + [change for _, change in sorted(others, key=lambda item: item[0])]


class Build:
    """The copy's build folder and the programs that CTest would run."""

    def __init__(self, copy):
        self.source = copy / "source"
        self.folder = copy / "build"

    def configure(self):
        run = subprocess.run(
            ["cmake", "-S", self.source, "-B", self.folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
             "-DCMAKE_CXX_FLAGS_RELEASE=-O0"], stdout=subprocess.DEVNULL)
        return run.returncode == 0

    def make(self, target):
        run = subprocess.run(["cmake", "--build", self.folder, "--target", target],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return run.returncode == 0

    def tests(self):
        listing = subprocess.run(["ctest", "--test-dir", self.folder, "--show-only=json-v1"],
                                 capture_output=True, check=True)
        return [Test(entry) for entry in json.loads(listing.stdout)["tests"]]


class Test:
    """A test program with the command and the environment that CTest has for it."""

    def __init__(self, entry):
        properties = {item["name"]: item["value"] for item in entry["properties"]}
        self.name = entry["name"]
        self.command = entry["command"]
        self.folder = properties["WORKING_DIRECTORY"]
        self.quick = "quick" in properties.get("LABELS", [])
        self.environment = dict(os.environ, VELMORA_REQUIRE_TOOLS="1")
        self.environment.update(item.split("=", 1) for item in properties.get("ENVIRONMENT", []))
        self.seconds = 1.0
        self.limit = 300.0

    def run(self, running):
        """Returns whether the test passed. `running` keeps its process, for others to end."""
        process = subprocess.Popen(self.command, cwd=self.folder, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        running.add(process)
        try:
            return process.wait(self.limit) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            end(process)
            running.discard(process)


def end(process):
    """Ends the process with all that it started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def first_failure(tests, workers):
    """Runs the tests, several at once and in their order, and returns the first that fails, or None."""
    queue = collections.deque(tests)
    running = set()
    failures = []

    def work():
        while not failures:
            try:
                test = queue.popleft()
            except IndexError:
                return
            start = time.monotonic()
            passed = test.run(running)
            if passed:
                test.seconds = time.monotonic() - start
            elif not failures:
                failures.append(test)
                for process in list(running):
                    end(process)

    threads = [threading.Thread(target=work) for _ in range(workers)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return failures[0] if failures else None


def related_first(tests, path):
    """Returns the tests with those named after the file first, then the fastest first."""
    stem = Path(path).stem
    return sorted(tests, key=lambda test: (stem not in test.name, test.seconds))


def try_change(build, tests, change, quick_only, workers):
    """Returns "not compiled", "survived" or the name of the test that failed."""
    path = build.source / change.path
    text = path.read_text(encoding="utf-8")
    lines = text.split("\n")
    assert lines[change.line] == change.before
    lines[change.line] = change.after
    path.write_text("\n".join(lines), encoding="utf-8")
    try:
        if not build.make("velmora_testsupport"):
            return "not compiled"
        ordered = related_first(tests, change.path)
        failed = first_failure([test for test in ordered if test.quick], workers)
        if not failed and not quick_only:
            build.make("all")
            failed = first_failure([test for test in ordered if not test.quick], workers)
        return failed.name if failed else "survived"
    finally:
        path.write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, required=True)
    parser.add_argument("--count", type=int, required=True)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("copy", type=Path)
    parser.add_argument("files", nargs="*")
    arguments = parser.parse_args()

    build = Build(arguments.copy.resolve())
    files = arguments.files or sorted(
        f"src/{path.name}" for path in (build.source / "src").iterdir()
        if path.suffix in (".cpp", ".h") and not re.search("Inhibitor(Mac|Windows|None)", path.name))
    print("==> Building the copy and running all tests once", flush=True)
    if not build.configure() or not build.make("all"):
        sys.exit("error: the copy does not build without a change.")
    workers = os.cpu_count() or 2
    tests = build.tests()
    if arguments.quick:
        tests = [test for test in tests if test.quick]
    failed = first_failure(tests, workers)
    if failed:
        sys.exit(f"error: {failed.name} fails without a change.")
    for test in tests:
        test.limit = 20 + 5 * test.seconds

    counts = collections.Counter()
    survivors = []
    for change in choose(build.source, files, arguments.seed):
        if counts["killed"] + counts["survived"] >= arguments.count:
            break
        result = try_change(build, tests, change, arguments.quick, workers)
        counts[result if result in ("not compiled", "survived") else "killed"] += 1
        place = f"{change.path}:{change.line + 1}: {change.kind}"
        text = f"    - {change.before.strip()}\n    + {change.after.strip()}"
        print(f"{result}: {place}\n{text}", flush=True)
        if result == "survived":
            survivors.append(f"{place}\n{text}")

    print(f"==> Survived with the seed {arguments.seed}:")
    print("\n".join(survivors) or "none")
    tried = counts["killed"] + counts["survived"]
    print(f"{tried} tried, {counts['killed']} killed, {counts['survived']} survived, "
          f"{counts['not compiled']} more did not compile")
    sys.exit(1 if survivors else 0)


main()
