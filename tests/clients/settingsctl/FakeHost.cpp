#include "FakeHost.h"

#include <gtest/gtest.h>

namespace SettingsCtlTests {

using TestSupport::ChildProcess;

FakeHost::FakeHost() : settings(settingsPath()), device(devicePath()) {}

ChildProcess FakeHost::start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    const std::string own = folder.path().string();
    return ChildProcess(arguments, {{"XDG_RUNTIME_DIR", own}, {"PATH", own}});
}

TestSupport::Finished finish(ChildProcess& program) {
    std::string output = program.output().readAll();
    std::string errors = program.errors().readAll();
    return {program.wait().value_or(-1), std::move(output), std::move(errors)};
}

std::string messageId(const ChildProcess& program, int number) {
    return "settingsctl-" + std::to_string(program.pid()) + "-" + std::to_string(number);
}

std::string getRequest(const ChildProcess& program, int number, const std::string& keys) {
    return R"({"type":7,"messageId":")" + messageId(program, number) + R"(","payload":{"settings":)" + keys + "}}";
}

std::string bareRequest(int type, const ChildProcess& program, int number) {
    return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + messageId(program, number) + R"("})";
}

std::string queryFrame(const ChildProcess& program, int number, const std::string& name, const std::string& body) {
    return R"({"messageId":")" + messageId(program, number) + R"(",")" + name + "\":" + body + "}";
}

void greet(Peer& client, const ChildProcess& program) {
    const std::string start = R"({"messageId":"settingsctl-)" + std::to_string(program.pid()) + R"(-hello","hello":)";
    EXPECT_EQ(client.receiveLine(), start + R"({"client":"settingsctl"}})");
    client.sendLine(start + R"({"version":"1.1.0","run":"run","sequence":0}})");
}

std::string setRequest(const ChildProcess& program, int number, const std::string& timestamp, const std::string& key,
                       const std::string& value) {
    return R"({"type":24,"messageId":")" + messageId(program, number) + R"(","timestamp":)" + timestamp +
           R"(,"answer":true,"payload":{"settingDBId":")" + key + R"(","to":")" + value + R"("}})";
}

std::string changeAnswer(const ChildProcess& program, int number, const std::string& payload) {
    return R"({"type":24,"messageId":")" + messageId(program, number) + R"(","payload":)" + payload + "}";
}

void replyToFence(Peer& client) {
    const std::string request = client.receiveLine();
    EXPECT_EQ(request.rfind(R"({"type":18,"messageId":)", 0), 0U) << request;
    client.sendLine(request.substr(0, request.size() - 1) + R"(,"payload":{"isOrliaSelectedAsVA":true}})");
}

std::string getReply(const ChildProcess& program, int number, const std::string& settings) {
    return R"({"type":7,"messageId":")" + messageId(program, number) + R"(","payload":{"settings":)" + settings + "}}";
}

std::string event(const std::string& key, const std::string& from, const std::string& to, int sequence) {
    return R"({"type":25,"messageId":"host-1","timestamp":1700000000000,"sequence":)" + std::to_string(sequence) +
           R"(,"origin":"socket","payload":{"settingDBId":")" + key + R"(","from":")" + from + R"(","to":")" + to +
           R"("}})";
}

std::string refusal(const std::string& code, const std::string& message) {
    return R"({"error":{"code":")" + code + R"(","message":")" + message + R"("}})";
}

void expectEnd(ChildProcess& program, int status, const std::string& output, const std::string& errors) {
    const TestSupport::Finished end = finish(program);
    EXPECT_EQ(end.output, output);
    EXPECT_EQ(end.errors, errors);
    EXPECT_EQ(end.status, status);
}

}  // namespace SettingsCtlTests
