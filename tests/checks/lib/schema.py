# SPDX-License-Identifier: Apache-2.0
"""Compares the schema of scenarios with what reads them: schema.py PROGRAM, which says of each line what is wrong."""
import copy
import glob
import json
import re
import subprocess
import sys

import jsonschema

SCHEMA = json.load(open("host/simulation/scenario.schema.json"))
VALIDATOR = jsonschema.Draft7Validator(SCHEMA)

# What a schema cannot say, as the reader says it: what other places hold, what bytes and numbers of addresses are.
BEYOND = re.compile(
    r"""no\ interface\ "|no\ access\ point\ |a\ second\ "|is\ its\ own\ ancestor|its\ parent\ "|is\ not\ of\ the\ type\ wifi
    |is\ up\ though\ the\ station|must\ be\ present\ and\ up$|the\ access\ point\ in\ range$|nobody\ can\ join
    |(there|in\ range)\ at\ that\ time$|\(\\?"dropped\\?"\ takes\ it\)|there\ is\ no\ "(wifi|hotspot)"
    |\ address\ of\ its\ network|no\ other\ host\ of\ the\ network|has\ this\ address,\ too|32\ bytes$
    |:.*:.*"\ is\ not\ an\ (IP\ )?address|^delays\.\w+\[1\]:\ must\ be\ a\ whole\ number\ from\ [1-9]|is\ not\ base64$""",
    re.VERBOSE,
)

# Values at the edges of what is right, and beyond, in the example of docs/scenarios.md, where everything stands once.
EDGES = [
    ("$schema", ["", "any"], [1]),
    ("description", ["", "any"], [1, None]),
    ("seed", [0, 1.0, 2147483647], [-1, 2147483648, 0.5, "1"]),
    ("delays.reply", [0, 86400000, [0, 0], [5, 86400000]], [-1, 86400001, [1], [1, 2, 3], [-1, 5], [1, "2"], "1"]),
    ("delays.release", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.manual", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.lease", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.scan", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.associate", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.hotspot_start", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.hotspot_stop", [0, 86400000, [0, 0]], [-1, 86400001, [5, 86400001]]),
    ("delays.lease", [[4, 5], [5, 5]], []),
    ("allow_circular_parents", [True, False], ["true", 1]),
    ("interfaces.0.type", ["wifi", "usb", "cellular", "bluetooth_dun", "vpn", "qv"], ["Wired", "wire", "vpns", ""]),
    ("interfaces.0.link_address", ["02:00:00:00:00:0a", "FF:FF:FF:FF:FF:FF"],
     ["", "02:00:00:00:00", "02:00:00:00:00:01:02", "02:00:00:00:00:0g", "02-00-00-00-00-01"]),
    ("interfaces.0.mtu", [68, 65536], [67, 65537, 1500.5, "1500"]),
    ("interfaces.0.present", [True], [False, 1]),  # as it is connected
    ("interfaces.0.up", [True], [False, "yes"]),
    ("interfaces.2.present", [False], [0]),
    ("interfaces.2.connected", [False], [True, 0]),
    ("interfaces.1.parent_interface", ["eth0", ""], ["a/b", ".b", "abcdefghijklmnop"]),
    ("interfaces.0.lease.ip_addresses",
     [["fe80::1/64", "10.20.0.40/255.255.255.0"], ["10.20.0.40/255.255.0.0", "::1/0", "2001:db8::1/128", "::ffff:10.0.0.1/96"],
      ["10.20.0.40/16", "10.20.0.1/8", "10.20.0.40/1", "10.20.0.40/32"],
      ["10.20.0.40/255.255.254.0", "0.0.0.1/128.0.0.0", "249.199.99.9/255.255.255.255"]],
     [[], [1], ["10.20.0.40"], ["10.20.0.40/0"], ["10.20.0.40/33"], ["10.20.0.40/255.0.255.0"],
      ["10.20.0.40/0.0.0.0"], ["256.20.0.40/255.0.0.0"], ["10.20.0.040/255.0.0.0"], ["10.20.40/255.0.0.0"],
      ["10.20.0.40/255.255.253.0"], ["fe80::1"], ["fe80::1/129"], ["fe80::1/064"], ["fe80::1%eth0/64"],
      ["fe80::1/255.255.0.0"], "fe80::1/64"]),
    ("interfaces.0.lease.ip_gateway", [[], ["10.20.0.1", "fe80::1"], ["10.20.255.254"]],
     [["10.20.0.1/16"], ["10.20.0"], ["10.20.0.256"], ["10.20.0.01"], [""], [1], "10.20.0.1"]),
    ("priority", [[], ["tun0"]], [["tun0", "tun0"], ["a/b"], [""], "tun0"]),
    ("default_interface", ["", "tun0"], ["a/b", "abcdefghijklmnop", 1, None]),
    ("wifi.power", [True], [False, "on"]),  # as the station is connected
    ("wifi.connected", ["02:00:00:00:00:11"], ["02:00", 1]),
    ("wifi.access_points.1.ssid", ["", "12345678901234567890123456789012"], ["123456789012345678901234567890123", 1]),
    ("wifi.access_points.1.frequency", [1, 100000], [0, 100001, "2412"]),
    ("wifi.access_points.1.signal_level", [-100, 0], [-101, 1, "-50"]),
    ("wifi.access_points.0.drift", [0, 50], [-1, 51]),
    ("wifi.access_points.1.flags", [[], ["", "any"]], [[1], "ESS"]),
    ("wifi.access_points.1.passkey", ["8 chars ", "~" * 63, "0123456789abcdefABCDEF" + "0" * 42],
     ["", "7 chars", "x" * 64, "0" * 65, "t\u00e4lnykey", "new\tline", 12345678]),
    ("wifi.access_points.1.in_range", [False], [0]),
    ("wifi.access_points.1.answers", [True, False], ["no"]),
    ("hotspot.active", [True, False], ["ACTIVE"]),
    ("hotspot.profile.ssid", ["1", "12345678901234567890123456789012"], ["", "123456789012345678901234567890123", 1]),
    ("hotspot.profile.passphrase", ["8 chars ", "~" * 63, "0" * 64], ["", "7 chars", "x" * 64, "0" * 65, 1]),
    ("hotspot.profile.mhs_band", ["2.4", "5.0"], ["5", 5.0, "2.5"]),
    ("hotspot.profile.max_num_sta", [1, 32], [0, 33, 1.5, "1"]),
    ("hotspot.profile.security_type", ["none", "wpa", "wpa2", "wpa_mixed"], ["wpa3", "", None]),
    ("hotspot.profile.autoshutdown_time", [0, 86400], [-1, 86401, "0"]),
    ("hotspot.profile.privacy", [True, False], [0, "no"]),
    ("hotspot.profile.block_conn", [True, False], [0, "no"]),
    ("hotspot.profile.band", [1, None, {}, "any"], []),
    ("timeline.link-lost.at", [0, 86400000], [-1, 86400001, "1", 0.5]),
    ("timeline.set.attributes", [{"a": "", "b": [None], "c": 2147483647, "d": -2147483648, "e": True},
                               {"a": {"text": ""}, "b": {"base64": ""}, "c": {"encoding": "", "base64": "QQ=="}}],
     [{}, [], ["mtu"], {"a": None}, {"a": 2147483648}, {"a": -2147483649}, {"a": 1.5}, {"a": {}},
      {"a": {"text": "", "base64": ""}}, {"a": {"encoding": "text"}}, {"a": {"text": 1}}, {"a": {"base64": "*"}},
      {"a": {"encoding": 1, "text": ""}}, {"a": {"hex": "", "text": ""}}]),
    ("timeline.remove.attributes", [["a", "a"]], [[], {}, {"mtu": 1}, [1], "mtu"]),
    ("timeline.set.object", ["status_public", "wifi/status", "tethering/status"], ["control", "wifi", ""]),
    ("timeline.priority.order", [[], ["tun0"]], [["tun0", "tun0"], "tun0", [1]]),
    ("timeline.default.interface", ["", "tun0"], ["a/b", None]),
    ("timeline.daemon-dies.back_after", [0, 86400000], [-1, 86400001]),
    ("timeline.signal.signal_level", [-100, 0], [-101, 1]),
    ("timeline.dropped.reason", [1, 65535], [0, 65536]),
    ("timeline.wifi-event.text", ["", "any"], [1]),
    ("timeline.daemon-dies.daemon", ["networking", "wifi", "tethering"], ["cellular", ""]),
    ("faults.0.message", ["net_disconnected"], ["scan", "start", "explode", ""]),  # as it names an interface
    ("faults.0.err", [1, 2147483647], [0, 2147483648, "16"]),
    ("faults.0.errmsg", [""], [1]),
    ("faults.0.skip", [0, 2147483647], [-1, 2147483648]),
    ("faults.0.times", [1, 2147483647], [0, 2147483648]),
    ("faults.0.ssid", [], ["Garage"]),
    ("faults.1.performs", [True, False], [1]),
    ("faults.2.delay", [0, 86400000], [-1, 86400001]),
    ("faults.4.ssid", ["Garage", "Home"], ["", "123456789012345678901234567890123"]),
    ("faults.4.message", ["wnet_new"], ["scan", "net_connected"]),
    ("faults.5.message", ["net_connected", "net_disconnected", "wifi_power", "wnet_new", "wnet_select",
                          "wnet_disableall", "retrieve_profile", "update_profile", "start", "stop"], ["", "SCAN"]),
    ("faults.6.err", [], [1]),  # of another fault
    ("faults.7.err", ["0", 0, [], {"text": ""}], [None, {}, 1.5]),
    ("faults.7.res", ["", 1, True], [None]),
    ("faults.7.errmsg", ["", 1, True], [None]),
    ("faults.7.dat", ["", 1, {"base64": "QQ=="}], [None]),
    ("faults.8.back_after", [0, 86400000], [-1, 86400001]),
]

# What takes the place of every value in turn.
ANYTHING = [None, True, False, 0, 1, -1, 1.5, 10**10, "", "x", "\u00e4", [], [0], ["x"], {}, {"x": 0}]

mistakes = []


def example():
    page = open("docs/scenarios.md").read()
    return json.loads(page.split("```json\n", 1)[1].split("```", 1)[0])


def steps(document, place):
    """The path of a place; an event is named by its word, and has the key that follows."""
    path = [int(step) if step.isdigit() else step for step in place.split(".")]
    if path[0] == "timeline":
        events = document["timeline"]
        path[1] = next(i for i, one in enumerate(events) if one["event"] == path[1] and path[2] in one)
    return path


def put(document, path, value):
    changed = copy.deepcopy(document)
    parent = changed
    for step in path[:-1]:
        parent = parent[step]
    parent[path[-1]] = value
    return changed


def without(document, path):
    changed = copy.deepcopy(document)
    parent = changed
    for step in path[:-1]:
        parent = parent[step]
    del parent[path[-1]]
    return changed


def nodes(value, path=()):
    """Every value inside, with its path."""
    members = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
    for key, member in members:
        yield path + (key,), member
        yield from nodes(member, path + (key,))


def verdicts(documents):
    """What the reader says of each, and whether the schema takes it."""
    lines = "".join(json.dumps(document) + "\n" for document in documents)
    answer = subprocess.run([sys.argv[1]], input=lines, stdout=subprocess.PIPE, text=True, check=True).stdout
    errors = answer.split("\n")[:-1]
    assert len(errors) == len(documents)
    return [(error, VALIDATOR.is_valid(document)) for error, document in zip(errors, documents)]


def check_edges():
    base = example()
    for place, right, wrong in EDGES:
        values = [(value, True) for value in right] + [(value, False) for value in wrong]
        documents = [put(base, steps(base, place), value) for value, _ in values]
        for (value, expected), (error, valid) in zip(values, verdicts(documents)):
            if (not error) != expected:
                mistakes.append(f"{place}: {json.dumps(value)}: the reader says '{error}'")
            if valid != expected:
                mistakes.append(f"{place}: {json.dumps(value)}: the schema {'takes' if valid else 'refuses'} it")


def check_agreement():
    base = example()
    documents = [base]
    for path, value in nodes(base):
        documents += [put(base, path, other) for other in ANYTHING]
        documents.append(without(base, path))
        if isinstance(value, dict):
            documents.append(put(base, path + ("zz",), 1))
        if isinstance(value, list) and value:
            documents.append(put(base, path, value + value[-1:]))
    # Each kind of event and fault with the keys of every other.
    for place in ("timeline", "faults"):
        keys = {key: value for one in base[place] for key, value in one.items()}
        for i, one in enumerate(base[place]):
            documents += [put(base, (place, i, key), value) for key, value in keys.items() if key not in one]
    for document, (error, valid) in zip(documents, verdicts(documents)):
        if valid == (not error) or (valid and BEYOND.search(error)):
            continue
        why = "" if valid else ": " + next(VALIDATOR.iter_errors(document)).message
        mistakes.append(f"the reader says '{error}', the schema {'takes it' if valid else 'refuses it' + why}")
    print(f"{len(documents)} documents")


def resolved(schema):
    while "$ref" in schema:
        schema = SCHEMA["definitions"][schema["$ref"].rsplit("/", 1)[1]]
    return schema


def is_described(schema):
    return "description" in schema or (
        "$ref" in schema and is_described(SCHEMA["definitions"][schema["$ref"].rsplit("/", 1)[1]]))


def keys_of(schema, value):
    """The keys that the schema has for an object like this."""
    schema = resolved(schema)
    keys = set(schema.get("properties", {}))
    for part in schema.get("allOf", []) + schema.get("anyOf", []):
        if "if" not in part:
            keys |= keys_of(part, value)
        elif VALIDATOR.evolve(schema=part["if"]).is_valid(value):
            keys |= keys_of(part["then"], value)
    return keys


def schema_at(path, document):
    schema, value = SCHEMA, document
    for step in path:
        schema, parts = resolved(schema), [resolved(schema)]
        for part in schema.get("allOf", []):
            if VALIDATOR.evolve(schema=part.get("if", {})).is_valid(value):
                parts.append(part.get("then", {}))
        found = {}
        for part in parts:
            if isinstance(step, int):
                found.update(part.get("items", {}))
            else:
                found.update(part.get("properties", {}).get(step, {}) or {})
        if not found and isinstance(schema.get("additionalProperties"), dict):
            found = schema["additionalProperties"]
        if not found:
            for part in parts:
                if isinstance(part.get("additionalProperties"), dict):
                    found = part["additionalProperties"]
        schema, value = found, value[step]
    return schema


def check_known_words():
    """The keys and words that the reader lists are those of the schema."""
    base = example()
    objects = [()] + [path for path, value in nodes(base) if isinstance(value, dict)]
    documents = [put(base, path + ("zz",), 1) for path in objects]
    compared = 0
    for path, (error, _) in zip(objects, verdicts(documents)):
        known = re.search(r'unknown key "zz" \(known: (.*)\)$', error)
        if known:
            value = base
            for step in path:
                value = value[step]
            mine = keys_of(schema_at(path, base), value)
            compared += 1
            if mine != set(known.group(1).split(", ")):
                mistakes.append(f"{path}: the reader knows {known.group(1)}, the schema {sorted(mine)}")
    if compared < 50:
        mistakes.append(f"only {compared} objects of the example were compared")
    words = {
        ("timeline", 0, "event"): SCHEMA["definitions"]["eventWord"],
        ("faults", 0, "fault"): SCHEMA["definitions"]["fault"]["properties"]["fault"],
        ("faults", 0, "message"): SCHEMA["definitions"]["fault"]["properties"]["message"],
    }
    for (path, schema), (error, _) in zip(words.items(), verdicts([put(base, path, "zz") for path in words])):
        known = re.search(r"\(known: (.*)\)$", error).group(1).split(", ")
        if known != schema["enum"]:
            mistakes.append(f"{path}: the reader knows {known}, the schema {schema['enum']}")


def check_descriptions(schema, place="schema"):
    if isinstance(schema, dict):
        properties = schema.get("properties", {})
        for key, value in properties.items() if place.rsplit(".", 1)[-1] != "if" else ():
            plain = set(value) <= {"const", "enum", "minLength"} or not value
            refined = "type" in value and key == "attributes" or key == "passphrase" and "$ref" in value
            if not plain and not refined and not is_described(value):
                mistakes.append(f"{place}: {key} is not described")
        for key, value in schema.items():
            check_descriptions(value, f"{place}.{key}")
    elif isinstance(schema, list):
        for i, value in enumerate(schema):
            check_descriptions(value, f"{place}.{i}")


jsonschema.Draft7Validator.check_schema(SCHEMA)
for name in glob.glob("host/simulation/scenarios/*.json") + glob.glob("tests/morvekctl/scenarios/*.json"):
    mistakes += [f"{name}: {error.message}" for error in VALIDATOR.iter_errors(json.load(open(name)))]
check_edges()
check_agreement()
check_known_words()
check_descriptions(SCHEMA)
for mistake in mistakes:
    print(mistake)
sys.exit(1 if mistakes else 0)
