#!/usr/bin/env python3
# Measures how many one-line faults the core tests notice: makes a copy of the tree in build/mutants, puts one fault after the other into
# it, builds and runs the tests, and counts the faults that pass. The same seed makes the same faults as long as src/ is the same.
# tests/mutate.py [--seed N] [--count N] [--tests REVISION: with that revision's tests] [FILE or FOLDER below the root...]

import argparse
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
SUITES = ["platform", "profiles", "connectivity", "engine", "browser", "controls", "shell", "console", "sfx"]
LLD = "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"
SHARDS = {"platform": 6, "browser": 3, "engine": 2}  # test programs that mostly wait
DEFAULT = ["src/engine", "src/profiles", "src/browser"] + ["src/platform/" + room for room in ("ftp", "ini", "registry", "zip")]
LONGEST_TEST = 90  # seconds; a test program that takes longer has noticed

SWAPS = [(" == ", " != "), (" != ", " == "), (" < ", " <= "), (" <= ", " < "), (" > ", " >= "), (" >= ", " > "),
         (" && ", " || "), (" || ", " && "), (" + ", " - "), (" - ", " + "), ("true", "false"), ("false", "true")]
NUMBER = re.compile(r"(?<![\w.'\"\\])(\d+)(?![\w.'])")
STRING = re.compile(r'"(?:[^"\\]|\\.)+"')
CALL = re.compile(r"^\s+(?!return\b|throw\b|delete\b|else\b|case\b)[\w.:>\-]+\([^{}]*\);\s*$")
ASSIGNMENT = re.compile(r"^\s+[\w.:>\-\[\]]+ [+\-|]?= [^{}]*;\s*$")


def inside_string(line, at):
    return any(m.start() < at < m.end() for m in STRING.finditer(line))


def faults_of(line):
    """Every line that one small fault makes of this one."""
    code = line.split("//")[0] if not re.search(r'"[^"]*//', line) else line
    if not code.strip() or code.lstrip().startswith(("#", "using ", "namespace ", "static_assert")):
        return
    for old, new in SWAPS:
        for m in re.finditer(re.escape(old), code):
            whole = old.strip().isalpha()
            if inside_string(code, m.start()) or (whole and re.search(r"\w", code[m.end():m.end() + 1])):
                continue
            yield line[:m.start()] + new + line[m.end():]
    for m in NUMBER.finditer(code):
        if not inside_string(code, m.start()):
            yield line[:m.start()] + str(int(m.group(1)) + 1) + line[m.end():]
    for m in STRING.finditer(code):
        if len(m.group()) > 3 and "\\" not in m.group():
            middle = m.start() + 2
            yield line[:middle] + "#" + line[middle:]
    m = re.match(r"^(\s*(?:\} else )?if \()([^;{}]*)(\) (?:\{|[^()]*;)\s*)$", code)
    if m and m.group(2).count("(") == m.group(2).count(")"):
        yield m.group(1) + "!(" + m.group(2) + ")" + m.group(3).rstrip() + "\n"
    if CALL.match(code) or ASSIGNMENT.match(code):
        yield "\n"


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", **options)


def build(targets):
    return run(["cmake", "--build", str(WORK / "build"), "--", "-j2"] + targets)


def failing(suites):
    """The first of the suites that is seen to fail, or None. They run side by side, for most of their time is waiting."""
    running = []
    for suite in suites:
        program = WORK / "build" / "tests" / suite / f"{suite}_tests"
        shards = SHARDS.get(suite, 1)
        for shard in range(shards):
            environment = dict(os.environ, GTEST_FAIL_FAST="1", no_proxy="*", GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(shard))
            running.append((suite, subprocess.Popen([str(program), "--gtest_brief=1"], env=environment, start_new_session=True,
                                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)))
    end = time.monotonic() + LONGEST_TEST
    try:
        while running:
            for suite, process in list(running):
                if process.poll() is None and time.monotonic() < end:
                    continue
                if process.returncode != 0:
                    return suite
                running.remove((suite, process))
            time.sleep(0.01)
        return None
    finally:
        for _, process in running:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def prepare(revision):
    source = WORK / "source"
    listed = run(["git", "-C", str(ROOT), "ls-files", "-z"]).stdout.split("\0")
    wanted = {name for name in listed if name and (ROOT / name).is_file()}
    source.mkdir(parents=True, exist_ok=True)
    if revision:
        old = WORK / "tests.tar"
        subprocess.run(["git", "-C", str(ROOT), "archive", "-o", str(old), revision, "tests"], check=True)
        wanted = {name for name in wanted if not name.startswith("tests/")}
        shutil.rmtree(source / "tests", ignore_errors=True)
        subprocess.run(["tar", "-xf", str(old), "-C", str(source)], check=True)
    else:
        shutil.rmtree(source / "tests", ignore_errors=True)
    for name in wanted:
        to = source / name
        if to.is_file() and to.read_bytes() == (ROOT / name).read_bytes():
            continue
        to.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, to)
        os.utime(to)
    launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
    made = run(["cmake", "-S", str(source), "-B", str(WORK / "build"), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                "-DCMAKE_CXX_FLAGS=-O1 -g0 -w"] + ([LLD] if shutil.which("ld.lld") else []) + [
                "-DQUILLMOOR_DESKTOP=OFF", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"] + launcher)
    if made.returncode != 0 or (made := build([f"{s}_tests" for s in SUITES])).returncode != 0:
        sys.exit(made.stdout[-3000:])
    if suite := failing(SUITES):
        sys.exit(f"{suite}_tests fails without any fault")
    return source


def main():
    ask = argparse.ArgumentParser()
    ask.add_argument("--seed", type=int, default=1)
    ask.add_argument("--count", type=int, default=200)
    ask.add_argument("--tests", metavar="REVISION")
    ask.add_argument("where", nargs="*", default=DEFAULT)
    args = ask.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # which puts the file back
    source = prepare(args.tests)
    compiled = {entry["file"] for entry in json.loads((WORK / "build" / "compile_commands.json").read_text())}
    wanted = tuple(place.rstrip("/") for place in args.where)
    candidates = []
    for path in sorted(source.glob("src/**/*.cpp")):
        name = path.relative_to(source).as_posix()
        if str(path) not in compiled or not any(name == w or name.startswith(w + "/") for w in wanted):
            continue
        for number, line in enumerate(path.read_text().splitlines(keepends=True)):
            candidates += [(name, number, fault) for fault in faults_of(line)]
    random.Random(args.seed).shuffle(candidates)
    noticed, tried = 0, 0
    for name, number, fault in candidates:
        if tried == args.count:
            break
        path = source / name
        good = path.read_text()
        lines = good.splitlines(keepends=True)
        before, lines[number] = lines[number], fault
        path.write_text("".join(lines))
        folder = name.split("/")[1]
        order = sorted(SUITES, key=lambda suite: suite != folder)
        by = None
        try:
            for suites in (order[:1], order[1:]):
                if build([f"{s}_tests" for s in suites]).returncode != 0:
                    by = "compiler"
                    break
                if by := failing(suites):
                    break
        finally:
            path.write_text(good)
        if by == "compiler":
            continue
        tried += 1
        noticed += by is not None
        print(f"{'noticed by ' + by if by else 'PASSED':22} {name}:{number + 1}: {before.strip()}  ->  {fault.strip()}", flush=True)
    print(f"{noticed} of {tried} faults were noticed ({100 * noticed / max(tried, 1):.1f} %)")


if __name__ == "__main__":
    main()
