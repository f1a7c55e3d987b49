#include <optional>
#include <utility>

#include "Verbs.h"
#include "Wire/ControlCharacters.h"
#include "scenarios/Player.h"

namespace SettingsCtl {

namespace {

void printDifference(const Context& context, const std::string& file, const Difference& difference) {
    const std::string line = std::to_string(difference.line);
    if (context.style.json) {
        printLine(context.style, "{\"difference\":" +
                                     jsonObject({{"line", line},
                                                 {"message", difference.message},
                                                 {"expected", difference.expected},
                                                 {"got", difference.got}}) +
                                     "}");
        return;
    }
    const auto shown = [](const std::string& text) { return Wire::escapeControlCharacters(text); };
    printLine(context.style, shown(file) + ":" + line + ": " + shown(difference.message));
    for (const auto& [name, frame] : {std::pair{"expected: ", difference.expected}, {"got:      ", difference.got}}) {
        if (!frame.empty()) {
            printLine(context.style, name + shown(frame));
        }
    }
}

}  // namespace

ExitStatus replay(const Context& context, const std::string& file, double speed, bool startsHost) {
    const Scenario scenario = scenarioIn(file);
    const std::size_t line = lineForOwnHost(scenario);
    if (line > 0 && !startsHost) {
        throw failureAt(file, line,
                        "a scenario with a world or steps of the host needs a host of its own: --start-host");
    }
    PlayOptions options{context.settingsSockets, context.deviceSockets, context.timeout, speed};
    std::optional<OwnHost> host;
    if (startsHost) {
        host.emplace(scenario.world);
        options.settingsSockets = SettingsClient::settingsSockets(host->sockets(), nullptr);
        options.deviceSockets = SettingsClient::deviceSockets(host->sockets(), nullptr);
    }
    Player player(scenario, options, host ? &*host : nullptr);
    if (const auto difference = player.play()) {
        printDifference(context, file, *difference);
        return REFUSED;
    }
    const std::string frames = std::to_string(player.frameCount());
    printLine(context.style, context.style.json ? R"({"replay":{"frames":)" + frames + "}}"
                                                : frames + (frames == "1" ? " frame" : " frames") + " as expected");
    return DONE;
}

}  // namespace SettingsCtl
