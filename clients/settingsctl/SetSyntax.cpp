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

}  // namespace

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

}  // namespace SettingsCtl
