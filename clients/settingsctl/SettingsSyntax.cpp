#include <CLI/CLI.hpp>

#include "Syntax.h"

namespace SettingsCtl {

namespace {

void addGet(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb =
        addVerb(app, invocation, "get", "Print settings as key=value lines; all settings if no KEY is given",
                {"get", "get deviceName timezone", "get --value deviceName"},
                [&] { return get(invocation.context, invocation.keys); });
    addKeys(*verb, invocation);
}

void addWatchVerb(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb = addVerb(app, invocation, "watch", "Print changes until interrupted",
                                   {"watch", "watch --json", "watch --no-reconnect"},
                                   [&] { return watch(invocation.context, invocation.reconnect); });
    verb->add_flag("!--no-reconnect", invocation.reconnect, "End with status 3 when the host closes the connection");
}

/// Verbs that change the setting KEY.
void addKeyVerbs(CLI::App& app, Invocation& invocation) {
    CLI::App* const resetVerb =
        addVerb(app, invocation, "reset", "Set KEY to its default and print the result", {"reset captionsFontSize"},
                [&] { return reset(invocation.context, invocation.key); });
    addKey(*resetVerb, invocation);
    CLI::App* const undoVerb =
        addVerb(app, invocation, "undo", "Restore the value that KEY had before its last change; run it again to redo",
                {"undo deviceName"}, [&] { return undo(invocation.context, invocation.key); });
    addKey(*undoVerb, invocation);
}

/// Verbs that tell of the setting KEY, or of all settings.
void addTellingVerbs(CLI::App& app, Invocation& invocation) {
    CLI::App* const historyVerb =
        addVerb(app, invocation, "history", "Print the changes that the host remembers, the oldest first",
                {"history", "history deviceName", "history --json timezone"},
                [&] { return history(invocation.context, invocation.optionalKey); });
    addOptionalKey(*historyVerb, invocation);
    CLI::App* const explainVerb =
        addVerb(app, invocation, "explain", "Print what a setting is, its value, and who changed it last",
                {"explain deviceName", "explain", "explain --json deviceName"},
                [&] { return explain(invocation.context, invocation.optionalKey); });
    addOptionalKey(*explainVerb, invocation);
}

void addFileVerbs(CLI::App& app, Invocation& invocation) {
    addVerb(app, invocation, "dump", "Print the settings that clients may set as a JSON object that load accepts",
            {"dump > settings.json", "dump --json"}, [&] { return dump(invocation.context); });
    CLI::App* const loadVerb = addVerb(
        app, invocation, "load", "Set all settings in FILE, a JSON object of keys and values; - for standard input",
        {"load settings.json", "load --dry-run settings.json", "load - < settings.json"},
        [&] { return load(invocation.context, invocation.file, invocation.dryRun); });
    addAnyKey(*loadVerb, invocation);
    loadVerb->add_flag("--dry-run", invocation.dryRun, "Only print what would change");
    addText(*loadVerb, "FILE", invocation.file, "File with a JSON object");
}

void addRequestVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    addVerb(app, invocation, "selected", "Print whether this assistant is the selected one", {"selected"},
            [&] { return selected(context); });
    addVerb(app, invocation, "open-settings", "Open the assistant's settings application on the device",
            {"open-settings"}, [&] { return openSettings(context); });
    addVerb(app, invocation, "logout",
            "Log the user out: erase the stored settings and switch off hands-free and both always-on modes",
            {"logout"}, [&] { return logOut(context); });
}

void addAdministrationVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    CLI::App* const pageVerb =
        addVerb(app, invocation, "page", "Print the address of the settings pages, including its key",
                {"page", "page --new-key"}, [&] { return page(context, invocation.newKey); });
    pageVerb->add_flag("--new-key", invocation.newKey, "Replace the key first; browsers with the old key lose access");
    addVerb(app, invocation, "backup", "Back up the host's database and print the path of the backup", {"backup"},
            [&] { return backUp(context); });
    addVerb(app, invocation, "doctor", "Check host, sockets, storage, disk, clock and bridges, and print what to do",
            {"doctor", "doctor --quiet || settingsctl doctor"}, [&] { return doctor(context); });
}

}  // namespace

void addSettingsVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    addGet(app, invocation);
    addSetVerb(app, invocation);
    addKeyVerbs(app, invocation);
    addWatchVerb(app, invocation);
    addTellingVerbs(app, invocation);
    addVerb(app, invocation, "list", "Print the keys of all settings, one per line", {"list", "list --json"},
            [&] { return list(context); });
    addFileVerbs(app, invocation);
    addRequestVerbs(app, invocation);
    addAdministrationVerbs(app, invocation);
}

}  // namespace SettingsCtl
