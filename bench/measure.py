"""How a command is measured, and how its output is compared. Whatever fails raises Failure: no figure comes from a run
that did not do its work."""

import collections
import os
import pathlib
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree


class Failure(Exception):
    pass


# Settings of libc. Valgrind gives a program only a small heap: malloc finds memory elsewhere when that is full, but
# leaves ENOMEM in errno, which the tool takes for want of memory while libyang works. With this malloc asks for much at
# once, is refused before anything has begun, and is elsewhere from then on.
HEAP_ELSEWHERE = "glibc.malloc.top_pad=0x40000000"
# Of the choices that libc makes by the processor's features and caches, the same ones on every machine.
SAME_EVERYWHERE = ["glibc.cpu.hwcaps=-AVX2,-AVX512F,-AVX512VL,-BMI2,-ERMS,-FSRM,-RTM,-SSSE3,-SSE4_2",
                   "glibc.cpu.x86_non_temporal_threshold=0x10000000"]


def run(command, output=None, environment=None):
    """Runs to success, with the standard output in the file `output`."""
    with open(output or "/dev/null", "wb") as file:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.PIPE, env=environment)
    if done.returncode != 0:
        raise Failure(f"exit status {done.returncode} of: {' '.join(command)}\n{done.stderr.decode(errors='replace')}")


def run_in_valgrind(options, command, settings):
    run(["valgrind", *options, *command],
        environment={**os.environ, "GLIBC_TUNABLES": ":".join(settings)})


def instructions(command, settings=()):
    """User-mode instructions of a whole process."""
    with tempfile.NamedTemporaryFile("r") as log:
        run_in_valgrind(["--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
                         f"--log-file={log.name}"], command, settings)
        found = re.search(r"I +refs: +([\d,]+)", log.read())
    if found is None:
        raise Failure(f"valgrind has counted nothing of: {' '.join(command)}")
    return int(found[1].replace(",", ""))


def instructions_by_library(command, settings=()):
    """User-mode instructions that a process spends in the code of each library, and of the program itself, by the names
    of their files; what a library calls in another counts there."""
    with tempfile.NamedTemporaryFile("r") as costs:
        run_in_valgrind(["--tool=callgrind", f"--callgrind-out-file={costs.name}", "--log-file=/dev/null"], command,
                        settings)
        spent = self_costs(costs)
    if not spent:
        raise Failure(f"valgrind has counted nothing of: {' '.join(command)}")
    return spent


def self_costs(costs):
    """Sums up a file of callgrind's: names are given with a number once and by it afterwards, and the line after
    "calls=" is what the callee has cost."""
    names = {}
    spent = collections.Counter()
    library = None
    callee = False
    for line in costs:
        if line.startswith(("ob=", "cob=")):
            kind, _, rest = line.strip().partition("=")
            number, _, name = rest.partition(" ")
            if name:
                names[number] = pathlib.PurePath(name).name
            if kind == "ob":
                library = names[number]
        elif line.startswith("calls="):
            callee = True
        elif line[0] in "0123456789+-*":
            if not callee:
                spent[library] += int(line.split()[1])
            callee = False
    return spent


def seconds_and_megabytes(command):
    """Wall-clock seconds and peak memory in MB."""
    with tempfile.NamedTemporaryFile("r") as file:
        run(["/usr/bin/time", "-f", "%e %M", "-o", file.name, *command])
        seconds, kilobytes = file.read().split()  # of 1024 bytes
    return float(seconds), int(kilobytes) * 1024 / 1e6


def tree(file, ordered=True):
    """An XML file as (name, attributes, text, children): equal for equal trees, whatever their prefixes and the blanks
    between elements, and unless `ordered` whatever the order of siblings."""
    def shape(element):
        children = [shape(child) for child in element]
        if not ordered:
            children.sort()
        text = element.text or ""
        if any((child.tail or "").strip() for child in element) or (children and text.strip()):
            raise Failure(f"{file}: text between elements")
        return element.tag, sorted(element.items()), "" if children else text, children
    try:
        return shape(ElementTree.parse(file).getroot())
    except ElementTree.ParseError as error:
        raise Failure(f"{file}: {error}") from error


def expect_same_tree(file, expected, ordered=True):
    if tree(file, ordered) != tree(expected, ordered):
        raise Failure(f"{file} is another tree than {expected}")


def expect_same_text(file, expected):
    if pathlib.Path(file).read_bytes() != pathlib.Path(expected).read_bytes():
        raise Failure(f"{file} is another text than {expected}")


def count_elements(file):
    return sum(1 for _ in ElementTree.parse(file).getroot().iter())
