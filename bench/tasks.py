"""What is measured: each task a row of the table, with the command of every program that does it."""

import itertools
import pathlib
import threading
from collections.abc import Callable
from dataclasses import dataclass, field

import documents
import measure

ROOT = pathlib.Path(__file__).resolve().parent.parent
OCMAP = str(ROOT / "build/ocmap")
PRINT_XML = str(ROOT / "build/bench/print_xml")
READ_POLICY = str(ROOT / "build/bench/read_policy")
PLUGIN = "libymap_oc_macsec.so"
STYLESHEETS = ROOT / "bench/stylesheets"
YANG = ROOT / "yang"
NATIVE_MODULES = {"policies": ["Tarvex-crypto-macsec-mka-cfg"],
                  "chains": ["Tarvex-lib-keychain-cfg"],
                  "interfaces": ["Tarvex-ifmgr-cfg", "Tarvex-crypto-macsec-mka-if-cfg"]}
OPENCONFIG_MODULES = ["openconfig-macsec", "tarvex-openconfig-macsec-deviations"]
DIRECTIONS = ("forward", "reverse")
STORED = (measure.HEAP_ELSEWHERE,)               # tasks in which libyang holds many nodes


class Workplace:
    """Makes documents and stores in one directory, each when it is first asked for."""

    def __init__(self, directory):
        self.directory = pathlib.Path(directory)
        self._numbers = itertools.count()
        self._lock = threading.RLock()

    def _file(self, name, make):
        path = self.directory / name
        with self._lock:
            if not path.exists():
                make(path)
        return str(path)

    def _written(self, name, write, *arguments):
        def make(path):
            with open(path, "w") as file:
                write(file, *arguments)
        return self._file(name, make)

    def edit(self, model, count):
        return self._written(f"{model}-{count}.xml", documents.write_edit, model, count)

    def data(self, model, count):
        return self._written(f"{model}-{count}-data.xml", documents.write_data, model, count)

    def json_edit(self, model, count):
        return self._written(f"{model}-{count}.json", documents.write_json_edit, model, count)

    def native(self, model, count):
        """What `ocmap forward` makes of the edit, in one line."""
        return self._made_native(f"{model}-{count}-native.xml", model, count)

    def json_native(self, model, count):
        return self._made_native(f"{model}-{count}-native.json", model, count, "--json")

    def _made_native(self, name, model, count, *options):
        def make(path):
            indented = f"{path}.indented"
            measure.run([OCMAP, "forward", "--bare", *options, self.edit(model, count)], indented)
            with open(indented) as lines, open(path, "w") as file:
                file.writelines(line.strip() for line in lines)
            pathlib.Path(indented).unlink()
        return self._file(name, make)

    def by_names(self, count):
        return self._written(f"names-{count}.xml", lambda file: file.write(documents.by_names(count)))

    def filters(self, sort, count):
        return self._written(f"filters-{sort}-{count}.xml", lambda file: file.write(documents.filters(sort, count)))

    def store(self, count):
        """A store with policies."""
        return self._file(f"store-{count}", lambda path: measure.run(
            [OCMAP, "edit", self.edit("policies", count), "--store", str(path)]))

    def no_store(self):
        """Where there is none yet."""
        return str(self.directory / f"new-store-{next(self._numbers)}")


@dataclass
class Limit:
    """A ratio of figures, or the tool's own, and what it is held against."""
    text: str
    number: float
    ratio: Callable[[dict], float] = lambda figures: figures["ocmap"]
    least: bool = False                          # the ratio is to be at least the number, and not at most
    form: str = "{:.2f}"

    def met(self, figures):
        ratio = self.ratio(figures)
        return ratio >= self.number if self.least else ratio <= self.number


def fewer_than(peer, times):
    return Limit(f"{peer} / ocmap ≥ {times}", times, lambda figures: figures[peer] / figures["ocmap"], least=True)


def times_of(peer, times):
    return Limit(f"ocmap / {peer} ≤ {times}", times, lambda figures: figures["ocmap"] / figures[peer])


def at_most(number):
    return Limit(f"ocmap ≤ {number:,}", number, form="{:,.0f}")


@dataclass
class Growth:
    """Instructions for each of the entries by which two runs differ: what is done once is in neither."""
    name: str
    unit: str
    many: int
    few: int
    commands: dict[str, Callable[[int], list]]   # by program, of a number of entries
    limits: list[Limit] = field(default_factory=list)
    units: Callable[[int], int] = lambda count: count
    context: tuple[str, ...] = ()                # programs that are not judged get a tenth of the entries
    within: str | None = None                    # counts only what runs in this library
    timed: bool = False
    settings: tuple[str, ...] = ()               # of libc, beside those of all

    def many_for(self, program):
        return max(self.many // 10, 2 * self.few) if program in self.context else self.many

    def figure(self, program, settings=()):
        def spent(count):
            command = self.commands[program](count)
            if not self.within:
                return measure.instructions(command, (*settings, *self.settings))
            within = measure.instructions_by_library(command, (*settings, *self.settings))[self.within]
            if within == 0:
                raise measure.Failure(f"nothing has run in {self.within} of: {' '.join(command)}")
            return within
        many = self.many_for(program)
        return (spent(many) - spent(self.few)) / (self.units(many) - self.units(self.few))


@dataclass
class Whole:
    """Instructions of a whole process, or its peak memory in MB."""
    name: str
    unit: str
    many: int
    commands: dict[str, Callable[[int], list]]
    limits: list[Limit] = field(default_factory=list)
    memory: bool = False
    timed: bool = False

    def figure(self, program, settings=()):
        command = self.commands[program](self.many)
        if self.memory:
            return measure.seconds_and_megabytes(command)[1]
        return measure.instructions(command, settings)


@dataclass
class Sizes:
    """Numbers of entries."""
    mapped: int
    others: int
    few: int
    plugin: int
    filters: int
    filtered: int
    reads: int


FULL = Sizes(mapped=100_000, others=10_000, few=1000, plugin=10_000, filters=1000, filtered=10_000, reads=200)
SMALL = Sizes(mapped=1000, others=1000, few=200, plugin=1000, filters=100, filtered=1000, reads=200)


def ocmap(direction, document, *options):
    kind = [] if direction == "forward" else ["--kind", "get-config"]
    return [OCMAP, direction, document, *kind, *options]


def mapping_commands(work, model, direction):
    """The same document to all: xsltproc maps as the tool does, the others only parse and print. yanglint, which knows
    no envelope, gets the data alone."""
    forward = direction == "forward"
    document = work.edit if forward else work.native
    data = work.data if forward else work.native
    modules = OPENCONFIG_MODULES if forward else NATIVE_MODULES[model]
    schemas = [str(YANG / f"{module}.yang") for module in modules]
    return {"ocmap": lambda count: ocmap(direction, document(model, count)),
            "xsltproc": lambda count: ["xsltproc", str(STYLESHEETS / f"{direction}-{model}.xsl"),
                                       document(model, count)],
            "pugixml": lambda count: [PRINT_XML, document(model, count)],
            "xmllint": lambda count: ["xmllint", "--huge", document(model, count)],
            "yanglint": lambda count: ["yanglint", "-f", "xml", "-t", "edit", "-p", str(YANG), *schemas,
                                       data(model, count)]}


def mapping(work, sizes, model, direction):
    return Growth(f"{direction}, {model}", "an entry", sizes.mapped, sizes.few,
                  mapping_commands(work, model, direction),
                  [fewer_than("xsltproc", 4), times_of("pugixml", 2.5 if direction == "forward" else 4)],
                  context=("xmllint", "yanglint"), timed=True)


def json_mapping(work, sizes, model, direction):
    document, xml = (work.json_edit, work.edit) if direction == "forward" else (work.json_native, work.native)
    return Growth(f"{direction} in JSON, {model}", "an entry", sizes.others, sizes.few,
                  {"ocmap": lambda count: ocmap(direction, document(model, count), "--json"),
                   "XML": lambda count: ocmap(direction, xml(model, count))},
                  [times_of("XML", 1.5)], timed=True)


def plugin_alone(work, sizes, model, direction):
    document, walked = (work.edit, work.data) if direction == "forward" else (work.native, work.native)
    return Growth(f"plug-in alone, {direction}, {model}", "a node", sizes.plugin, sizes.few,
                  {"ocmap": lambda count: ocmap(direction, document(model, count))}, [at_most(320)],
                  units=lambda count: measure.count_elements(walked(model, count)), within=PLUGIN)


def shares(work, sizes, model, direction):
    """By library, which part of the tool's instructions for an entry are spent in it."""
    def spent(count):
        return measure.instructions_by_library(mapping_commands(work, model, direction)["ocmap"](count))
    more = spent(sizes.others)
    more.subtract(spent(sizes.few))
    return {library: value / more.total() for library, value in more.items()}


def get_config(work, policies, *document):
    return [OCMAP, "get-config", *document, "--store", work.store(policies)]


def many_filters(work, sizes, sort):
    return Growth(f"read with many filters, {sort}", "a filter and policy", sizes.filters, 1,
                  {"ocmap": lambda count: get_config(work, sizes.filtered, work.filters(sort, count))},
                  units=lambda count: count * sizes.filtered, settings=STORED)


def memory(work, model, direction, count, peers, limits):
    commands = mapping_commands(work, model, direction)
    return Whole(f"memory, {direction}, {model}", "MB", count,
                 {program: commands[program] for program in ("ocmap", *peers)}, limits, memory=True)


def counted(work, sizes):
    """The tasks whose instructions are counted."""
    each = [(model, direction) for direction in DIRECTIONS for model in documents.MODELS]
    tasks = [mapping(work, sizes, *one) for one in each]
    tasks += [json_mapping(work, sizes, *one) for one in each]
    tasks += [plugin_alone(work, sizes, *one) for one in each]
    tasks.append(Whole("start-up: forward of one policy", "in all", 1,
                       {"ocmap": lambda count: ocmap("forward", work.edit("policies", count))}, [at_most(6_000_000)],
                       timed=True))
    tasks.append(Growth("read of a policy, the framework stays", "a read", sizes.reads, sizes.reads // 2,
                        {"ocmap": lambda count: [READ_POLICY, str(count)]}, [at_most(100_000)]))
    tasks.append(Growth("edit, policies", "an entry", sizes.others, sizes.few,
                        {"ocmap": lambda count: [OCMAP, "edit", work.edit("policies", count), "--store",
                                                 work.no_store()]}, timed=True, settings=STORED))
    tasks.append(Growth("read of all, policies", "an entry", sizes.others, sizes.few,
                        {"ocmap": lambda count: get_config(work, count)}, timed=True, settings=STORED))
    tasks.append(Growth("read of each by its name, policies", "an entry", sizes.others, sizes.few,
                        {"ocmap": lambda count: get_config(work, count, work.by_names(count))}, timed=True,
                        settings=STORED))
    tasks += [many_filters(work, sizes, sort) for sort in documents.FILTERS]
    return tasks


def weighed(work):
    """The tasks whose memory is looked at."""
    tasks = [memory(work, "policies", direction, count, ("xsltproc", "pugixml"), [times_of("pugixml", 1.5)])
             for direction in DIRECTIONS for count in (10_000, 100_000)]
    tasks.append(memory(work, "chains", "forward", 100_000, ("xsltproc", "pugixml"), [at_most(700)]))
    tasks.append(memory(work, "chains", "reverse", 100_000, ("xsltproc", "pugixml"), []))
    return tasks


def check_outputs(work, count):
    """That the programs do the same: the peers' trees are the tool's, or the document that they print again; JSON says
    what XML says; and a read answers what the reverse mapping makes of the same data."""
    def output(command, name):
        file = str(work.directory / f"output-{name}")
        measure.run(command, file)
        return file

    for model in documents.MODELS:
        for direction in DIRECTIONS:
            commands = {program: command(count)
                        for program, command in mapping_commands(work, model, direction).items()}
            mapped = output(commands["ocmap"], f"{direction}-{model}")
            measure.expect_same_tree(output(commands["xsltproc"], "xsltproc"), mapped)
            for program in ("pugixml", "xmllint", "yanglint"):
                # yanglint prints siblings as the model has them.
                measure.expect_same_tree(output(commands[program], program), commands[program][-1],
                                         ordered=program != "yanglint")
            json = json_mapping(work, SMALL, model, direction).commands
            measure.expect_same_text(output(json["ocmap"](count), "json"),
                                     output([*json["XML"](count), "--json"], "json-of-xml"))
    mapped = str(work.directory / "output-reverse-policies")
    measure.expect_same_tree(output(get_config(work, count), "all"), mapped)
    measure.expect_same_tree(output(get_config(work, count, work.by_names(count)), "names"), mapped)
    one = output(ocmap("reverse", work.native("policies", 1)), "one")
    measure.expect_same_tree(output([READ_POLICY, "1"], "policy"), one)
