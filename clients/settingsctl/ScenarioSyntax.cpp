#include <charconv>
#include <optional>

#include <CLI/CLI.hpp>

#include "Syntax.h"

namespace SettingsCtl {

namespace {

/// 0 for "max".
std::optional<double> speedFrom(const std::string& text) {
    if (text == "max") {
        return 0;
    }
    double speed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, speed);
    const bool isInRange = speed >= 0.001 && speed <= 1000000;
    return result.ec == std::errc() && result.ptr == end && isInRange ? std::optional(speed) : std::nullopt;
}

std::string validSpeed(const std::string& text) {
    return speedFrom(text) ? "" : "'" + text + "' is neither max nor a number from 0.001 to 1000000";
}

void addRecord(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb = addVerb(app, invocation, "record",
                                   "Record the traffic between the host and its clients to FILE until interrupted",
                                   {"record report.jsonl", "record --with-values -"},
                                   [&] { return record(invocation.context, invocation.file, invocation.withValues); });
    addText(*verb, "FILE", invocation.file, "File for a scenario, replaced if it exists; - for standard output");
    verb->add_flag("--with-values", invocation.withValues, "Write personal values, such as names, as they are");
}

void addReplay(CLI::App& app, Invocation& invocation) {
    CLI::App* const verb =
        addVerb(app, invocation, "replay",
                "Replay the scenario in FILE and compare what the host sends with it; - for standard input",
                {"replay report.jsonl", "replay --speed max --start-host report.jsonl"}, [&] {
                    return replay(invocation.context, invocation.file, speedFrom(invocation.speed).value(),
                                  invocation.startsHost);
                });
    addText(*verb, "FILE", invocation.file, "File with a scenario");
    verb->add_option("--speed", invocation.speed, "Play N times as fast; max: without pauses")
        ->type_name("N")
        ->check(validSpeed)
        ->capture_default_str();
    verb->add_flag("--start-host", invocation.startsHost, "Replay against a new settings-host in a temporary folder");
}

}  // namespace

void addScenarioVerbs(CLI::App& app, Invocation& invocation) {
    addRecord(app, invocation);
    addReplay(app, invocation);
}

}  // namespace SettingsCtl
