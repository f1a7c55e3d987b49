#include "Fixture.h"

#include <fstream>
#include <stdexcept>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Files.h"
#include "support/Sanitizers.h"

namespace SettingsDbusTests {

namespace {

/// As in the configuration of every system bus.
constexpr const char* systemPolicy = R"(<policy context="default"><allow user="*"/><deny own="*"/>
  <deny send_type="method_call"/><allow send_type="signal"/><allow send_requested_reply="true" send_type="method_return"/>
  <allow send_requested_reply="true" send_type="error"/><allow receive_type="method_call"/>
  <allow receive_type="method_return"/><allow receive_type="error"/><allow receive_type="signal"/>
  <allow send_destination="org.freedesktop.DBus"/></policy>)";

/// What a program printed, without the last line end.
std::string textOf(const Finished& finished) {
    std::string text = finished.output + finished.errors;
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::string policyFor(const std::string& group, const std::string& user) {
    std::string policy = TestSupport::contentOf(POLICY_FILE);
    replaceAll(policy, "user=\"settings-dbus\"", "user=\"" + user + "\"");
    replaceAll(policy, "group=\"settings-host\"", "group=\"" + group + "\"");
    return policy;
}

}  // namespace

Words operator+(Words first, const Words& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Fixture::Fixture() {
    // Other users reach the bus.
    ::chmod(folder.path().c_str(), 0755);
}

std::string Fixture::ownGroup() {
    return ::getgrgid(::getgid())->gr_name;
}

std::string Fixture::otherGroup() {
    return "daemon";
}

std::string Fixture::ownUser() {
    return ::getpwuid(::getuid())->pw_name;
}

void Fixture::startBus(const std::string& group, const std::string& user) {
    std::ofstream(folder / "policy.conf") << policyFor(group, user);
    std::ofstream(folder / "bus.conf") << "<busconfig><type>system</type><listen>unix:path=" << busPath()
                                       << "</listen><auth>EXTERNAL</auth>"
                                       // So that it is the bridge that a flood reaches.
                                       << R"(<limit name="max_replies_per_connection">1000</limit>)" << systemPolicy
                                       << "<include>" << (folder / "policy.conf") << "</include></busconfig>";
    // It logs each message that it refuses, and would wait for a reader of its standard error.
    const std::string log = folder / "bus.log";
    bus.emplace(Words{"sh", "-c", R"(exec "$@" 2> "$0")", log, "dbus-daemon", "--config-file=" + (folder / "bus.conf"),
                      "--nofork", "--nopidfile", "--nosyslog", "--print-address"});
    if (!bus->output().readLine()) {
        throw std::runtime_error("the message bus did not start: " + TestSupport::contentOf(log));
    }
}

void Fixture::startHost(const std::string& runtimeFolder) {
    Words arguments{SETTINGS_HOST_PROGRAM, "--storage", folder / "settings.db", "--no-web", "--log-level", "3"};
    if (TestSupport::sanitized) {
        arguments.emplace_back("--no-sandbox");
    }
    host.emplace(arguments, std::map<std::string, std::string>{
                                {"XDG_RUNTIME_DIR", runtimeFolder.empty() ? folder.path().string() : runtimeFolder}});
    const auto line = host->output().readLine();
    if (!line || line->rfind("ready:", 0) != 0) {
        throw std::runtime_error("settings-host is not ready: " + host->errors().readAll());
    }
}

void Fixture::startBridge() {
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
    waitForLog("serving");
}

void Fixture::startAll() {
    startBus();
    startHost();
    startBridge();
}

void Fixture::startAllWith(FakeHost& fake) {
    startBus();
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
    fake.accept();
    waitForLog("serving");
}

void Fixture::waitForLog(const std::string& text) {
    for (std::optional<std::string> line; (line = bridge->errors().readLine());) {
        if (line->find(text) != std::string::npos) {
            return;
        }
    }
    throw std::runtime_error("the bridge does not log '" + text + "'");
}

std::map<std::string, std::string> Fixture::environment() const {
    return {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + busPath()}, {"XDG_RUNTIME_DIR", folder.path().string()}};
}

Finished Fixture::busctl(const Words& arguments) const {
    return TestSupport::run(Words{"busctl", "--system"} + arguments, environment());
}

std::string Fixture::call(const Words& arguments, const std::string& object) const {
    return textOf(busctl(Words{"call", busName, object, busName} + arguments));
}

std::string Fixture::get(const std::string& property, const std::string& object) const {
    return textOf(busctl({"get-property", busName, object, busName, property}));
}

std::string Fixture::set(const Words& arguments, const std::string& object) const {
    return textOf(busctl(Words{"set-property", busName, object, busName} + arguments));
}

std::string Fixture::settingsctl(const Words& arguments) const {
    return textOf(TestSupport::run(Words{SETTINGSCTL_PROGRAM} + arguments, environment()));
}

void Fixture::startMonitor(const std::string& user) {
    monitor.emplace(Words{SIGNAL_MONITOR} + (user.empty() ? Words{} : Words{user}), environment());
    if (monitor->output().readLine() != "ready") {
        throw std::runtime_error("no monitor: " + monitor->errors().readAll());
    }
}

Words Fixture::signals(const std::string& name, std::size_t count) {
    Words found;
    while (found.size() < count) {
        const auto line = monitor->output().readLine();
        if (!line) {
            throw std::runtime_error("no signal " + name);
        }
        const std::size_t place = line->find("." + name + " ");
        if (place != std::string::npos) {
            found.push_back(line->substr(place + name.size() + 2));
        }
    }
    return found;
}

}  // namespace SettingsDbusTests
