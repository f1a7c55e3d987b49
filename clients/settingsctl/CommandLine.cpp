#include "CommandLine.h"

#include <algorithm>
#include <set>
#include <sstream>

#include <CLI/CLI.hpp>

#include "Completion.h"
#include "SettingsClient/Errors.h"
#include "Syntax.h"
#include "Timeout.h"
#include "Version.h"
#include "Wire/HostFrame.h"
#include "Wire/Utf8.h"
#include "connection/DefaultSockets.h"
#include "connection/Refusals.h"

namespace SettingsCtl {

namespace {

constexpr const char* rootFooter = R"(Examples:
  settingsctl get
  settingsctl set deviceName "Living room"
  settingsctl watch --json
  settingsctl explain timezone
  settingsctl undo deviceName
  settingsctl doctor
  settingsctl device locale fr-FR

'settingsctl VERB --help' shows a verb's arguments and examples.
Exit status: 0 done, 1 refused, no such value or the result cannot be written, 2 wrong usage, 3 the host cannot be
reached.)";

std::string validTimeout(const std::string& seconds) {
    return timeoutFrom(seconds) ? "" : "'" + seconds + "' is not a number of seconds from 0.001 to 86400";
}

void addOptions(CLI::App& app, Invocation& invocation) {
    Context& context = invocation.context;
    app.add_option("--socket", invocation.sockets.settings,
                   "Socket of the host; default: " + SettingsClient::defaultSockets())
        ->type_name("PATH");
    app.add_option("--device-socket", invocation.sockets.device,
                   "Socket of the simulated device; default: device.sock next to the host's socket")
        ->type_name("PATH");
    CLI::Option* const json = app.add_flag("--json", context.style.json, "Print results as JSON");
    app.add_flag("--value", context.style.bareValues, "Print values only; for changes, the new value")->excludes(json);
    app.add_flag("--quiet", context.style.quiet, "Print no results, only set the exit status");
    app.add_option("--timeout", invocation.timeout, "How long to wait for a reply")
        ->type_name("SECONDS")
        ->check(validTimeout)
        ->capture_default_str();
    app.set_version_flag("--version", versionText(), "Print version and commit, and exit");
}

bool isInBrackets(const std::string& text) {
    return text.size() > 1 && text.front() == '[' && text.back() == ']';
}

/// The verb that was parsed, such as "get" or "device show".
std::string verbOf(const CLI::App& app) {
    std::string name;
    for (auto verbs = app.get_subcommands(); !verbs.empty(); verbs = verbs.front()->get_subcommands()) {
        name += (name.empty() ? "" : " ") + verbs.front()->get_name();
    }
    return name;
}

/// Are the results of the verb values, or changes of values?
bool printsValues(const std::string& verb) {
    static const std::set<std::string> verbs{"get",   "set",     "reset",    "undo", "load",  "device show",
                                             "watch", "history", "selected", "page", "backup"};
    return verbs.count(verb) > 0;
}

/// What the parser cannot check itself. Throws `Failure` (WRONG_USAGE).
void checkArguments(const CLI::App& app, const Invocation& invocation, const std::vector<std::string>& arguments) {
    if (!invocation.run) {
        throw Failure(WRONG_USAGE, "VERB is required, for example 'settingsctl get'; see settingsctl --help");
    }
    const std::string verb = verbOf(app);
    if (invocation.context.style.bareValues && !printsValues(verb)) {
        throw Failure(WRONG_USAGE, "--value does not work with " + verb);
    }
    // The parser splits such a word where a verb takes several.
    if ((verb == "get" || verb == "device locales") && std::any_of(arguments.begin(), arguments.end(), isInBrackets)) {
        throw Failure(WRONG_USAGE, "separate the arguments by spaces, without brackets");
    }
    if (!std::all_of(arguments.begin(), arguments.end(), Wire::isValidUtf8)) {
        throw Failure(WRONG_USAGE, "an argument is not valid UTF-8");
    }
}

std::string usageMessage(const CLI::App* /*app*/, const CLI::Error& error) {
    return "settingsctl: " + escaped(error.what()) + "; see settingsctl --help\n";
}

/// Prints what ended the parsing: the help, the version, or an error.
ExitStatus endOfParsing(const CLI::App& app, const CLI::ParseError& end) {
    std::ostringstream output;
    std::ostringstream errors;
    const bool requested = app.exit(end, output, errors) == 0;
    std::fputs(errors.str().c_str(), stderr);
    print(output.str());
    return requested ? DONE : WRONG_USAGE;
}

ExitStatus parseAndRun(int argumentCount, const char* const* arguments) {
    Invocation invocation;
    CLI::App app("Read, change and watch the settings of a running settings-host.");
    app.name("settingsctl");
    // At most one verb, so that a setting key may have the name of a verb. checkArguments reports a missing one: the
    // parser would do so before it reports unknown words.
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.footer(rootFooter);
    app.failure_message(usageMessage);
    addOptions(app, invocation);
    addSettingsVerbs(app, invocation);
    addScenarioVerbs(app, invocation);
    addDeviceVerbs(app, invocation);
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    const char* const runtimeFolder = SettingsClient::runtimeFolder();
    if (!words.empty() && words.front() == "complete") {
        return complete(app, {words.begin() + 1, words.end()}, runtimeFolder);
    }
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& end) {
        return endOfParsing(app, end);
    }
    checkArguments(app, invocation, words);
    invocation.context.style.colours = wantsColours();
    invocation.context.settingsSockets = SettingsClient::settingsSockets(invocation.sockets, runtimeFolder);
    invocation.context.deviceSockets = SettingsClient::deviceSockets(invocation.sockets, runtimeFolder);
    invocation.context.timeout = timeoutFrom(invocation.timeout).value();
    return invocation.run();
}

/// Reports why the program ends.
ExitStatus fail(ExitStatus status, const std::string& message) {
    printError(message);
    return status;
}

}  // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    try {
        return parseAndRun(argumentCount, arguments);
    } catch (const Failure& failure) {
        return fail(failure.exitStatus(), failure.what());
    } catch (const SettingsClient::InvalidSocketPath& error) {
        return fail(WRONG_USAGE, error.what());
    } catch (const SettingsClient::ConnectionError& error) {
        return fail(UNREACHABLE, error.what());
    } catch (const SettingsClient::RequestRefused& error) {
        return fail(REFUSED, error.what());
    } catch (const SettingsClient::NotSupported& error) {
        return fail(REFUSED, error.what());
    } catch (const SettingsClient::UnexpectedResponse& error) {
        return fail(UNREACHABLE, error.what());
    } catch (const Wire::MalformedFrame& error) {
        return fail(UNREACHABLE, SettingsClient::notAHost(error).what());
    }
}

}  // namespace SettingsCtl
