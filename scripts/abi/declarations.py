#!/usr/bin/env python3
"""Writes the headers that a program was once compiled against, from the baseline of the library.

Usage: declarations.py BASELINE FOLDER
FOLDER/RecordedDeclarations.h   every recorded class, enumeration, table and function under its own name, so that a program
                                compiled with it calls by the recorded places and links to the recorded names
FOLDER/RecordedLayout.h         sizes and values, to be compared with those of today's headers
"""
import pathlib
import re
import sys

import corpus
import facts

STANDARD_HEADERS = ("cstddef", "cstdint", "functional", "map", "memory", "mutex", "string", "unordered_map", "unordered_set",
                    "vector")
PUBLIC_HEADERS = ("CommunicationHandler/MessageType.h", "DeviceAbstractionLayer/AppNameToStringMapping.h", "Metrics/MetricsCache.h",
                  "SettingsHandler/SettingsHandler.h", "VessaLogger/Log.h")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    described = facts.facts_of(corpus.read(sys.argv[1]))
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "RecordedDeclarations.h").write_text(declarations(described), encoding="utf-8")
    (folder / "RecordedLayout.h").write_text(layout(described), encoding="utf-8")


def declarations(described):
    lines = ["#pragma once", "", *(f"#include <{header}>" for header in STANDARD_HEADERS), "", '#include "Utils/Rapidjson.h"', ""]
    for name, (_, values) in described.enumerations.items():
        lines += in_namespace(name, lambda bare, values=values: enumeration(bare, values))
    for name in described.classes:
        lines += in_namespace(name, lambda bare: [f"class {bare};"])
    called = {name: one for name, one in described.classes.items() if one.operations or one.members}
    for name in bases_first(called):
        lines += in_namespace(name, lambda bare, name=name: class_definition(bare, described.classes[name]))
    for namespace, function in described.functions:
        lines += in_namespace(namespace + function.name, lambda _, function=function: [f"{function.text()};"])
    for name, type_name in described.objects:
        lines += in_namespace(name, lambda bare, type_name=type_name: [f"extern {type_name} {bare};"])
    return from_outermost("\n".join(lines) + "\n", described)


def from_outermost(text, described):
    """Our names start at the outermost namespace: one of the classes is called like its namespace."""
    namespaces = {name.split("::")[0] for name in [*described.classes, *described.enumerations]}
    return re.sub(rf"(?<![\w:])({'|'.join(sorted(namespaces))})::", r"::\1::", text)


def in_namespace(qualified, body):
    namespace, _, bare = qualified.rpartition("::")
    return ["", f"namespace {namespace} {{", *body(bare), "}"]


def enumeration(name, values):
    return [f"enum {name} : std::int32_t {{ {', '.join(f'{key} = {value}' for key, value in values.items())} }};"]


def bases_first(classes):
    """The names in an order in which each may be defined."""
    ordered = []

    def visit(name):
        for base, _ in classes[name].bases:
            visit(base)
        if name not in ordered:
            ordered.append(name)

    for name in classes:
        visit(name)
    return ordered


def class_definition(name, described):
    """What a program sees of a class. All is public here, because access leaves no trace in a binary. What the library exports is its to define, the rest is
    for the program to implement."""
    bases = ", ".join(f"public {base}" for base, _ in described.bases)
    lines = [f"class [[gnu::visibility(\"default\")]] {name}{' : ' + bases if bases else ''} {{", "public:"]
    by_place = {operation.place: operation for operation in described.operations if operation.kind == "function"
                and operation.place is not None}
    exported_destructor = any(operation.kind == "destructor" and operation.exported for operation in described.operations)
    destructor = f"    virtual ~{name}(){';' if exported_destructor else ' = default;'}"
    for place, text in sorted(described.places().items()):
        if place in by_place:
            lines.append(f"    virtual {text}{';' if by_place[place].exported else ' = 0;'}")
        elif destructor not in lines:
            lines.append(destructor)
    if described.virtual_destructor and destructor not in lines:
        lines.append(destructor)
    lines += [f"    {'static ' if operation.static else ''}{operation.text()};" for operation in described.operations
              if operation.exported and operation.place is None]
    # A program gives a collaborator's members their values itself.
    lines += [f"    {member.type.removeprefix('const ')} {member.name};" for member in described.members]
    return [*lines, "};"]


def layout(described):
    lines = ["#pragma once", "", *(f'#include "{header}"' for header in PUBLIC_HEADERS), "",
             "// Calls `size` and `value` with what a name stood for when it was recorded, and with what it stands for today.",
             "template <typename Size, typename Value>",
             "void compareWithRecordedLayout(Size size, Value value) {"]
    for name, recorded in described.classes.items():
        lines.append(f'    size("{name}", {recorded.size}UL, sizeof({name}));')
    for name, recorded_size in described.foreign.items():
        lines.append(f'    size("{name}", {recorded_size}UL, sizeof({name}));')
    for name, (size, values) in described.enumerations.items():
        lines.append(f'    size("{name}", {size}UL, sizeof({name}));')
        lines += [f'    value("{name}::{key}", {number}L, static_cast<long>({name}::{key}));' for key, number in values.items()]
    return "\n".join([*lines, "}"]) + "\n"


main()
