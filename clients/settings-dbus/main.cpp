#include <CLI/CLI.hpp>

#include "Service.h"

namespace {

constexpr const char* description =
    "Serve the settings of a running settings-host on D-Bus, as org.settingshandler.Settings1.";

constexpr const char* examples = R"(
Examples:
  settings-dbus --session
  settings-dbus --session --socket /tmp/try/settings.sock --log-level 0

Exit status: 0 stopped by SIGINT or SIGTERM, 1 cannot connect to the bus or acquire the name, 2 wrong usage.)";

void run(int argumentCount, const char* const* arguments) {
    SettingsDbus::Options options;
    CLI::App app(description, "settings-dbus");
    app.footer(examples);
    SettingsBridge::addOptions(app, options);
    app.add_flag("--session", options.session, "Serve on the session bus, for development; default: the system bus");
    SettingsBridge::parse(app, argumentCount, arguments);
    SettingsDbus::serve(options);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    return SettingsBridge::runProgram("settings-dbus", [&] { run(argumentCount, arguments); });
}
