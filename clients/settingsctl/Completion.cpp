#include "Completion.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "Verbs.h"
#include "Wire/Catalogue.h"
#include "Wire/HostFrame.h"
#include "Wire/Utf8.h"
#include "connection/DeviceCommand.h"

namespace SettingsCtl {

namespace {

using Words = std::vector<std::string>;

/// The lines that are printed.
using Completions = std::vector<std::string>;

std::string completion(const std::string& word, const std::string& description = "") {
    return word + "\t" + description;
}

/// What the words before the one to complete mean to the parser.
struct CommandLine {
    const CLI::App* verb;
    Words arguments;
    std::map<const CLI::Option*, std::string> options;
    /// The option whose value comes next.
    const CLI::Option* pendingOption = nullptr;
    bool optionsEnded = false;
};

bool isOption(const CommandLine& line, const std::string& word) {
    return !line.optionsEnded && word.rfind('-', 0) == 0;
}

/// The option of the verb or of one above it that `word` names, alone or with "=VALUE"; null when there is none.
const CLI::Option* optionNamed(const CLI::App& verb, const std::string& word) {
    const CLI::Option* option = nullptr;
    for (const CLI::App* app = &verb; app != nullptr && option == nullptr; app = app->get_parent()) {
        option = app->get_option_no_throw(word.substr(0, word.find('=')));
    }
    return option;
}

void takeOption(CommandLine& line, const std::string& word) {
    const CLI::Option* const option = optionNamed(*line.verb, word);
    if (option == nullptr) {
        return;
    }
    const std::size_t equals = word.find('=');
    line.options[option] = equals == std::string::npos ? "" : word.substr(equals + 1);
    if (option->get_items_expected_max() > 0 && equals == std::string::npos) {
        line.pendingOption = option;
    }
}

void takeArgument(CommandLine& line, const std::string& word) {
    const auto verbs = line.verb->get_subcommands({});
    const auto verb =
        std::find_if(verbs.begin(), verbs.end(), [&](const CLI::App* app) { return app->check_name(word); });
    if (line.arguments.empty() && verb != verbs.end()) {
        line.verb = *verb;
    } else {
        line.arguments.push_back(word);
    }
}

CommandLine commandLineOf(const CLI::App& parser, Words::const_iterator begin, Words::const_iterator end) {
    CommandLine line{&parser, {}, {}};
    for (auto word = begin; word != end; ++word) {
        if (line.pendingOption != nullptr) {
            // Bash makes three words of "--socket=PATH".
            if (*word != "=") {
                line.options[line.pendingOption] = *word;
                line.pendingOption = nullptr;
            }
        } else if (*word == "--") {
            line.optionsEnded = true;
        } else if (isOption(line, *word)) {
            takeOption(line, *word);
        } else {
            takeArgument(line, *word);
        }
    }
    return line;
}

/// The options of the verb and of those above it that may still be given.
Completions optionsFor(const CommandLine& line) {
    const auto isGiven = [&](const CLI::Option* option) { return line.options.count(option) > 0; };
    std::set<std::string> seen;
    Completions completions;
    for (const CLI::App* app = line.verb; app != nullptr; app = app->get_parent()) {
        for (const CLI::Option* const option : app->get_options()) {
            const auto excludes = option->get_excludes();
            if (option->nonpositional() && !isGiven(option) &&
                std::none_of(excludes.begin(), excludes.end(), isGiven) &&
                seen.insert(option->get_single_name()).second) {
                completions.push_back(completion("--" + option->get_single_name(), option->get_description()));
            }
        }
    }
    return completions;
}

Completions optionValues(const CLI::Option* option) {
    return option != nullptr && option->get_type_name() == "PATH" ? Completions{"files"} : Completions{};
}

/// The argument that `verb` takes at `index`; null when it takes fewer.
const CLI::Option* argumentAt(const CLI::App& verb, std::size_t index) {
    for (const CLI::Option* const option : verb.get_options()) {
        const auto count = static_cast<std::size_t>(option->get_items_expected_max());
        if (option->get_positional() && index < count) {
            return option;
        }
        index -= option->get_positional() ? count : 0;
    }
    return nullptr;
}

/// Further ones have a number after the name.
bool isNamed(const CLI::Option* argument, const char* name) {
    return argument != nullptr && argument->get_single_name().rfind(name, 0) == 0;
}

/// Those that the parser checks an argument against, which it describes as "{on,off}".
Completions choicesOf(const CLI::Option& argument) {
    const std::string type = argument.get_type_name();
    const std::size_t begin = type.find('{');
    Completions completions;
    if (begin != std::string::npos) {
        for (const auto& choice : CLI::detail::split(type.substr(begin + 1, type.find('}') - begin - 1), ',')) {
            completions.push_back(completion(choice));
        }
    }
    return completions;
}

/// Empty without a host that replies quickly.
std::string currentValue(const std::string& key, const SettingsClient::SocketOptions& sockets,
                         const char* runtimeFolder) {
    Context context;
    context.settingsSockets = SettingsClient::settingsSockets(sockets, runtimeFolder);
    context.timeout = std::chrono::seconds(1);
    try {
        return Wire::isValidUtf8(key) ? context.client().get({key})[key] : "";
    } catch (const std::runtime_error&) {
        return "";
    }
}

/// The values of the catalogue and the current one, unless it has a character that cannot be typed.
Completions valuesOf(const std::string& key, const std::string& current) {
    const auto* const setting = Wire::findSetting(key);
    Words values = setting == nullptr ? Words{} : setting->values;
    if (!current.empty() && escaped(current) == current &&
        std::find(values.begin(), values.end(), current) == values.end()) {
        values.push_back(current);
    }
    Completions completions;
    for (const auto& value : values) {
        completions.push_back(completion(value));
    }
    return completions;
}

Completions keys() {
    Completions completions;
    for (const auto& setting : Wire::catalogue()) {
        completions.push_back(completion(setting.key, setting.description));
    }
    return completions;
}

/// The faults that the host has, each as a frame; none without a host that replies quickly.
std::vector<Wire::HostFrame> faultsOf(const SettingsClient::SocketOptions& sockets, const char* runtimeFolder) {
    std::vector<Wire::HostFrame> faults;
    try {
        const auto reply = SettingsClient::executeDeviceCommand(SettingsClient::deviceSockets(sockets, runtimeFolder),
                                                                std::chrono::seconds(1), R"({"command":"faults"})");
        for (const auto& fault : reply.objectsAt({"faults"})) {
            faults.emplace_back(fault);
        }
    } catch (const std::runtime_error&) {
        faults.clear();
    }
    return faults;
}

Completions namesOf(const std::vector<Wire::HostFrame>& faults) {
    Completions completions;
    for (const auto& fault : faults) {
        completions.push_back(
            completion(fault.textAt({"name"}).value_or(""), fault.textAt({"description"}).value_or("")));
    }
    return completions;
}

/// Those of the fault `name`, and "off".
Completions valuesOfFault(const std::string& name, const std::vector<Wire::HostFrame>& faults) {
    Completions completions;
    for (const auto& fault : faults) {
        if (fault.textAt({"name"}) == name) {
            for (const auto& key : fault.textsAt({"settings"}).value_or(Words{})) {
                completions.push_back(completion(key));
            }
        }
    }
    completions.push_back(completion("off"));
    return completions;
}

/// The sockets that the line names.
SettingsClient::SocketOptions socketsOf(const CLI::App& parser, const CommandLine& line) {
    SettingsClient::SocketOptions sockets;
    for (const auto& [name, place] : {std::pair{"--socket", &sockets.settings}, {"--device-socket", &sockets.device}}) {
        const auto socket = line.options.find(parser.get_option(name));
        if (socket != line.options.end()) {
            *place = socket->second;
        }
    }
    return sockets;
}

Completions verbsOf(const CLI::App& app) {
    Completions completions;
    for (const CLI::App* const verb : app.get_subcommands({})) {
        completions.push_back(completion(verb->get_name(), verb->get_description()));
    }
    return completions;
}

Completions argumentsFor(const CLI::App& parser, const CommandLine& line, const char* runtimeFolder) {
    const std::size_t index = line.arguments.size();
    const CLI::Option* const argument = argumentAt(*line.verb, index);
    if (argument == nullptr) {
        return index == 0 ? verbsOf(*line.verb) : Completions{};
    }
    if (isNamed(argument, "KEY")) {
        return keys();
    }
    if (isNamed(argument, "NAME")) {
        return namesOf(faultsOf(socketsOf(parser, line), runtimeFolder));
    }
    if (isNamed(argument, "FILE")) {
        return {"files"};
    }
    const CLI::Option* const previous = index > 0 ? argumentAt(*line.verb, index - 1) : nullptr;
    if (isNamed(argument, "VALUE") && isNamed(previous, "KEY")) {
        const std::string& key = line.arguments.back();
        return valuesOf(key, currentValue(key, socketsOf(parser, line), runtimeFolder));
    }
    if (isNamed(argument, "VALUE") && isNamed(previous, "NAME")) {
        return valuesOfFault(line.arguments.back(), faultsOf(socketsOf(parser, line), runtimeFolder));
    }
    return choicesOf(*argument);
}

Completions completionsOf(const CLI::App& parser, const Words& words, const char* runtimeFolder) {
    const CommandLine line = commandLineOf(parser, words.begin(), words.end() - 1);
    const std::string& last = words.back();
    if (line.pendingOption != nullptr) {
        return optionValues(line.pendingOption);
    }
    if (isOption(line, last)) {
        return last.find('=') == std::string::npos ? optionsFor(line) : optionValues(optionNamed(*line.verb, last));
    }
    return argumentsFor(parser, line, runtimeFolder);
}

}  // namespace

ExitStatus complete(const CLI::App& parser, const std::vector<std::string>& words, const char* runtimeFolder) {
    std::string lines;
    for (const auto& line : completionsOf(parser, words.empty() ? Words{""} : words, runtimeFolder)) {
        lines += line + "\n";
    }
    print(lines);
    return DONE;
}

}  // namespace SettingsCtl
