#include "Options.h"
#include "Service.h"

int main(int argumentCount, char** arguments) {
    return SettingsBridge::runProgram(
        "settings-dbus", [&] { SettingsDbus::serve(SettingsDbus::parseOptions(argumentCount, arguments)); });
}
