#include <functional>

#include "Json.h"
#include "Verbs.h"
#include "connection/DeviceCommand.h"

namespace SettingsCtl {

namespace {

/// Sends `{"command": …}` with the members that `arguments` writes. Returns: the reply.
Wire::HostFrame execute(
    const Context& context, const std::string& command,
    const std::function<void(JsonWriter&)>& arguments = [](JsonWriter&) {}) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writer.Key("command");
    writer.String(command);
    arguments(writer);
    writer.EndObject();
    return SettingsClient::executeDeviceCommand(context.deviceSockets, context.timeout,
                                                {buffer.GetString(), buffer.GetSize()});
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

void member(JsonWriter& writer, const char* name, const std::string& value) {
    writer.Key(name);
    writer.String(value);
}

}  // namespace

ExitStatus page(const Context& context, bool newKey) {
    const Wire::HostFrame reply = execute(context, "page", [newKey](JsonWriter& writer) {
        if (newKey) {
            writer.Key("newKey");
            writer.Bool(true);
        }
    });
    const auto members = reply.stringsAt({"page"});
    const auto address = members.find("address");
    if (address == members.end()) {
        throw notADeviceSocket();
    }
    printLine(context.style, context.style.json ? reply.text() : escaped(address->second));
    return DONE;
}

ExitStatus deviceShow(const Context& context) {
    printValues(context.style, execute(context, "show").stringsAt({"device"}));
    return DONE;
}

ExitStatus deviceText(const Context& context, const std::string& command, const std::string& value) {
    return confirm(context, execute(context, command, [&](JsonWriter& writer) { member(writer, "value", value); }));
}

ExitStatus deviceLocales(const Context& context, const std::vector<std::string>& locales) {
    return confirm(context, execute(context, "locales", [&](JsonWriter& writer) {
                       writer.Key("values");
                       writer.StartArray();
                       for (const auto& locale : locales) {
                           writer.String(locale);
                       }
                       writer.EndArray();
                   }));
}

ExitStatus switchDevice(const Context& context, const std::string& command, bool enabled) {
    return confirm(context, execute(context, command, [&](JsonWriter& writer) {
                       writer.Key("enabled");
                       writer.Bool(enabled);
                   }));
}

ExitStatus deviceSetting(const Context& context, const std::string& key, const std::string& value) {
    const Wire::HostFrame reply = execute(context, "setting", [&](JsonWriter& writer) {
        member(writer, "key", key);
        member(writer, "value", value);
    });
    if (!context.style.json && reply.booleanAt({"changed"}) == false) {
        printLine(context.style, escaped(key) + ": unchanged");
    }
    return confirm(context, reply);
}

}  // namespace SettingsCtl
