#include "DeviceSwitch.h"

#include <cctype>

namespace SettingsCtl {

std::optional<DeviceSwitch> deviceSwitchOf(const Wire::SettingDescription& setting) {
    if (!setting.setByDeviceOnly || setting.kind != Wire::SettingKind::SWITCH) {
        return std::nullopt;
    }
    DeviceSwitch result;
    result.command = setting.key.substr(0, setting.key.rfind("Enabled"));
    for (const char letter : result.command) {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isupper(code) != 0) {
            result.verb += '-';
        }
        result.verb += static_cast<char>(std::tolower(code));
    }
    return result;
}

}  // namespace SettingsCtl
