#include <CLI/CLI.hpp>

#include "Syntax.h"

namespace SettingsCtl {

void addSettingsVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    CLI::App* const getVerb = addVerb(
        app, invocation, "get", "Print settings as key=value lines; all settings if no KEY is given",
        {"get", "get deviceName timezone", "get --value deviceName"}, [&] { return get(context, invocation.keys); });
    addKeys(*getVerb, invocation);
    CLI::App* const setVerb = addVerb(app, invocation, "set", "Set KEY to VALUE and print the result",
                                      {R"(set deviceName "Living room")", R"(set orliaLocale '["fr-FR","en-US"]')",
                                       "set deviceName -- --odd--", "set --json timezone Europe/Paris"},
                                      [&] { return set(context, invocation.key, invocation.value); });
    addKeyAndValue(*setVerb, invocation);
    addVerb(app, invocation, "watch", "Print changes until interrupted", {"watch", "watch --json"},
            [&] { return watch(context); });
    addVerb(app, invocation, "list", "Print the keys of all settings, one per line", {"list", "list --json"},
            [&] { return list(context); });
    addVerb(app, invocation, "selected", "Print whether this assistant is the selected one", {"selected"},
            [&] { return selected(context); });
    CLI::App* const pageVerb =
        addVerb(app, invocation, "page", "Print the address of the settings pages, including its key",
                {"page", "page --new-key"}, [&] { return page(context, invocation.newKey); });
    pageVerb->add_flag("--new-key", invocation.newKey, "Replace the key first; browsers with the old key lose access");
    addVerb(app, invocation, "open-settings", "Open the assistant's settings application on the device",
            {"open-settings"}, [&] { return openSettings(context); });
    addVerb(app, invocation, "logout", "Log the user out: clear the stored settings, switch the always-on modes off",
            {"logout"}, [&] { return logOut(context); });
}

}  // namespace SettingsCtl
