#include "Values.h"

#include <cctype>

#include "Wire/HostFrame.h"
#include "Wire/ObjectWriter.h"

namespace SettingsDbus {

namespace {

constexpr const char* memberStart = R"({"list":)";

std::vector<std::string> stringsIn(const std::string& list) {
    try {
        const Wire::HostFrame object(memberStart + list + "}");
        return object.textsAt({"list"}).value_or(std::vector<std::string>());
    } catch (const Wire::MalformedFrame&) {
        return {};
    }
}

std::string listOf(const std::vector<std::string>& strings) {
    Wire::ObjectWriter writer;
    writer.texts("list", strings);
    const std::string object = writer.finish();
    const std::size_t start = std::string(memberStart).size();
    return object.substr(start, object.size() - start - 1);
}

int appendStrings(sd_bus_message* message, const std::vector<std::string>& strings) {
    int result = sd_bus_message_open_container(message, 'a', "s");
    for (const auto& text : strings) {
        result = result < 0 ? result : sd_bus_message_append_basic(message, 's', text.c_str());
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

/// Of the variant that was entered.
std::string readValue(sd_bus_message* message, Wire::SettingKind kind) {
    const std::string signature = signatureOf(kind);
    if (signature == "b") {
        int value = 0;
        check("the value", sd_bus_message_read_basic(message, 'b', &value));
        return value != 0 ? "true" : "false";
    }
    if (signature == "as") {
        return listOf(readStrings(message));
    }
    const char* text = nullptr;
    check("the value", sd_bus_message_read_basic(message, 's', &text));
    return text;
}

}  // namespace

std::string propertyOf(const std::string& key) {
    std::string name = key;
    name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
    return name;
}

const char* signatureOf(Wire::SettingKind kind) {
    switch (kind) {
        case Wire::SettingKind::SWITCH:
            return "b";
        case Wire::SettingKind::LOCALES:
        case Wire::SettingKind::LIST:
            return "as";
        case Wire::SettingKind::TEXT:
        case Wire::SettingKind::CHOICE:
        case Wire::SettingKind::TIMEZONE:
            break;
    }
    return "s";
}

int append(sd_bus_message* message, Wire::SettingKind kind, const std::string& text) {
    const std::string signature = signatureOf(kind);
    if (signature == "b") {
        const int value = text == "true" ? 1 : 0;
        return sd_bus_message_append_basic(message, 'b', &value);
    }
    return signature == "as" ? appendStrings(message, stringsIn(text))
                             : sd_bus_message_append_basic(message, 's', text.c_str());
}

std::string readVariant(sd_bus_message* message, const Wire::SettingDescription& setting) {
    const char* const signature = signatureOf(setting.kind);
    if (sd_bus_message_enter_container(message, 'v', signature) <= 0) {
        throw CallError(SD_BUS_ERROR_INVALID_ARGS,
                        propertyOf(setting.key) + " has values of the type '" + signature + "'");
    }
    std::string value = readValue(message, setting.kind);
    check("the value", sd_bus_message_exit_container(message));
    return value;
}

std::vector<std::string> readStrings(sd_bus_message* message) {
    std::vector<std::string> strings;
    check("the array", sd_bus_message_enter_container(message, 'a', "s"));
    const char* text = nullptr;
    while (check("the array", sd_bus_message_read_basic(message, 's', &text)) > 0) {
        strings.emplace_back(text);
    }
    check("the array", sd_bus_message_exit_container(message));
    return strings;
}

}  // namespace SettingsDbus
