#include "SoakClient.h"

#include <stdexcept>
#include <utility>

namespace Endurance {

namespace {

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string getRequest(const std::string& id, const std::string& keysJson) {
    return R"({"type":7,"messageId":")" + id + R"(","payload":{"settings":)" + keysJson + "}}";
}

std::string replyStart(int type, const std::string& id) {
    return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + id + R"(","payload":{)";
}

}  // namespace

SoakClient::SoakClient(std::string socketPath, int number) : path(std::move(socketPath)), name(std::to_string(number)) {
    reconnect();
}

void SoakClient::reconnect() {
    connection.reset();
    connection = std::make_unique<TestSupport::LineClient>(path);
    lastSequence = 0;
}

void SoakClient::add(const std::string& request) {
    batch += request;
    batch += '\n';
    ++batchSize;
}

void SoakClient::addSet(const std::string& key, const std::string& value, int timestamp) {
    add(R"({"type":24,"messageId":"s","timestamp":)" + std::to_string(timestamp) + R"(,"payload":{"settingDBId":")" +
        key + R"(","to":")" + value + "\"}}");
}

void SoakClient::addChanges(const std::string& mark, std::uint64_t round) {
    addSet("deviceName", "Living room " + mark);
    addSet("friendlyName", "Wohnzimmer \\u00e4 " + mark);
    addSet("tovanEntitlementStatus", "active " + mark);
    addSet("orliaLocale", R"([\"fr-FR\", \")" + mark + R"(\"])");
    addSet("timezone", "Zone/" + mark);
    addSet("captionsStyles", mark);
    addSet("companionDevice", R"([\")" + mark + R"(\",\"\"])");
    addSet("handsFreeEnabled", round % 2 == 0 ? "true" : "off " + mark);
    addSet("pttAlwaysOnEnabled", round % 2 == 0 ? "off " + mark : "true");
    addSet("deviceName", "Living room " + mark);
    add(R"({"type":19})");
}

/// Frames that the host refuses, requests that the handler drops with a log line, and values that are rejected.
void SoakClient::addRefused(const std::string& mark) {
    add("no JSON " + mark);
    expected.emplace_back(R"({"error":{"code":"not-json")");
    add(R"({"type":8,"mark":")" + mark + "\"}");
    expected.emplace_back(R"({"error":{"code":"unknown-type")");
    addSet("captionsEnabled", mark);
    addSet("captionsFontSize", mark, 1);
    addSet("captionsFontSize", "too late " + mark, 0);
    addSet("orliaLocale", "{}");
    addSet("orliaLocale", "no array " + mark);
    add(R"({"type":24,"timestamp":1,"mark":")" + mark + "\"}");
}

void SoakClient::addQuestions(const std::string& mark, const std::string& ownKey, const std::string& ownValue) {
    add(R"({"type":18,"messageId":"w )" + mark + "\"}");
    expected.push_back(replyStart(18, "w " + mark) + R"("isOrliaSelectedAsVA":true}})");
    add(getRequest("a " + mark, "[]"));
    expected.push_back(replyStart(7, "a " + mark));
    add(getRequest("f " + mark, R"(["timezone","never set","handsFreeEnabled"])"));
    expected.push_back(replyStart(7, "f " + mark));
    add(getRequest("o " + mark, "[\"" + ownKey + "\"]"));
    expected.push_back(replyStart(7, "o " + mark) + R"("settings":{")" + ownKey + R"(":")" + ownValue + "\"}}}");
}

std::uint64_t SoakClient::sendBatch(std::uint64_t round) {
    batch.clear();
    batchSize = 0;
    const std::string mark = name + "-" + std::to_string(round);
    const std::string ownKey = "key " + name + " " + std::to_string(round % ownKeys);
    const std::string ownValue = mark + std::string(round % ownKeys * 20, 'x');
    addChanges(mark, round);
    addSet(ownKey, ownValue);
    addRefused(mark);
    addQuestions(mark, ownKey, ownValue);
    if (!connection->send(batch)) {
        throw std::runtime_error("the host disconnected client " + name);
    }
    return batchSize;
}

std::uint64_t SoakClient::logOut() {
    // A log-out has no reply.
    connection->sendLine(R"({"type":22})");
    connection->sendLine(R"({"type":18,"messageId":"done"})");
    expected.push_back(replyStart(18, "done"));
    receiveAnswers();
    return 2;
}

void SoakClient::checkEvent(const std::string& line) {
    const std::string member = R"("sequence":)";
    const std::size_t place = line.find(member);
    const std::uint64_t sequence = place == std::string::npos ? 0 : std::stoull(line.substr(place + member.size()));
    if (sequence == 0 || (lastSequence != 0 && sequence != lastSequence + 1)) {
        throw std::runtime_error("client " + name + " received, after event " + std::to_string(lastSequence) + ": " +
                                 line);
    }
    lastSequence = sequence;
    ++eventCount;
}

void SoakClient::receiveAnswers() {
    while (!expected.empty()) {
        const auto line = connection->receiveLine();
        if (!line) {
            throw std::runtime_error("client " + name +
                                     (connection->closedByPeer() ? " was disconnected" : " received nothing") +
                                     ", after event " + std::to_string(lastSequence) + ", before " + expected.front());
        }
        if (startsWith(*line, R"({"type":25,)")) {
            checkEvent(*line);
        } else if (startsWith(*line, expected.front())) {
            expected.pop_front();
        } else if (!startsWith(*line, R"({"notice":)")) {
            throw std::runtime_error("client " + name + " received, instead of " + expected.front() + ": " + *line);
        }
    }
}

}  // namespace Endurance
