#include "Callers.h"

#include <cstdint>

#include "Wire/FrameInspector.h"
#include "Wire/Utf8.h"

namespace SettingsDbus {

namespace {

constexpr std::size_t maximumNames = 256;

/// Empty when it is not known.
std::string programOf(sd_bus* bus, const char* uniqueName) {
    sd_bus_creds* found = nullptr;
    constexpr std::uint64_t wanted = SD_BUS_CREDS_PID | SD_BUS_CREDS_COMM | SD_BUS_CREDS_AUGMENT;
    if (sd_bus_get_name_creds(bus, uniqueName, wanted, &found) < 0) {
        return "";
    }
    const std::unique_ptr<sd_bus_creds, decltype(&sd_bus_creds_unref)> credentials(found, &sd_bus_creds_unref);
    const char* program = nullptr;
    return sd_bus_creds_get_comm(credentials.get(), &program) < 0 ? "" : program;
}

}  // namespace

const std::string& Callers::nameOf(sd_bus_message* call) {
    const char* const sender = sd_bus_message_get_sender(call);
    const std::string uniqueName = sender == nullptr ? "?" : sender;
    const auto known = names.find(uniqueName);
    if (known != names.end()) {
        return known->second;
    }
    if (names.size() >= maximumNames) {
        names.clear();
    }
    const std::string program = programOf(sd_bus_message_get_bus(call), uniqueName.c_str());
    const std::string name = uniqueName + " " + program;
    const bool isUsable = !program.empty() && Wire::isValidUtf8(name) && Wire::isClientName(name);
    return names.emplace(uniqueName, isUsable ? name : uniqueName).first->second;
}

}  // namespace SettingsDbus
