#include "PrivateBus.h"

#include <fstream>
#include <stdexcept>

namespace Benchmarks {

namespace {

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path) << text;
}

}  // namespace

PrivateBus::PrivateBus(const std::filesystem::path& folder, const std::map<std::string, std::string>& services,
                       const std::map<std::string, std::string>& environment)
    : busAddress("unix:path=" + (folder / "bus").string()) {
    const std::filesystem::path serviceFolder = folder / "services";
    std::filesystem::create_directory(serviceFolder);
    for (const auto& [name, command] : services) {
        writeFile(serviceFolder / (name + ".service"), "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    }
    const std::string configuration = (folder / "bus.conf").string();
    // A session bus's policy.
    writeFile(configuration, "<busconfig><type>session</type><listen>" + busAddress + "</listen><auth>EXTERNAL</auth>" +
                                 "<servicedir>" + serviceFolder.string() + "</servicedir>" +
                                 R"(<policy context="default"><allow send_destination="*" eavesdrop="true"/>)" +
                                 R"(<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)");
    daemon = std::make_unique<TestSupport::ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--config-file=" + configuration, "--nofork", "--nopidfile",
                                 "--nosyslog", "--print-address"},
        environment);
    if (!daemon->output().readLine()) {
        throw std::runtime_error("the message bus did not start: " + daemon->errors().readAll(std::chrono::seconds(1)));
    }
}

}  // namespace Benchmarks
