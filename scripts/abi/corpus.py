"""Reads what abidw says about a library and keeps what programs and libraries must agree on.

Kept are the exported names, and every class and enumeration of the public headers. Types of others (the standard library, the
JSON library) are kept by name and size only: their inside is their makers' business. Copies of inline code that
a library happens to carry are dropped, and so are places in files and the order of abidw, which is that of the folders' names. The
same interface always gives the same text.
"""
import re
import subprocess
import xml.etree.ElementTree as ElementTree

PUBLIC_HEADER = re.compile(r"(^|/)(interfaces|SettingsHandler/include|include/settings-handler-\d+)/.*\.h$")

ABIDW = ["abidw", "--type-id-style", "hash", "--load-all-types", "--no-comp-dir-path", "--no-corpus-path", "--no-elf-needed",
         "--no-architecture", "--no-parameter-names"]

PLACES_IN_FILES = ("filepath", "line", "column", "path")
CLASS_LIKE = ("class-decl", "union-decl")


def describe(library):
    """The normalised description of a shared library that was built with debug information."""
    done = subprocess.run([*ABIDW, str(library)], capture_output=True, text=True)
    if done.returncode or not done.stdout.strip():
        raise SystemExit(f"abidw cannot read {library}: {done.stderr.strip()}")
    return _Normaliser(ElementTree.fromstring(done.stdout)).result()


def read(text_or_path):
    return ElementTree.parse(text_or_path).getroot()


def write(corpus, path):
    ElementTree.indent(corpus)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(ElementTree.tostring(corpus, encoding="unicode") + "\n", encoding="utf-8")


class _Normaliser:
    def __init__(self, corpus):
        self.corpus = corpus
        self.by_id = {}
        for element in corpus.iter():
            # Of several descriptions of a type the complete one counts.
            if "id" in element.attrib and not (element.get("is-declaration-only") and element.get("id") in self.by_id):
                self.by_id[element.get("id")] = element
        self.kept = set()
        self.own = {symbol.get("name") for symbol in corpus.iter("elf-symbol") if _is_own(symbol)}

    def result(self):
        for element in self.corpus.iter():
            if self._is_root(element):
                self._keep(element)
        normal = ElementTree.Element("abi-corpus", self._attributes(self.corpus))
        for part in self.corpus:
            if part.tag == "abi-instr":
                copy = self._copy(part)
                if copy is not None:
                    normal.append(copy)
            else:
                normal.append(_own_only(part))
        return normal

    def _is_root(self, element):
        if element.tag in ("class-decl", "enum-decl"):
            return _is_public(element)
        symbol = (element.get("elf-symbol-id") or "").split("@")[0]
        return element.tag in ("function-decl", "var-decl") and symbol in self.own

    def _keep(self, element):
        """Keeps an element and all that it names."""
        waiting = [element]
        while waiting:
            current = waiting.pop()
            if current in self.kept:
                continue
            self.kept.add(current)
            for part in self._parts(current):
                for inner in part.iter():
                    named = self.by_id.get(inner.get("type-id"))
                    if named is not None:
                        waiting.append(named)
            named = self.by_id.get(current.get("type-id"))
            if named is not None:
                waiting.append(named)

    def _parts(self, element):
        """The parts of an element that others can see."""
        if element.tag not in CLASS_LIKE:
            return list(element)
        if not _is_public(element):
            transparent = element.get("name").startswith(("shared_ptr<", "__shared_ptr<"))
            return [part for part in element if transparent and part.tag in ("base-class", "data-member")]
        return [part for part in element if part.tag != "member-function" or _is_binary_interface(part)]

    def _copy(self, element):
        """A copy without what is not kept; None when nothing is left."""
        inner = []
        if element.tag in ("namespace-decl", "abi-instr", "member-type"):
            inner = sorted((copy for copy in map(self._copy, element) if copy is not None), key=ElementTree.tostring)
            if not inner:
                return None
        elif element.tag in CLASS_LIKE:
            nested = [part for part in element if part.tag == "member-type"]
            inner = [copy for copy in map(self._copy, nested) if copy is not None]
            if element in self.kept:
                inner = [self._plain(part) for part in self._parts(element) if part.tag != "member-type"] + inner
            elif not inner:
                return None
        elif element in self.kept:
            return self._plain(element)
        else:
            return None
        copy = ElementTree.Element(element.tag, self._attributes(element))
        copy.extend(inner)
        return copy

    def _plain(self, element):
        copy = ElementTree.Element(element.tag, self._attributes(element))
        copy.extend(self._plain(part) for part in element)
        return copy

    @staticmethod
    def _attributes(element):
        return {name: value for name, value in element.attrib.items() if name not in PLACES_IN_FILES}


def _is_public(element):
    return PUBLIC_HEADER.search(element.get("filepath") or "") is not None and not element.get("is-declaration-only")


def _is_binary_interface(member_function):
    return (member_function.get("vtable-offset") is not None
            or any(part.get("elf-symbol-id") for part in member_function.iter("function-decl")))


def _is_own(symbol):
    """Not a copy of inline code. The virtual table and the type information may be weak, and are still ours alone."""
    return symbol.get("binding") == "global-binding" or symbol.get("name").startswith(("_ZTV", "_ZTI", "_ZTS"))


def _own_only(symbols):
    copy = ElementTree.Element(symbols.tag)
    copy.extend(symbol for symbol in symbols if _is_own(symbol))
    return copy
