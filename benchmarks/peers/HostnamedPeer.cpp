#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include <unistd.h>

#include "BusConnection.h"
#include "PropertyPeers.h"

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

}  // namespace

HostnamedPeer::HostnamedPeer(const std::filesystem::path& parent)
    : folder(parent),
      bus(folder.path(), {{place.service, commandIn(folder)}},
          {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder / "bus")}}) {
    NameSetter(connectToBus(bus.address())).set("Living room");
}

/// Left alone it would go on for half a minute.
HostnamedPeer::~HostnamedPeer() {
    pid_t service = 0;
    std::ifstream(folder / "pid") >> service;
    std::error_code gone;
    const auto running = std::filesystem::read_symlink("/proc/" + std::to_string(service) + "/exe", gone);
    if (running.filename() == std::filesystem::path(program).filename()) {
        ::kill(service, SIGTERM);
    }
}

std::unique_ptr<Setter> HostnamedPeer::connect() const {
    return std::make_unique<NameSetter>(connectToBus(bus.address()));
}

void HostnamedPeer::observe(const Report& report) const {
    observeProperty(bus.address(), place, report);
}

}  // namespace Benchmarks
