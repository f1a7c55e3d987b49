#include "Syntax.h"

#include <utility>

#include <CLI/CLI.hpp>

namespace SettingsCtl {

CLI::App* addVerb(CLI::App& app, Invocation& invocation, const std::string& name, const std::string& description,
                  const std::vector<std::string>& examples, std::function<ExitStatus()> action) {
    CLI::App* const verb = app.add_subcommand(name, description);
    std::string footer = "Examples:\n";
    for (const auto& example : examples) {
        footer += "  settingsctl " + example + "\n";
    }
    verb->footer(footer + "\n'settingsctl --help' lists the options of all verbs, such as --json.");
    verb->callback([&invocation, action = std::move(action)] { invocation.run = action; });
    return verb;
}

CLI::Option* addTexts(CLI::App& verb, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description) {
    return verb.add_option(name, texts, description)->type_name("");
}

CLI::Option* addText(CLI::App& verb, const std::string& name, std::string& text, const std::string& description) {
    return verb.add_option(name, text, description)->type_name("")->required();
}

void addAnyKey(CLI::App& verb, Invocation& invocation) {
    verb.add_flag("--any-key", invocation.context.anyKey, "Accept keys that are not in the catalogue");
}

void addKey(CLI::App& verb, Invocation& invocation) {
    addAnyKey(verb, invocation);
    addText(verb, "KEY", invocation.key, "Setting key");
}

void addOptionalKey(CLI::App& verb, Invocation& invocation) {
    addAnyKey(verb, invocation);
    verb.add_option("KEY", invocation.optionalKey, "Setting key")->type_name("");
}

void addKeys(CLI::App& verb, Invocation& invocation) {
    addAnyKey(verb, invocation);
    addTexts(verb, "KEY", invocation.keys, "Setting keys");
}

void addKeyAndValue(CLI::App& verb, Invocation& invocation) {
    addKey(verb, invocation);
    addText(verb, "VALUE", invocation.value, "New value");
}

}  // namespace SettingsCtl
