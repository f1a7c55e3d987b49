#pragma once

#include <memory>
#include <string>

#include "commands/DeviceCommands.h"
#include "console/MessageTrace.h"
#include "transport/MessageHub.h"

namespace SettingsHost {

/// Serves the clients of the device's doors: commands for the simulated device, and two of the host's own, `page` (the
/// address of the settings pages) and `trace` (see `MessageTrace`). Each frame gets one answer, in order.
class DeviceConsole {
public:
    /// `pageAddress` is empty when the host serves no pages. Errors and notices go out through `hub`.
    DeviceConsole(DeviceCommands commands, std::shared_ptr<MessageHub> hub, std::shared_ptr<TrafficObserver> traffic,
                  std::shared_ptr<MessageTrace> trace, std::string pageAddress);

    void arrived(const std::shared_ptr<Client>& client);
    void left(const std::shared_ptr<Client>& client, Departure departure);
    void receive(const std::shared_ptr<Client>& client, const std::string& frame);
    void refuseTooLarge(const std::shared_ptr<Client>& client);

private:
    std::string answerTo(const std::shared_ptr<Client>& client, const std::string& command, const std::string& frame);
    std::string switchTrace(const std::shared_ptr<Client>& client, const std::string& frame);
    std::string showPage() const;
    std::string execute(const std::string& frame);
    void refuse(const std::shared_ptr<Client>& client, const std::string& code, const std::string& message);

    DeviceCommands commands;
    std::shared_ptr<MessageHub> hub;
    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<MessageTrace> trace;
    std::string pageAddress;
};

}  // namespace SettingsHost
