#include <memory>
#include <utility>

#include <CLI/CLI.hpp>

#include "Syntax.h"

namespace SettingsCtl {

namespace {

/// What one batch takes.
constexpr int maximumPairs = 64;

/// The help of `set`, which shows the further pairs as one.
class SetHelp : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        std::string help = Formatter::make_help(app, std::move(name), mode);
        const std::size_t further = help.find(" []");
        help.replace(further, help.find('\n', further) - further, " [KEY VALUE]...");
        // Their group has no name, and a blank line all the same.
        return help.erase(help.find("\n\n\n"), 1);
    }
};

/// Each word is an argument of its own: of an argument with several words the parser would take brackets and commas for
/// a list.
void addPairs(CLI::App& verb, Invocation& invocation) {
    const auto take = [&](const std::string& word) { invocation.keysAndValues.push_back(word); };
    for (int pair = 1; pair <= maximumPairs; ++pair) {
        const std::string number = pair == 1 ? "" : std::to_string(pair);
        for (const auto& [name, description] : {std::pair("KEY", "Setting key"), std::pair("VALUE", "New value")}) {
            CLI::Option* const word = verb.add_option_function<std::string>(name + number, take, description);
            word->type_name("")->required(pair == 1);
            if (pair > 1) {
                word->group("");
            }
        }
    }
    verb.formatter(std::make_shared<SetHelp>());
}

void addSetVerb(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb =
        addVerb(app, invocation, "set", "Set KEY to VALUE and print the result; several pairs are stored together",
                {R"(set deviceName "Living room")", R"(set orliaLocale '["fr-FR","en-US"]')",
                 "set captionsStyles STYLE_WHITE_ON_BLACK captionsFontSize FONT_LARGE", "set deviceName -- --odd--",
                 "set --json timezone Europe/Paris"},
                [&] { return set(invocation.context, invocation.keysAndValues, invocation.force); });
    addPairs(*verb, invocation);
    verb->add_flag("--force", invocation.force, "Set it even if the host has seen a request with a newer time stamp");
    addAnyKey(*verb, invocation);
}

void addWatchVerb(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb = addVerb(app, invocation, "watch", "Print changes until interrupted",
                                   {"watch", "watch --json", "watch --no-reconnect"},
                                   [&] { return watch(invocation.context, invocation.reconnect); });
    verb->add_flag("!--no-reconnect", invocation.reconnect, "End with status 3 when the host closes the connection");
}

}  // namespace

void addSettingsVerbs(CLI::App& app, Invocation& invocation) {
    const Context& context = invocation.context;
    CLI::App* const getVerb = addVerb(
        app, invocation, "get", "Print settings as key=value lines; all settings if no KEY is given",
        {"get", "get deviceName timezone", "get --value deviceName"}, [&] { return get(context, invocation.keys); });
    addKeys(*getVerb, invocation);
    addSetVerb(app, invocation);
    addWatchVerb(app, invocation);
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
