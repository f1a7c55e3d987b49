"""Says in plain words what differs between two descriptions of an interface, and whom that breaks."""
from dataclasses import dataclass

# Who has which class compiled in, and in which way.
IMPLEMENTERS = {
    "CommunicationHandler::CommunicationHandlerInterface": "transports",
    "SDKWrapper::StorageManagerInterface": "storages",
    "Metrics::MetricsDelegateInterface": "metrics sinks",
    "teskVessa::SDKBridgeInterface": "SDK bridges",
    "teskVessa::NativeBridgeInterface": "observers of the entitlement status",
    "VessaNativeCommon::OrliaLocaleObserverInterface": "observers of the locale",
    "VessaNativeCommon::FriendlyNameObserverInterface": "observers of the friendly name",
    "DeviceAbstractionLayer::AppLaunch": "application launchers",
    "DeviceAbstractionLayer::OrliaDeviceInfoInterface": "sources of device information",
}
CALLERS = {
    "DeviceAbstractionLayer::DeviceInfoObserverInterface": "device layers that notify the handler",
    "DeviceAbstractionLayer::HandsfreeStateObserverInterface": "device layers that notify the handler",
    "SettingsHandler::SettingsHandlerInterface": "programs that call a handler, and handlers derived from ours",
    "SettingsHandler::SettingsHandler": "programs that call a handler, and handlers derived from ours",
}


@dataclass
class Finding:
    where: str
    what: str
    compatible: bool = False

    def whom(self):
        """Who notices, and how."""
        if self.compatible:
            return "nobody: it is an addition"
        if self.where in IMPLEMENTERS:
            return (f"installed {IMPLEMENTERS[self.where]}: they were compiled against the old form, and the library would "
                    "call them by a place or with a type that is not theirs")
        if self.where in CALLERS:
            return f"installed {CALLERS[self.where]}: what they call, or where they keep their own part, has moved"
        if self.where == "what the library needs":
            return "programs that bring component libraries of their own: the new library would not find the name in them"
        return "every program and library that was compiled against the old form"


def compare(old, new):
    """All differences between two `Facts`, in the order in which a person would look for them."""
    findings = []
    if old.soname != new.soname:
        findings.append(Finding("the library", f"its soname was {old.soname}, is {new.soname}"))
    findings += _exports(old, new)
    for name in sorted(old.classes.keys() | new.classes.keys()):
        findings += _class(name, old.classes.get(name), new.classes.get(name))
    for name in sorted(old.enumerations.keys() | new.enumerations.keys()):
        findings += _enumeration(name, old.enumerations.get(name), new.enumerations.get(name))
    findings += _foreign(old, new)
    return findings


def compare_needs(old, new):
    return ([Finding("what the library needs", f"{name} is asked of the component libraries, and was not before")
             for name in new if name not in old]
            + [Finding("what the library needs", f"{name} is asked no more of the component libraries", compatible=True)
               for name in old if name not in new])


def _exports(old, new):
    findings = []
    for symbol in sorted(old.exports.keys() | new.exports.keys()):
        name = (old if symbol in old.exports else new).readable(symbol)
        before, now = old.exports.get(symbol), new.exports.get(symbol)
        if now is None:
            findings.append(Finding("exported names", f"{name} is gone"))
        elif before is None:
            shared = now in old.exports.values() and "(none)" not in now
            advice = f", under {now} that installed libraries have too: give it one of its own" if shared else ""
            findings.append(Finding("exported names", f"{name} is new{advice}", compatible=True))
        elif before != now:
            findings.append(Finding("exported names", f"{name} had {before}, has {now}"))
    results = new.results()
    for symbol, result in sorted(old.results().items()):
        if results.get(symbol, result) != result:
            findings.append(Finding("exported names", f"{old.readable(symbol)} returned {result}, returns {results[symbol]}"))
    return findings


def _class(name, old, new):
    if new is None:
        return [Finding(name, "the class is gone")]
    if old is None:
        return [Finding(name, "the class is new", compatible=True)]
    findings = []
    if old.size != new.size:
        findings.append(Finding(name, f"its size was {old.size} bytes, is {new.size}"))
    if old.bases != new.bases:
        findings.append(Finding(name, f"its bases were {_bases(old)}, are {_bases(new)}"))
    if old.virtual_destructor != new.virtual_destructor:
        findings.append(Finding(name, f"its destructor is {'now' if new.virtual_destructor else 'no longer'} virtual"))
    return findings + _members(name, old, new) + _places(name, old, new)


def _bases(described):
    return ", ".join(f"{base} at byte {offset}" for base, offset in described.bases) or "none"


def _members(name, old, new):
    findings = []
    before = {member.name: member for member in old.members}
    now = {member.name: member for member in new.members}
    for member in [*old.members, *(member for member in new.members if member.name not in before)]:
        was, is_now = before.get(member.name), now.get(member.name)
        if is_now is None:
            renamed = next((other for other in new.members if other.offset == was.offset and other.type == was.type), None)
            words = f"is now called {renamed.name}" if renamed else "is gone"
            findings.append(Finding(name, f"its member {was.name} {words}", compatible=renamed is not None))
        elif was is None:
            taken = any(other.offset == is_now.offset and other.type == is_now.type for other in old.members)
            if not taken:
                findings.append(Finding(name, f"its member {is_now.name} is new, at byte {is_now.offset}"))
        elif was.type != is_now.type:
            findings.append(Finding(name, f"its member {was.name} was a {was.type}, is a {is_now.type}"))
        elif was.offset != is_now.offset:
            findings.append(Finding(name, f"its member {was.name} was at byte {was.offset}, is at byte {is_now.offset}"))
    return findings


def _places(name, old, new):
    """Operations that moved, went or came. Where one took the place of another, that is one finding."""
    before, now = _place_by_operation(old), _place_by_operation(new)
    gone = {place: text for text, place in before.items() if text not in now}
    come = {place: text for text, place in now.items() if text not in before}
    lines = {}
    for place in gone.keys() | come.keys():
        if place in gone and place in come:
            lines[place, 0] = f"place {place} was {gone[place]}, is {come[place]}"
        elif place in gone:
            lines[place, 0] = f"{gone[place]} is gone; it was at place {place}"
        else:
            lines[place, 0] = f"{come[place]} is new, at place {place}"
    for text, place in before.items():
        if now.get(text, place) != place:
            lines[place, 1] = f"{text} was at place {place}, is at place {now[text]}"
    return [Finding(name, lines[key]) for key in sorted(lines)]


def _place_by_operation(described):
    places = {}
    for place, text in sorted(described.places().items()):
        places.setdefault(text, place)
    return places


def _enumeration(name, old, new):
    if new is None:
        return [Finding(name, "the enumeration is gone")]
    if old is None:
        return [Finding(name, "the enumeration is new", compatible=True)]
    findings = []
    if old[0] != new[0]:
        findings.append(Finding(name, f"its size was {old[0]} bytes, is {new[0]}"))
    for enumerator in [*old[1], *(new_one for new_one in new[1] if new_one not in old[1])]:
        was, is_now = old[1].get(enumerator), new[1].get(enumerator)
        if is_now is None:
            findings.append(Finding(name, f"{enumerator} = {was} is gone"))
        elif was is None:
            findings.append(Finding(name, f"{enumerator} = {is_now} is new", compatible=True))
        elif was != is_now:
            findings.append(Finding(name, f"{enumerator} was {was}, is {is_now}"))
    return findings


def _foreign(old, new):
    return [Finding(name, f"this type of another library had {size} bytes, has {new.foreign[name]}")
            for name, size in sorted(old.foreign.items()) if new.foreign.get(name, size) != size]
