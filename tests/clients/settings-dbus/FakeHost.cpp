#include "FakeHost.h"

#include <utility>

namespace SettingsDbusTests {

namespace {

bool has(const std::string& frame, const std::string& text) {
    return frame.find(text) != std::string::npos;
}

std::string textAfter(const std::string& frame, const std::string& text) {
    const std::size_t begin = frame.find(text) + text.size();
    return frame.substr(begin, frame.find('"', begin) - begin);
}

/// `{"messageId":…` and `members`.
std::string withId(const std::string& frame, const std::string& members) {
    return R"({"messageId":")" + textAfter(frame, R"("messageId":")") + "\"," + members + "}";
}

}  // namespace

std::string FakeHost::acceptHello() {
    peer.emplace(listener.accept());
    return peer->receiveLine();
}

void FakeHost::greet(const std::string& hello, int reads) {
    reply(hello);
    answerReads(reads);
}

void FakeHost::answerReads(int count) {
    for (; count > 0; --count) {
        reply(peer->receiveLine());
    }
}

std::string FakeHost::nextChange() {
    for (;;) {
        std::string frame = peer->receiveLine();
        if (!reply(frame)) {
            return frame;
        }
    }
}

void FakeHost::answer(const std::string& frame, const std::string& members) {
    peer->sendLine(
        withId(frame, R"("type":)" + textAfter(frame, R"({"type":)").substr(0, 2) + R"(,"payload":{)" + members + "}"));
    if (!std::exchange(hasAnswered, true)) {
        reply(peer->receiveLine());
    }
}

bool FakeHost::reply(const std::string& frame) {
    if (has(frame, R"("hello")")) {
        peer->sendLine(withId(frame, R"("hello":{"version":"1.1.0","run":"r","sequence":0})"));
    } else if (refusals > 0) {
        --refusals;
        peer->sendLine(R"({"error":{"code":"busy","message":"too much waits"}})");
    } else if (has(frame, R"("history")")) {
        peer->sendLine(withId(frame, R"("history":{"events":[]})"));
    } else if (has(frame, R"("type":7,)")) {
        peer->sendLine(withId(frame, R"("type":7,"payload":{"settings":)" + values + "}"));
    } else if (has(frame, R"("type":18,)")) {
        peer->sendLine(withId(frame, R"("type":18,"payload":{"isOrliaSelectedAsVA":true})"));
    } else {
        return false;
    }
    return true;
}

}  // namespace SettingsDbusTests
