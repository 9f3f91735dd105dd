"""The documents that are measured: edits of policies, key chains and interfaces, and filters for reads. They are in one
line, as clients send them.

From the command line: documents.py KIND COUNT [json], where KIND is policies, chains or interfaces."""

import json
import sys

OPENCONFIG = "http://openconfig.net/yang/macsec"
NETCONF = "urn:ietf:params:xml:ns:netconf:base:1.0"
MODELS = ("policies", "chains", "interfaces")
KEYS_IN_CHAIN = 3

# An entry of each is a dictionary that says what JSON says; the XML is made from it.


def policy(number):
    name = f"P{number}"
    return {"name": name,
            "config": {"name": name,
                       "key-server-priority": number % 256,
                       "macsec-cipher-suite": ["GCM_AES_XPN_256"],
                       "confidentiality-offset": "30_BYTES",
                       "delay-protection": True,
                       "include-icv-indicator": True,
                       "sak-rekey-interval": 3600}}


def chain(number):
    """Keys that take turns, half a year each."""
    name = f"KC{number}"
    day = 1 + number % 28
    changes = [f"2026-01-{day:02}T00:00:00", f"2026-07-{day:02}T12:30:00", f"2027-01-{day:02}T00:00:00",
               f"2027-07-{day:02}T23:59:59"]
    keys = [{"id": f"{key + 1:02}",
             "config": {"id": f"{key + 1:02}",
                        "key-clear-text": f"{number * KEYS_IN_CHAIN + key:032x}",
                        "cryptographic-algorithm": "AES_128_CMAC",
                        "valid-date-time": changes[key],
                        "expiration-date-time": changes[key + 1]}}
            for key in range(KEYS_IN_CHAIN)]
    return {"name": name, "config": {"name": name}, "mka-keys": {"mka-key": keys}}


def interface(number):
    name = f"HundredGigE0/{number // 1000}/0/{number % 1000}"
    return {"name": name,
            "config": {"name": name},
            "mka": {"config": {"mka-policy": f"P{1 + number % 16}", "key-chain": f"KC{1 + number % 256}"}}}


# By model: the containers around the list, the list, and what makes an entry.
LISTS = {"policies": (("mka", "policies"), "policy", policy),
         "chains": (("mka", "key-chains"), "key-chain", chain),
         "interfaces": (("interfaces",), "interface", interface)}


def xml_of(name, value):
    if isinstance(value, list):
        return "".join(xml_of(name, item) for item in value)
    if isinstance(value, dict):
        return f"<{name}>" + "".join(xml_of(*member) for member in value.items()) + f"</{name}>"
    return f"<{name}>{str(value).lower() if isinstance(value, bool) else value}</{name}>"


def write_data(file, model, count):
    """The OpenConfig tree without an envelope."""
    containers, entry, make = LISTS[model]
    file.write(f'<macsec xmlns="{OPENCONFIG}">' + "".join(f"<{name}>" for name in containers))
    file.writelines(xml_of(entry, make(number)) for number in range(1, count + 1))
    file.write("".join(f"</{name}>" for name in reversed(containers)) + "</macsec>")


def write_edit(file, model, count):
    file.write(f'<rpc message-id="1" xmlns="{NETCONF}"><edit-config><target><running/></target><config>')
    write_data(file, model, count)
    file.write("</config></edit-config></rpc>")


def write_json_edit(file, model, count):
    containers, entry, make = LISTS[model]
    tree = {entry: [make(number) for number in range(1, count + 1)]}
    for name in reversed(containers):
        tree = {name: tree}
    edit = {"target": {"running": [None]}, "config": {"openconfig-macsec:macsec": tree}}
    json.dump({"ietf-netconf:edit-config": edit}, file, separators=(",", ":"))


def filter_of(policies):
    return (f'<filter xmlns="{NETCONF}"><macsec xmlns="{OPENCONFIG}"><mka><policies>' + "".join(policies) +
            "</policies></mka></macsec></filter>")


def by_names(count):
    return filter_of(f"<policy><name>P{number}</name></policy>" for number in range(1, count + 1))


# Filters of one sort, by number. Without a match inside; each by its key; by one leaf, with the same value or others;
# by two leaves, of which all policies agree with the first; by a leaf that all have and the leaf that repeats the key.
FILTERS = {"all": lambda number: "",
           "keys": lambda number: f"<name>P{number}</name>",
           "same": lambda number: "<config><key-server-priority>7</key-server-priority></config>",
           "differ": lambda number: f"<config><key-server-priority>{number}</key-server-priority></config>",
           "two": lambda number: "<config><delay-protection>true</delay-protection>"
                                 f"<key-server-priority>{number}</key-server-priority></config>",
           "names": lambda number: "<config><delay-protection>true</delay-protection>"
                                   f"<name>P{number}</name></config>"}


def filters(sort, count):
    return filter_of(f"<policy>{FILTERS[sort](number)}</policy>" for number in range(1, count + 1))


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4) or sys.argv[1] not in MODELS or sys.argv[3:] not in ([], ["json"]):
        sys.exit(__doc__)
    (write_json_edit if sys.argv[3:] else write_edit)(sys.stdout, sys.argv[1], int(sys.argv[2]))
