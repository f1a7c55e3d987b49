#include <functional>

#include "Keys.h"
#include "Verbs.h"
#include "Wire/ObjectWriter.h"
#include "connection/DeviceCommand.h"

namespace SettingsCtl {

namespace {

/// Sends `{"command": …}` with the members that `arguments` writes. Returns: the reply.
Wire::HostFrame execute(
    const Context& context, const std::string& command,
    const std::function<void(Wire::ObjectWriter<>&)>& arguments = [](Wire::ObjectWriter<>&) {}) {
    Wire::ObjectWriter writer;
    writer.text("command", command);
    arguments(writer);
    return SettingsClient::executeDeviceCommand(context.deviceSockets, context.timeout, writer.finish());
}

Failure notADeviceSocket() {
    return {UNREACHABLE, "unexpected response: not a device socket"};
}

ExitStatus confirm(const Context& context, const Wire::HostFrame& reply) {
    if (reply.booleanAt({"ok"}) != true) {
        throw notADeviceSocket();
    }
    if (context.style.json) {
        printLine(context.style, reply.text());
    }
    return DONE;
}

}  // namespace

ExitStatus deviceShow(const Context& context) {
    printValues(context.style, execute(context, "show").stringsAt({"device"}));
    return DONE;
}

ExitStatus deviceText(const Context& context, const std::string& command, const std::string& value) {
    return confirm(context, execute(context, command, [&](auto& writer) { writer.text("value", value); }));
}

ExitStatus deviceLocales(const Context& context, const std::vector<std::string>& locales) {
    return confirm(context, execute(context, "locales", [&](auto& writer) { writer.texts("values", locales); }));
}

ExitStatus switchDevice(const Context& context, const std::string& command, bool enabled) {
    return confirm(context, execute(context, command, [&](auto& writer) { writer.boolean("enabled", enabled); }));
}

ExitStatus deviceSetting(const Context& context, const std::string& key, const std::string& value) {
    refuseUnknownKeys(context, {key});
    const Wire::HostFrame reply = execute(context, "setting", [&](auto& writer) {
        writer.text("key", key);
        writer.text("value", value);
    });
    if (!context.style.json && reply.booleanAt({"changed"}) == false) {
        printLine(context.style, escaped(key) + ": unchanged");
    }
    return confirm(context, reply);
}

}  // namespace SettingsCtl
