#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

#include <fcntl.h>

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

/// A value of a fault is a number of milliseconds or a key.
std::optional<std::int64_t> numberIn(const std::string& text) {
    std::int64_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    return parsed.ec == std::errc() && parsed.ptr == text.data() + text.size() ? std::optional<std::int64_t>(number)
                                                                               : std::nullopt;
}

/// "off", "on" or the value of one that is on; the names of those that happen once say nothing.
std::string stateOf(const Wire::HostFrame& fault) {
    if (fault.booleanAt({"on"}) != true) {
        return fault.booleanAt({"once"}) == true ? "once" : "off";
    }
    const auto number = fault.integerAt({"value"});
    return number ? std::to_string(*number) : fault.textAt({"value"}).value_or("on");
}

/// `text`, and blanks up to `width`.
std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

/// A member a line, for people who edit it.
std::string indented(const rapidjson::Value& value, const std::string& indentation) {
    if (!value.IsObject()) {
        rapidjson::StringBuffer text;
        Wire::Utf8Writer<rapidjson::StringBuffer> writer(text);
        value.Accept(writer);
        return {text.GetString(), text.GetSize()};
    }
    const std::string inner = indentation + "    ";
    std::string members;
    for (const auto& member : value.GetObject()) {
        members += (members.empty() ? "\n" : ",\n") + inner +
                   jsonString({member.name.GetString(), member.name.GetStringLength()}) + ": " +
                   indented(member.value, inner);
    }
    return members.empty() ? "{}" : "{" + members + "\n" + indentation + "}";
}

/// Only for the user, since it may hold names. Errors: `Failure` (REFUSED).
void writeFile(const std::string& file, const std::string& text) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(descriptor < 0 ? nullptr : ::fdopen(descriptor, "w"),
                                                           std::fclose);
    if (!opened || std::fwrite(text.data(), 1, text.size(), opened.get()) != text.size() ||
        std::fclose(opened.release()) != 0) {
        throw Failure(REFUSED, "cannot write '" + file + "': " + std::strerror(errno));
    }
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

ExitStatus deviceFaults(const Context& context) {
    const Wire::HostFrame reply = execute(context, "faults");
    const auto faults = reply.objectsAt({"faults"});
    if (context.style.json) {
        printLine(context.style, reply.text());
        return DONE;
    }
    for (const auto& text : faults) {
        constexpr std::size_t nameWidth = 16;
        constexpr std::size_t stateWidth = 12;
        const Wire::HostFrame fault(text);
        const std::string state = padded(escaped(stateOf(fault)), stateWidth);
        const bool isOn = fault.booleanAt({"on"}) == true;
        printLine(context.style, padded(escaped(fault.textAt({"name"}).value_or("")), nameWidth) + " " +
                                     (isOn ? coloured(context.style, Colour::RED, state) : state) + " " +
                                     escaped(fault.textAt({"description"}).value_or("")));
    }
    return DONE;
}

ExitStatus deviceFault(const Context& context, const std::string& name, const std::optional<std::string>& value) {
    const bool isOff = value == "off";
    const Wire::HostFrame reply = execute(context, "fault", [&](auto& writer) {
        writer.text("name", name);
        writer.boolean("enabled", !isOff);
        if (!value || isOff) {
            return;
        }
        if (const auto number = numberIn(*value)) {
            writer.number("value", *number);
        } else {
            writer.text("value", *value);
        }
    });
    if (!context.style.json && reply.booleanAt({"changed"}) == false) {
        printLine(context.style, escaped(name) + ": unchanged");
    }
    return confirm(context, reply);
}

ExitStatus deviceSave(const Context& context, const std::string& file, bool withValues) {
    const Wire::HostFrame reply =
        execute(context, "save", [&](auto& writer) { writer.boolean("withValues", withValues); });
    rapidjson::Document world;
    Wire::inspectFrame(reply.objectAt({"world"}), world);
    const std::string text = indented(world, "") + "\n";
    if (file == "-") {
        print(text);
    } else {
        writeFile(file, text);
    }
    const auto leftOut = reply.textsAt({"leftOut"}).value_or(std::vector<std::string>{});
    if (!leftOut.empty()) {
        printWarning(context.style,
                     "omitted personal values: " + joined(leftOut) + "; use --with-values to include them");
    }
    return DONE;
}

}  // namespace SettingsCtl
