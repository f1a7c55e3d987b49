#include "SoakDevice.h"

#include <stdexcept>
#include <vector>

namespace Endurance {

namespace {

/// The beginnings of the replies to the commands below, in order.
const std::vector<std::string>& answerStarts() {
    static const std::string done = R"({"ok":true})";
    static const std::vector<std::string> starts{done,
                                                 done,
                                                 done,
                                                 done,
                                                 done,
                                                 done,
                                                 done,
                                                 R"({"device":{)",
                                                 R"({"error":{"code":"unknown-command")",
                                                 R"({"error":{"code":"not-passed-on")"};
    return starts;
}

}  // namespace

std::uint64_t SoakDevice::sendCommands(std::uint64_t round) {
    const std::string mark = std::to_string(round);
    const std::string enabled = round % 2 == 0 ? "true" : "false";
    const std::string commands =
        R"({"command":"locale","value":"d-)" + mark + "\"}\n" + R"({"command":"locales","values":["e-)" + mark +
        "\",\"en-US\"]}\n" + R"({"command":"timezone","value":"Device/)" + mark + "\"}\n" +
        R"({"command":"handsfree","enabled":)" + enabled + "}\n" + R"({"command":"captions","enabled":)" + enabled +
        "}\n" + R"({"command":"doNotDisturb","enabled":)" + enabled + "}\n" +
        R"({"command":"setting","key":"deviceName","value":"Den )" + mark + "\"}\n" + R"({"command":"show"})" + "\n" +
        R"({"command":"fly )" + mark + "\"}\n" + R"({"command":"setting","key":"orliaLocale","value":"{}"})" + "\n";
    if (!connection.send(commands)) {
        throw std::runtime_error("the host disconnected the device's client");
    }
    return answerStarts().size();
}

void SoakDevice::receiveAnswers() {
    for (const auto& start : answerStarts()) {
        const auto line = connection.receiveLine();
        if (!line || line->compare(0, start.size(), start) != 0) {
            throw std::runtime_error("the device's client received, instead of " + start + ": " +
                                     line.value_or("nothing"));
        }
    }
}

}  // namespace Endurance
