#include <csignal>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include <unistd.h>

#include "BusConnection.h"
#include "PrivateBus.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

constexpr PropertyPlace place{"org.freedesktop.hostname1", "/org/freedesktop/hostname1", "org.freedesktop.hostname1",
                              "PrettyHostname"};
constexpr const char* program = "/lib/systemd/systemd-hostnamed";

class NameSetter : public Setter {
public:
    explicit NameSetter(Bus connected) : bus(std::move(connected)) {}

    void set(const std::string& value) override {
        check(sd_bus_call_method(bus.get(), place.service, place.object, place.interface, "SetPrettyHostname", nullptr,
                                 nullptr, "sb", value.c_str(), 0),
              "SetPrettyHostname");
    }

private:
    Bus bus;
};

/// What starts the service: in a mount namespace in which /etc is a copy of what it reads there. Its log goes to a
/// file, so that nobody has to read it meanwhile.
std::string commandIn(const TestSupport::TemporaryDirectory& folder) {
    if (::geteuid() != 0) {
        throw std::runtime_error("needs root");
    }
    if (!std::filesystem::exists(program)) {
        throw std::runtime_error(std::string(program) + " is not there");
    }
    const std::string script = folder / "start";
    std::ofstream(script) << "set -e\necho $$ > '" << (folder / "pid") << "'\nmkdir -p '" << (folder / "etc")
                          << "'\ncd /etc\n"
                          << "cp -aL ld.so.cache passwd group nsswitch.conf hostname machine-id os-release '"
                          << (folder / "etc") << "'\nmount --bind '" << (folder / "etc") << "' /etc\nexec " << program
                          << " 2> '" << (folder / "log") << "'\n";
    return "/usr/bin/unshare --mount --uts /bin/sh " + script;
}

class HostnamedPeer : public Peer {
public:
    explicit HostnamedPeer(const std::filesystem::path& parent)
        : folder(parent),
          bus(folder.path(), {{place.service, commandIn(folder)}},
              {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder / "bus")}}) {
        NameSetter(connectToBus(bus.address())).set("Living room");
    }

    /// The service would otherwise run for half a minute.
    ~HostnamedPeer() override {
        pid_t service = 0;
        std::ifstream(folder / "pid") >> service;
        std::error_code gone;
        const auto running = std::filesystem::read_symlink("/proc/" + std::to_string(service) + "/exe", gone);
        if (running.filename() == std::filesystem::path(program).filename()) {
            ::kill(service, SIGTERM);
        }
    }

    std::unique_ptr<Setter> connect() const override {
        return std::make_unique<NameSetter>(connectToBus(bus.address()));
    }
    void observe(const Report& report) const override { observeProperty(bus.address(), place, report); }

private:
    TestSupport::TemporaryDirectory folder;
    PrivateBus bus;
};

}  // namespace

std::unique_ptr<Peer> hostnamedPeer(const std::filesystem::path& parent) {
    return std::make_unique<HostnamedPeer>(parent);
}

}  // namespace Benchmarks
