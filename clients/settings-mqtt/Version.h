#pragma once

namespace SettingsMqtt {

/// What `--version` prints: the program, its version, and the commit that it was built from.
const char* versionText();

}  // namespace SettingsMqtt
