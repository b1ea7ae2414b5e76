#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Adds up what gcov knows of a build folder: coverage_report.py BUILD FOLDER...

Prints lines and functions of each source folder and in all, then every line and function that nothing reached. A line
or function that several objects hold (in a header) counts once, and is reached when any of them reached it.
"""
import collections
import json
import pathlib
import subprocess
import sys


def read_objects(build):
    """gcov's record of each object that ran or could have run."""
    for notes in sorted(build.rglob("*.gcno")):
        output = subprocess.run(["gcov", "--json-format", "--stdout", str(notes)], check=True, capture_output=True,
                                text=True).stdout
        for line in output.splitlines():
            if line.startswith("{"):
                yield json.loads(line)


def collect(build, folders):
    root = pathlib.Path.cwd()
    lines = collections.defaultdict(int)
    functions = collections.defaultdict(int)
    for record in read_objects(build):
        for file in record["files"]:
            path = pathlib.Path(record["current_working_directory"], file["file"]).resolve()
            if not path.is_relative_to(root):
                continue
            name = str(path.relative_to(root))
            if not any(name.startswith(folder + "/") for folder in folders):
                continue
            for line in file["lines"]:
                lines[name, line["line_number"]] += line["count"]
            for function in file["functions"]:
                key = (name, function["start_line"], function["demangled_name"].split("[")[0])
                functions[key] += function["execution_count"]
    return lines, functions


def share(counts):
    reached = sum(1 for count in counts if count > 0)
    return f"{reached:6}/{len(counts):<6}{100 * reached / max(len(counts), 1):6.2f} %"


def main():
    build, folders = pathlib.Path(sys.argv[1]), sys.argv[2:]
    lines, functions = collect(build, folders)
    # Template instances and constructor variants of one place are one function to a reader.
    places = collections.defaultdict(int)
    for (name, line, _), count in functions.items():
        places[name, line] += count
    for folder in [*folders, "src"]:
        def within(counts):
            return [count for (name, *_), count in counts.items() if name.startswith(folder + "/")]
        print(f"{'all' if folder == 'src' else folder:14} lines {share(within(lines))}  functions {share(within(places))}")
    for (name, line), count in sorted(lines.items()):
        if count == 0:
            print(f"  not reached: {name}:{line}")
    for (name, line), count in sorted(places.items()):
        if count == 0:
            print(f"  function not reached: {name}:{line}")


main()
