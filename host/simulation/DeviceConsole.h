#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "server/protocol/MessageHub.h"
#include "simulation/DeviceCommands.h"
#include "simulation/MessageTrace.h"

namespace SettingsHost {

/// The address of the settings pages, which holds their key.
struct PageAddress {
    /// Empty when the host serves no pages.
    std::function<std::string()> current;
    /// Makes a new key and with it all that the old one bought worthless. Returns: the new address; nothing when that
    /// could not be stored, and then all is as before.
    std::function<std::optional<std::string>()> renewed;
};

/// At which of the device's listeners a client is.
enum class DeviceListener { SOCKET, WEB };

/// Serves the clients of the device's listeners: commands for the simulated device, and two of the host's own, `page`
/// (the address of the settings pages) and `trace` (see `MessageTrace`). Each frame gets one answer, in order.
///
/// `page` is for the socket alone, and is not traced: a page whose cookie will be worthless one day must not get the
/// key for it.
class DeviceConsole {
public:
    /// Errors and notices go out through `hub`.
    DeviceConsole(DeviceCommands commands, std::shared_ptr<MessageHub> hub, std::shared_ptr<TrafficObserver> traffic,
                  std::shared_ptr<MessageTrace> trace, PageAddress pageAddress);

    void arrived(const std::shared_ptr<Client>& client);
    void left(const std::shared_ptr<Client>& client, DisconnectReason departure);
    void receive(const std::shared_ptr<Client>& client, const std::string& frame,
                 DeviceListener listener = DeviceListener::SOCKET);
    void refuseTooLarge(const std::shared_ptr<Client>& client);

private:
    std::string answerTo(const std::shared_ptr<Client>& client, const std::string& command, const std::string& frame,
                         DeviceListener listener);
    std::string switchTrace(const std::shared_ptr<Client>& client, const std::string& frame);
    std::string showPage(const std::string& frame);
    std::string execute(const std::string& frame);
    static std::string orFailure(const std::function<std::string()>& action);
    void refuse(const std::shared_ptr<Client>& client, const std::string& code, const std::string& message);

    DeviceCommands commands;
    std::shared_ptr<MessageHub> hub;
    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<MessageTrace> trace;
    PageAddress pageAddress;
};

}  // namespace SettingsHost
