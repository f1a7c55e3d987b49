#include "wire/TracedHost.h"

#include <map>
#include <utility>

#include <gtest/gtest.h>

#include "wire/Json.h"

namespace WireTests {

namespace {

/// The schema of a request; empty for a text that is not a request, which tests send too.
std::string schemaOfRequest(Listener listener, const std::string& text) {
    static const std::map<int, std::string> types{{7, "get-settings-request"},
                                                  {18, "is-orlia-selected-va-request"},
                                                  {19, "open-va-settings-request"},
                                                  {22, "log-out-request"},
                                                  {24, "set-settings-request"}};
    const rapidjson::Document request = parsed(text);
    if (!request.IsObject()) {
        return "";
    }
    if (listener == Listener::DEVICE) {
        return request.HasMember("command") ? "device-command" : "";
    }
    const auto type = request.FindMember("type");
    if (type != request.MemberEnd()) {
        const auto found = type->value.IsInt() ? types.find(type->value.GetInt()) : types.end();
        return found == types.end() ? "" : found->second;
    }
    for (const std::string name : {"batch", "hello", "history", "catalogue", "page", "backup", "status"}) {
        if (request.HasMember(name.c_str())) {
            return name + "-request";
        }
    }
    return "";
}

}  // namespace

TracedHost::TracedHost(const std::string& devicePath) : device(devicePath, Listener::DEVICE) {
    device.sendLine(R"({"command":"trace","enabled":true})");
    EXPECT_EQ(device.receiveLine(), R"({"ok":true})");
}

TracedHost::~TracedHost() {
    device.sendLine(R"({"command":"trace","enabled":false})");
    TraceCheck check;
    for (auto line = device.receiveLine(); line && *line != R"({"ok":true})"; line = device.receiveLine()) {
        const auto fault = check.faultOf(*line);
        if (fault) {
            ADD_FAILURE() << "the protocol was broken: " << *fault;
        }
    }
}

std::optional<std::string> TraceCheck::faultOf(const std::string& trace) {
    const Schemas& schemas = Schemas::ofTheWire();
    if (auto fault = schemas.faultOf("device-trace", trace)) {
        return fault;
    }
    const rapidjson::Document document = parsed(trace);
    const rapidjson::Value& copy = document["trace"];
    const Listener listener = std::string(copy["door"].GetString()) == "device" ? Listener::DEVICE : Listener::SETTINGS;
    const std::string text(copy["text"].GetString(), copy["text"].GetStringLength());
    if (std::string(copy["direction"].GetString()) == "out") {
        const auto unrefused = std::exchange(expectedToBeRefused, std::nullopt);
        return unrefused && schemaOfHostFrame(listener, text) != "device-refusal"
                   ? unrefused
                   : schemas.faultOfHostFrame(listener, text);
    }
    const std::string schema = schemaOfRequest(listener, text);
    auto fault = schema.empty() ? std::nullopt : schemas.faultOf(schema, text);
    if (listener == Listener::DEVICE) {
        expectedToBeRefused = std::exchange(fault, std::nullopt);
    }
    return fault;
}

}  // namespace WireTests
