"""What binaries rely on, taken from a normalised description: places, sizes, offsets, values and names."""
import re
import subprocess
from dataclasses import dataclass, field

DEFAULT_ARGUMENTS = ("std::allocator<", "std::less<", "std::hash<", "std::equal_to<", "std::char_traits<")


@dataclass
class Member:
    name: str
    type: str
    offset: int
    access: str


@dataclass
class Operation:
    """A member function that is called by its place, by its name, or by both."""
    name: str
    result: str
    parameters: list
    access: str
    symbol: str
    place: int = None
    exported: bool = False
    static: bool = False
    constant: bool = False
    kind: str = "function"

    def text(self):
        suffix = " const" if self.constant else ""
        return f"{self.result} {self.name}({', '.join(self.parameters)}){suffix}".strip()


@dataclass
class Class:
    size: int
    bases: list = field(default_factory=list)
    members: list = field(default_factory=list)
    operations: list = field(default_factory=list)
    virtual_destructor: bool = False

    def places(self):
        """Operation text by place in the virtual table. Where the table is the class's own, the destructor's two entries are
        the gap that the others leave, or the end; a base that comes first has them otherwise."""
        by_place = {operation.place: operation.text() for operation in self.operations
                    if operation.place is not None and operation.kind == "function"}
        if self.virtual_destructor and 0 in by_place and not self.bases:
            gaps = [place for place in range(max(by_place)) if place not in by_place]
            for place in gaps[:2] or (max(by_place) + 1, max(by_place) + 2):
                by_place[place] = "the destructor"
        return by_place


@dataclass
class Facts:
    soname: str
    exports: dict = field(default_factory=dict)      # symbol: what is known of it
    classes: dict = field(default_factory=dict)
    enumerations: dict = field(default_factory=dict)  # name: (size, {enumerator: value})
    foreign: dict = field(default_factory=dict)       # type of others: size
    functions: list = field(default_factory=list)     # exported functions that are no members: (namespace, Operation)
    objects: list = field(default_factory=list)       # exported objects: (qualified name, type)
    names: dict = field(default_factory=dict)         # symbol: as people write it

    def readable(self, symbol):
        return self.names.get(symbol, symbol)

    def results(self):
        """What each exported function returns, which its symbol does not tell."""
        operations = [operation for described in self.classes.values() for operation in described.operations]
        operations += [operation for _, operation in self.functions]
        return {operation.symbol: operation.result for operation in operations if operation.exported}


def facts_of(corpus):
    return _Reader(corpus).facts


class _Reader:
    def __init__(self, corpus):
        self.facts = Facts(corpus.get("soname"))
        self.by_id, self.qualified = {}, {}
        for unit in corpus.iter("abi-instr"):
            self._index(unit, "")
        for unit in corpus.iter("abi-instr"):
            self._read(unit, "")
        for symbol in corpus.iter("elf-symbol"):
            size = "" if symbol.get("type") == "func-type" else f" and {symbol.get('size')} bytes"
            self.facts.exports[symbol.get("name")] = f"the version {symbol.get('version') or '(none)'}{size}"
        self.facts.names = dict(zip(self.facts.exports, demangled(self.facts.exports)))

    def _index(self, scope, prefix):
        for element in scope:
            name = element.get("name") or ""
            if "id" in element.attrib and (element.get("id") not in self.by_id or not element.get("is-declaration-only")):
                self.by_id[element.get("id")] = element
                self.qualified[element.get("id")] = prefix + name
            if element.tag in ("namespace-decl", "class-decl", "union-decl"):
                self._index(element, f"{prefix}{name}::")
            elif element.tag == "member-type":
                self._index(element, prefix)

    def _read(self, scope, prefix):
        for element in scope:
            name = prefix + (element.get("name") or "")
            if element.tag == "namespace-decl":
                self._read(element, f"{name}::")
            elif element.tag == "class-decl" and not element.get("is-declaration-only"):
                self._class(element, name)
            elif element.tag == "enum-decl":
                size = int(self.by_id[element.find("underlying-type").get("type-id")].get("size-in-bits")) // 8
                self.facts.enumerations[name] = (size, {value.get("name"): int(value.get("value"))
                                                        for value in element.findall("enumerator")})
            elif element.tag == "function-decl" and element.get("elf-symbol-id"):
                self.facts.functions.append((prefix, self._operation(element, "public")))
            elif element.tag == "var-decl" and element.get("elf-symbol-id"):
                self.facts.objects.append((name, self.type_name(element.get("type-id"))))

    def _class(self, element, name):
        if name.startswith(("std::", "rapidjson::", "__gnu_cxx::")):
            if element.get("size-in-bits") and not name.startswith(("std::__s", "std::remove_")):
                self.facts.foreign[shortened(name)] = int(element.get("size-in-bits")) // 8
            return
        described = Class(size=int(element.get("size-in-bits", "0")) // 8)
        for part in element:
            if part.tag == "base-class":
                described.bases.append((self.type_name(part.get("type-id")),
                                        int(part.get("layout-offset-in-bits", "0")) // 8))
            elif part.tag == "data-member" and not part.get("static"):
                variable = part.find("var-decl")
                described.members.append(Member(variable.get("name"), self.type_name(variable.get("type-id")),
                                                int(part.get("layout-offset-in-bits")) // 8, part.get("access")))
            elif part.tag == "member-function":
                self._member_function(part, described)
        self.facts.classes[name] = described

    def _member_function(self, part, described):
        function = part.find("function-decl")
        operation = self._operation(function, part.get("access"))
        operation.static = part.get("static") == "yes"
        for kind in ("constructor", "destructor"):
            if part.get(kind):
                operation.kind, operation.result = kind, ""
        if part.get("vtable-offset") is not None:
            described.virtual_destructor |= operation.kind == "destructor"
            operation.place = int(part.get("vtable-offset"))
        if not any(other.symbol == operation.symbol and other.kind == operation.kind for other in described.operations):
            described.operations.append(operation)

    def _operation(self, function, access):
        parameters = [self.type_name(part.get("type-id")) for part in function.findall("parameter")
                      if not part.get("is-artificial")]
        called_on = next((self.type_name(part.get("type-id")) for part in function.findall("parameter")
                          if part.get("is-artificial")), "")
        result = function.find("return")
        return Operation(name=function.get("name"), result=self.type_name(result.get("type-id")), parameters=parameters,
                         access=access, symbol=function.get("mangled-name"), exported=bool(function.get("elf-symbol-id")),
                         constant=called_on.startswith("const "))

    def type_name(self, identity):
        element = self.by_id[identity]
        inner = element.get("type-id")
        if element.tag == "pointer-type-def":
            return self.type_name(inner) + "*"
        if element.tag == "reference-type-def":
            return self.type_name(inner) + ("&&" if element.get("kind") == "rvalue" else "&")
        if element.tag == "qualified-type-def":
            qualifiers = [word for word in ("const", "volatile") if element.get(word)]
            return " ".join([*qualifiers, self.type_name(inner)])
        return shortened(self.qualified[identity])


def shortened(name):
    """A type's name as people write it, without the template arguments that nobody gives."""
    name = name.replace("std::__cxx11::", "std::").replace("long int", "long")
    output, position = "", 0
    while position < len(name):
        start = next((match for word in DEFAULT_ARGUMENTS
                      if (match := re.compile(r",\s*" + re.escape(word)).match(name, position))), None)
        if start is None:
            output += name[position]
            position += 1
        else:
            position = _end_of_template(name, start.end() - 1)
    output = re.sub(r"\s+>", ">", output)
    return output.replace("std::basic_string<char>", "std::string")


def _end_of_template(name, position):
    """Where the template argument list that opens at `position` has ended."""
    depth = 0
    for index in range(position, len(name)):
        depth += {"<": 1, ">": -1}.get(name[index], 0)
        if depth == 0:
            return index + 1
    raise ValueError(name)


def demangled(symbols):
    """Readable names of linker symbols, in their order."""
    done = subprocess.run(["c++filt"], input="\n".join(symbols), capture_output=True, text=True, check=True)
    return [shortened(line).replace("[abi:cxx11]", "") for line in done.stdout.splitlines()]


def needed_names(library, namespaces):
    """What a library wants from the component libraries that the program brings."""
    done = subprocess.run(["nm", "--dynamic", "--undefined-only", "--without-symbol-versions", str(library)],
                          capture_output=True, text=True, check=True)
    symbols = [line.split()[-1] for line in done.stdout.splitlines()]
    pairs = zip(symbols, demangled(symbols))
    return sorted(name for _, name in pairs if name.startswith(tuple(f"{namespace}::" for namespace in namespaces)))
