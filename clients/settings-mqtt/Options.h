#pragma once

#include <string>

#include "Bridge.h"
#include "bridge/CommandLine.h"
#include "mqtt/Connection.h"

namespace SettingsMqtt {

struct Options {
    SettingsBridge::Options common;
    BridgeOptions bridge;
    Mqtt::ConnectionOptions broker;
    std::string stateFolder;
};

/// Errors: `SettingsBridge::CommandLineEnd`.
Options parseOptions(int argumentCount, const char* const* arguments);

}  // namespace SettingsMqtt
