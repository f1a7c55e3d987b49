#include "connection/DeviceCommand.h"

#include "connection/Connection.h"
#include "connection/Refusals.h"

namespace SettingsClient {

Wire::HostFrame executeDeviceCommand(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout,
                                     const std::string& command) {
    Connection connection(candidates, timeout);
    connection.send({command});
    Wire::HostFrame reply(connection.receive(connection.deadline()));
    throwIfRefusal(reply);
    return reply;
}

}  // namespace SettingsClient
