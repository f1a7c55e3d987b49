"""What the programs themselves say of their options, verbs, exit statuses and environment."""
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent

# What reads a variable of the environment, and the files that wrap `getenv` for it.
READERS = r"(?:getenv|folderFrom|managerVariable|managerNumber|isMeantForThisProcess|variable)"
WRAPPERS = {"host/Options.cpp", "kit/service/manager/ManagerVariables.cpp", "clients/settings-mqtt/Options.cpp"}
# What libsystemd reads for those who call it.
LIBSYSTEMD = {"sd_notify(": {"NOTIFY_SOCKET"}, "sd_watchdog_enabled(": {"WATCHDOG_PID", "WATCHDOG_USEC"}}


def help_of(*words):
    return subprocess.run([*words, "--help"], check=True, capture_output=True, text=True).stdout


def options_of(program):
    """{"--storage": True, "--help": False}: does the option take a value?"""
    options = {}
    for line in help_of(program).splitlines():
        match = re.match(r"  (?:-\w,)?(--[\w-]+)( [A-Z]+[ :=])?", line)
        if match:
            options[match.group(1)] = bool(match.group(2))
    return options


def verbs_of(program, *before):
    """["get [KEY...]", "device locale VALUE"]: the verbs and what they take."""
    text = help_of(program, *before)
    names = re.findall(r"^  ([\w-]+) ", text.partition("\nSubcommands:\n")[2].partition("\n\n")[0], re.MULTILINE)
    if names:
        return [verb for name in names for verb in verbs_of(program, *before, name)]
    usage = re.search(r"^Usage: \S+ (.*)$", text, re.MULTILINE).group(1)
    return [usage.replace("[OPTIONS]", "").replace("  ", " ").strip()]


def statuses_of(program):
    return set(re.findall(r"\d", help_of(program).partition("\nExit status:")[2]))


def sources_of(*folders):
    return sorted(path for folder in folders for path in (ROOT / folder).rglob("*.cpp"))


def environment_of(*folders):
    """The variables that the sources in the folders read."""
    names = set()
    for path in sources_of(*folders):
        text = path.read_text()
        place = str(path.relative_to(ROOT))
        names.update(re.findall(READERS + r'\("([A-Z_]+)"\)', text))
        names.update(*(read for call, read in LIBSYSTEMD.items() if call in text))
        if place in WRAPPERS:
            names.update(re.findall(r'\{"([A-Z_]+)", "', text))
        if re.search(r"getenv\((?!\")", text) and place not in WRAPPERS:
            raise SystemExit(f"{place} reads the environment in a way that this check does not see")
    return names


def compare(what, documented, real):
    """The differences, as lines for a person."""
    return ([f"{what}: '{name}' is not documented" for name in sorted(set(real) - set(documented))] +
            [f"{what}: '{name}' is documented, but there is none" for name in sorted(set(documented) - set(real))])
