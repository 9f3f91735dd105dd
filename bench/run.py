#!/usr/bin/env python3
"""Counts what the tool's tasks cost, beside other programs, and prints the table of docs/performance.md.

  run.py [--write FILE]   all figures; --write puts the table also between the marks in FILE
  run.py shares           a table of the libraries in which the instructions are spent
  run.py check            small documents, the tool alone: fails where a figure is more than 10 % above instructions.txt
  run.py update           writes instructions.txt anew"""

import os
import platform
import re
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

import measure
import tasks

NUMBERS = tasks.ROOT / "bench/instructions.txt"
WORSE = 1.10
PROGRAMS = ("ocmap", "xsltproc", "pugixml", "xmllint", "yanglint", "XML")
TIMED = ("ocmap", "xsltproc", "pugixml")
MARKS = ("<!-- the table of bench/run.py -->\n", "<!-- its end -->\n")


def all_figures(rows, programs, settings=(), at_once=os.cpu_count()):
    """For each row the figure of each program, many at once."""
    def figure(job):
        row, program = job
        begin = time.monotonic()
        result = row.figure(program, settings)
        print(f"{row.name}, {program}: {result:,.1f} ({time.monotonic() - begin:.0f} s)", file=sys.stderr, flush=True)
        return result
    jobs = [(row, program) for row in rows for program in row.commands if program in programs]
    figures = [{} for _ in rows]
    with ThreadPoolExecutor(at_once) as pool:
        for (row, program), result in zip(jobs, pool.map(figure, jobs)):
            figures[rows.index(row)][program] = result
    return figures


def times_of(row):
    """Seconds and MB of the tool and those peers that are judged, the best of three runs, one after another."""
    seconds, megabytes = [], []
    for program in TIMED:
        if row.timed and program in row.commands:
            best = [min(each) for each in zip(*(measure.seconds_and_megabytes(row.commands[program](row.many))
                                                for _ in range(3)))]
            seconds.append(f"{best[0]:.2f}")
            megabytes.append(f"{best[1]:,.0f}")
    return " · ".join(seconds), " · ".join(megabytes)


def number(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}"


def line_of(row, figures):
    ratios = [limit.form.format(limit.ratio(figures)) for limit in row.limits]
    met = ["yes" if limit.met(figures) else "**no**" for limit in row.limits]
    return [row.name, f"{row.many:,}", row.unit, *(number(figures[program]) if program in figures else ""
                                                  for program in PROGRAMS),
            " · ".join(ratios), " · ".join(limit.text for limit in row.limits), " · ".join(met), *times_of(row)]


def markdown(names, lines, right):
    widths = [max(len(line[column]) for line in [names, *lines]) for column in range(len(names))]

    def text(cells):
        return "| " + " | ".join(cell.rjust(width) if column in right else cell.ljust(width)
                                 for column, (cell, width) in enumerate(zip(cells, widths))) + " |\n"
    rule = "|" + "|".join("-" * (width + 1) + (":" if column in right else "-")
                          for column, width in enumerate(widths)) + "|\n"
    return text(names) + rule + "".join(map(text, lines))


def commit():
    found = subprocess.run(["git", "-C", str(tasks.ROOT), "describe", "--always", "--dirty"], capture_output=True,
                           text=True)
    return found.stdout.strip() or "without one"


def table(directory):
    work = tasks.Workplace(directory)
    tasks.check_outputs(work, 1000)
    print("The peers' trees are the same.", file=sys.stderr, flush=True)
    rows = tasks.counted(work, tasks.FULL)
    lines = [line_of(*one) for one in zip(rows, all_figures(rows, PROGRAMS))]
    rows = tasks.weighed(work)
    lines += [line_of(*one) for one in zip(rows, all_figures(rows, PROGRAMS, at_once=1))]
    names = ["task", "size", "unit", *PROGRAMS, "ratio", "target", "met", "s", "MB"]
    return f"`make bench`, at commit {commit()}:\n\n" + markdown(names, lines, right={1, *range(3, 3 + len(PROGRAMS))})


def table_of_shares(directory):
    work = tasks.Workplace(directory)
    libraries = {"framework": "libtqm.so", "plug-in": tasks.PLUGIN, "libc": "libc.so", "pugixml": "libpugixml.so",
                 "libsafec": "libsafec.so"}
    lines = []
    for direction in tasks.DIRECTIONS:
        for model in tasks.documents.MODELS:
            found = tasks.shares(work, tasks.SMALL, model, direction)
            parts = [sum(value for name, value in found.items() if name.startswith(library))
                     for library in libraries.values()]
            lines.append([f"{direction}, {model}", *(f"{part:.0%}" for part in [*parts, 1 - sum(parts)])])
    return markdown(["task", *libraries, "others"], lines, right=range(1, 7))


def write_into(file, text):
    with open(file) as stream:
        whole = stream.read()
    before, found, rest = whole.partition(MARKS[0])
    _, end, after = rest.partition(MARKS[1])
    if not found or not end:
        raise measure.Failure(f"{file} has no place for the table")
    with open(file, "w") as stream:
        stream.write(before + MARKS[0] + "\n" + text + "\n" + MARKS[1] + after)


def small_figures(directory):
    rows = tasks.counted(tasks.Workplace(directory), tasks.SMALL)
    figures = all_figures(rows, ("ocmap",), measure.SAME_EVERYWHERE)
    return {f"{row.name}, {row.unit}": figure["ocmap"] for row, figure in zip(rows, figures)}


def update(directory):
    lines = [f"{value:>14,.1f}  {name}\n" for name, value in small_figures(directory).items()]
    NUMBERS.write_text(f"# Instructions on {platform.machine()}, by 'make bench-update'. 'make bench-check' fails "
                       "where there are 10 % more.\n" + "".join(lines))


def committed():
    lines = [line for line in NUMBERS.read_text().splitlines() if not line.startswith("#")]
    found = [re.fullmatch(r" *([\d,.]+)  (.*)", line) for line in lines]
    if None in found:
        raise measure.Failure(f"{NUMBERS}: a line is no figure: {lines[found.index(None)]}")
    return {match[2]: float(match[1].replace(",", "")) for match in found}


def check(directory):
    """True where nothing has become worse."""
    before, now = committed(), small_figures(directory)
    worse = []
    for name in sorted(before.keys() | now.keys()):
        if name not in before or name not in now:
            worse.append(f"{name}: only {'measured' if name in now else 'in instructions.txt'}")
            continue
        change = now[name] / before[name]
        print(f"{now[name]:>14,.1f}  {(change - 1) * 100:+6.1f} %  {name}")
        if change > WORSE:
            worse.append(f"{name}: {now[name]:,.1f} instructions, and {before[name]:,.1f} are in instructions.txt")
    for line in worse:
        print(f"error: {line}", file=sys.stderr)
    if worse:
        print("If that is on purpose, 'make bench-update' writes bench/instructions.txt anew: commit it with the "
              "change.", file=sys.stderr)
    return not worse


def main(arguments):
    with tempfile.TemporaryDirectory() as directory:
        if arguments == ["check"]:
            return check(directory)
        if arguments == ["update"]:
            update(directory)
        elif arguments == ["shares"]:
            print(table_of_shares(directory), end="")
        elif not arguments or (len(arguments) == 2 and arguments[0] == "--write"):
            text = table(directory)
            print(text, end="")
            if arguments:
                write_into(arguments[1], text)
        else:
            sys.exit(__doc__)
    return True


if __name__ == "__main__":
    try:
        sys.exit(0 if main(sys.argv[1:]) else 1)
    except measure.Failure as failure:
        sys.exit(f"error: {failure}")
