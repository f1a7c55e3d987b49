#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "SettingsHandlerKit/ClientListener.h"
#include "Utils/Rapidjson.h"
#include "simulation/DeviceCommands.h"
#include "simulation/MessageTrace.h"

namespace Wire {
struct Refusal;
}

namespace SettingsHost {

/// The address of the settings pages, with their key.
struct PageAddress {
    /// Empty when the host serves no pages.
    std::function<std::string()> current;
    /// Makes a new key; the old one and its cookies are no longer valid. Returns: the new address; nothing when it
    /// could not be stored, and then nothing has changed.
    std::function<std::optional<std::string>()> renewed;
};

/// Serves the clients of the device listeners: commands for the simulated device, and two of the host's own, `page`
/// (the address of the settings pages) and `trace` (see `MessageTrace`). Each frame gets one reply, in order.
///
/// `page` is answered on the Unix socket alone, and is not traced: a page whose cookie will expire must not get the key
/// for a new one.
class DeviceConsole : public SettingsHandlerKit::ClientListener {
public:
    /// Runs an action with events of the device.
    using Perform = std::function<void(const std::function<void()>&)>;

    DeviceConsole(Perform perform, std::shared_ptr<SettingsHandlerKit::TrafficObserver> traffic,
                  std::shared_ptr<MessageTrace> trace, PageAddress pageAddress);

    /// What executes the commands for the device; to be called before the first one comes.
    void obey(DeviceCommands deviceCommands) { commands.emplace(std::move(deviceCommands)); }

    void connected(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void disconnected(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                      SettingsHandlerKit::DisconnectReason reason) override;
    void received(const std::shared_ptr<SettingsHandlerKit::Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void refused(SettingsHandlerKit::Origin origin) override;

private:
    std::string replyTo(const std::shared_ptr<SettingsHandlerKit::Client>& client, const std::string& command,
                        const rapidjson::Value& request);
    std::string switchTrace(const std::shared_ptr<SettingsHandlerKit::Client>& client, const rapidjson::Value& request);
    std::string showPage(const rapidjson::Value& request);
    std::string execute(const rapidjson::Value& request);
    static std::string orFailure(const std::function<std::string()>& action);
    void refuse(SettingsHandlerKit::Client& client, const Wire::Refusal& refusal);

    std::optional<DeviceCommands> commands;
    Perform perform;
    std::shared_ptr<SettingsHandlerKit::TrafficObserver> traffic;
    std::shared_ptr<MessageTrace> trace;
    PageAddress pageAddress;
};

}  // namespace SettingsHost
