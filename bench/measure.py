"""How a command is measured, and how its output is compared. Whatever fails raises Failure: no figure comes from a run
that did not do its work."""

import pathlib
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree


class Failure(Exception):
    pass


# Of the choices that libc makes by the processor's features and caches, always the same ones.
SAME_EVERYWHERE = {"GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX512F,-AVX512VL,-BMI2,-ERMS,-FSRM,-RTM,-SSSE3,-SSE4_2:"
                                     "glibc.cpu.x86_non_temporal_threshold=0x10000000"}


def run(command, output=None, environment=None):
    """Runs to success, with the standard output in the file `output`."""
    with open(output or "/dev/null", "wb") as file:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.PIPE, env=environment)
    if done.returncode != 0:
        raise Failure(f"exit status {done.returncode} of: {' '.join(command)}\n{done.stderr.decode(errors='replace')}")


def instructions(command, environment=None):
    """User-mode instructions of a whole process."""
    with tempfile.NamedTemporaryFile("r") as log:
        run(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
             f"--log-file={log.name}", *command], environment=environment)
        found = re.search(r"I +refs: +([\d,]+)", log.read())
    if found is None:
        raise Failure(f"valgrind has counted nothing of: {' '.join(command)}")
    return int(found[1].replace(",", ""))


def instructions_within(library, command, environment=None):
    """User-mode instructions that a process spends in the code of one shared library, not in what that calls."""
    with tempfile.NamedTemporaryFile("r") as costs:
        run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={costs.name}", "--log-file=/dev/null", *command],
            environment=environment)
        spent = self_cost(costs, library)
    if spent == 0:
        raise Failure(f"nothing has run in {library} of: {' '.join(command)}")
    return spent


def self_cost(costs, library):
    """Sums up a file of callgrind's: names are given with a number once and by it afterwards, and the line after
    "calls=" is what the callee has cost."""
    names = {}
    inside = callee = False
    spent = 0
    for line in costs:
        if line.startswith("ob="):
            number, _, name = line[3:].strip().partition(" ")
            if name:
                names[number] = name
            inside = pathlib.PurePath(names[number]).name == library
        elif line.startswith("cob="):
            number, _, name = line[4:].strip().partition(" ")
            if name:
                names[number] = name
        elif line.startswith("calls="):
            callee = True
        elif line[:1] in "0123456789+-*":
            if inside and not callee:
                spent += int(line.split()[1])
            callee = False
    return spent


def seconds_and_megabytes(command):
    """Wall-clock seconds and peak memory in MB."""
    with tempfile.NamedTemporaryFile("r") as file:
        run(["/usr/bin/time", "-f", "%e %M", "-o", file.name, *command])
        seconds, kilobytes = file.read().split()
    return float(seconds), int(kilobytes) / 1024


def tree(file):
    """An XML file as lists of (name, attributes, text, children): equal for equal trees, whatever their prefixes and
    the blanks between elements."""
    def shape(element):
        children = [shape(child) for child in element]
        text = element.text or ""
        if any((child.tail or "").strip() for child in element) or (children and text.strip()):
            raise Failure(f"{file}: text between elements")
        return element.tag, sorted(element.items()), "" if children else text, children
    try:
        return shape(ElementTree.parse(file).getroot())
    except ElementTree.ParseError as error:
        raise Failure(f"{file}: {error}") from error


def by_name(node):
    """A tree of tree() with siblings in the order of their names; those of one name stay in theirs."""
    name, attributes, text, children = node
    return name, attributes, text, sorted(map(by_name, children), key=lambda child: child[0])


def expect_same_tree(file, expected, any_order=False):
    order = by_name if any_order else lambda node: node
    if order(tree(file)) != order(tree(expected)):
        raise Failure(f"{file} is another tree than {expected}")


def expect_same_text(file, expected):
    if pathlib.Path(file).read_bytes() != pathlib.Path(expected).read_bytes():
        raise Failure(f"{file} is another text than {expected}")


def count_elements(file):
    return sum(1 for _ in ElementTree.parse(file).getroot().iter())
