#include <functional>

#include "Connection.h"
#include "Verbs.h"
#include "Wire.h"

namespace SettingsCtl {

namespace {

/// Sends `{"command": …}` with the members that `arguments` writes, and waits for the answer.
Frame execute(
    const Context& context, const std::string& command,
    const std::function<void(JsonWriter&)>& arguments = [](JsonWriter&) {}) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writer.Key("command");
    writer.String(command);
    arguments(writer);
    writer.EndObject();
    Connection connection(context.deviceSockets, context.timeout);
    connection.send(std::string(buffer.GetString(), buffer.GetSize()) + "\n");
    Frame answer(connection.receive(connection.deadline()));
    answer.throwIfRefusal();
    return answer;
}

ExitStatus confirm(const Context& context, const Frame& answer) {
    if (answer.booleanAt({"ok"}) != true) {
        throw Failure(UNREACHABLE, "what answers is no device socket");
    }
    if (context.style.json) {
        printLine(context.style, answer.text());
    }
    return DONE;
}

void member(JsonWriter& writer, const char* name, const std::string& value) {
    writer.Key(name);
    writer.String(value);
}

}  // namespace

ExitStatus page(const Context& context, bool newKey) {
    const Frame answer = execute(context, "page", [newKey](JsonWriter& writer) {
        if (newKey) {
            writer.Key("newKey");
            writer.Bool(true);
        }
    });
    const auto members = answer.stringsAt({"page"});
    const auto address = members.find("address");
    if (address == members.end()) {
        throw Failure(UNREACHABLE, "what answers is no device socket");
    }
    printLine(context.style, context.style.json ? answer.text() : escaped(address->second));
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

ExitStatus deviceSwitch(const Context& context, const std::string& command, bool enabled) {
    return confirm(context, execute(context, command, [&](JsonWriter& writer) {
                       writer.Key("enabled");
                       writer.Bool(enabled);
                   }));
}

ExitStatus deviceSetting(const Context& context, const std::string& key, const std::string& value) {
    const Frame answer = execute(context, "setting", [&](JsonWriter& writer) {
        member(writer, "key", key);
        member(writer, "value", value);
    });
    if (!context.style.json && answer.booleanAt({"changed"}) == false) {
        printLine(context.style, escaped(key) + ": unchanged");
    }
    return confirm(context, answer);
}

}  // namespace SettingsCtl
