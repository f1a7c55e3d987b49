#include <stdexcept>

#include "BusConnection.h"
#include "HostCommand.h"
#include "Peer.h"
#include "PrivateBus.h"
#include "support/ChildProcess.h"

namespace Benchmarks {

namespace {

constexpr PropertyPlace place{"org.settingshandler.Settings1", "/org/settingshandler/Settings1/Personal",
                              "org.settingshandler.Settings1", "DeviceName"};

class BridgePeer : public Peer {
public:
    explicit BridgePeer(const std::filesystem::path& parent) : folder(parent), host(hostCommand(folder, 1)) {
        if (!host.output().readLine()) {
            throw std::runtime_error("the host did not start");
        }
        bridge.emplace(std::vector<std::string>{SETTINGS_DBUS, "--socket", folder / "settings.sock"},
                       std::map<std::string, std::string>{{"DBUS_SYSTEM_BUS_ADDRESS", bus.address()}});
        // It logs that it has connected to the host, and then that it serves.
        if (!bridge->errors().readLine() || !bridge->errors().readLine()) {
            throw std::runtime_error("the bridge did not start");
        }
    }

    std::unique_ptr<Setter> connect() const override { return propertySetter(bus.address(), place); }
    void observe(const Report& report) const override { observeProperty(bus.address(), place, report); }

private:
    TestSupport::TemporaryDirectory folder;
    PrivateBus bus{folder.path(), {}, {}};
    TestSupport::ChildProcess host;
    std::optional<TestSupport::ChildProcess> bridge;
};

}  // namespace

std::unique_ptr<Peer> bridgePeer(const std::filesystem::path& parent) {
    return std::make_unique<BridgePeer>(parent);
}

}  // namespace Benchmarks
