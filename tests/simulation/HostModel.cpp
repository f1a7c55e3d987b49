#include "simulation/HostModel.h"

#include <algorithm>

#include "model/Json.h"
#include "model/WireModel.h"
#include "simulation/Fingerprint.h"

namespace SettingsSimulation {

namespace {

using SettingsHandlerFuzz::Answer;
using SettingsHandlerFuzz::arrayText;
using SettingsHandlerFuzz::isBatch;
using SettingsHandlerFuzz::isRejectedValue;
using SettingsHandlerFuzz::refusalOf;
using SettingsHandlerFuzz::stringText;

/// The most events and notices of the history.
constexpr std::size_t longestHistory = 1024;

Expectation textOnly(std::string text) {
    Expectation frame;
    frame.pieces.push_back({std::move(text), nullptr});
    return frame;
}

}  // namespace

void HostModel::restart(const Durable& onDisk) {
    known = std::make_shared<Known>();
    completeAfter = 0;
    sequence = 0;
    names.clear();
    waits = false;
    keysToReadAgain.clear();
    start(onDisk);
    changedKeys.clear();
    announcedKeys.clear();
    outputs.clear();
    asksRestart = false;
    run.clear();
}

std::vector<Output> HostModel::handle(const Sender& itsSender, const std::optional<std::string>& frame,
                                      const Time& now) {
    sender = itsSender;
    time = now;
    outputs.clear();
    replacesKey = false;
    const std::string code = frame ? refusalOf(*frame) : "too-large";
    if (!code.empty()) {
        refuse(code);
    } else if (sender.kind == Kind::DEVICE) {
        deviceFrame(*frame);
    } else {
        settingsFrame(*frame);
    }
    return std::move(outputs);
}

std::uint64_t HostModel::digest() const {
    Fingerprint all;
    const auto add = [&all](const auto& values) {
        all.add(values.size());
        for (const auto& [key, value] : values) {
            all.add(key);
            all.add(value);
        }
    };
    add(durable().settings);
    add(durable().simulation);
    add(cachedValues());
    add(faults);
    add(around.deviceInfo);
    for (const auto& [key, timestamp] : timestamps()) {
        all.add(key);
        all.add(static_cast<std::uint64_t>(timestamp));
    }
    for (const auto& locale : around.locales) {
        all.add(locale);
    }
    all.add(around.timezone);
    for (const bool each : {around.captionsEnabled, around.doNotDisturbEnabled, launched, waits}) {
        all.add(each ? 1 : 0);
    }
    all.add(static_cast<std::uint64_t>(sequence));
    all.add(static_cast<std::uint64_t>(completeAfter));
    all.add(known->order.size());
    all.add(known->digest);
    for (const auto& key : keysToReadAgain) {
        all.add(key);
    }
    return all.result();
}

// Frames that are sent

void HostModel::toSender(Expectation frame) {
    frame.begin = time.begin;
    frame.end = time.end;
    outputs.push_back({sender.connection, std::make_shared<Expectation>(std::move(frame)), false, persisted()});
}

void HostModel::toSender(const std::string& text) {
    toSender(textOnly(text));
}

void HostModel::toAll(Expectation frame, bool isEvent) {
    outputs.push_back({std::nullopt, std::make_shared<Expectation>(std::move(frame)), isEvent, persisted()});
}

void HostModel::refuse(const std::string& code, std::optional<std::size_t> index) {
    toSender(R"({"error":{"code":")" + code + R"(","message":")" + anyText + '"' +
             (index ? ",\"index\":" + std::to_string(*index) : "") + "}}");
}

void HostModel::sendEvent(const std::string& key, const std::string& payload) {
    auto event = std::make_shared<SentEvent>();
    event->sequence = ++sequence;
    event->key = key;
    event->text = R"({"type":25,"messageId":")" + std::string(1, Unknown::messageId) + R"(","timestamp":)" +
                  anyTimestamp + R"(,"sequence":)" + std::to_string(sequence) + R"(,"origin":")" + origin + '"' +
                  (client.empty() ? "" : ",\"client\":" + stringText(client)) + ",\"payload\":" + payload + "}";
    event->begin = time.begin;
    event->end = time.end;
    announcedKeys.insert(key);
    Expectation frame;
    frame.pieces.push_back({"", event});
    toAll(std::move(frame), true);
    remember(event);
}

void HostModel::sendReply(const std::string& messageId, const std::string& payload) {
    toSender(R"({"type":)" + std::to_string(requestType) + R"(,"messageId":)" + stringText(messageId) +
             R"(,"payload":)" + payload + "}");
}

void HostModel::sendNotice(const std::set<std::string>& keys) {
    toAll(textOnly(R"({"notice":{"reread":)" + arrayText({keys.begin(), keys.end()}) + "}}"), false);
    remember(keys);
}

void HostModel::perform(const std::string& itsOrigin, const std::string& itsClient) {
    origin = itsOrigin;
    client = itsClient;
}

void HostModel::performed() {
    std::set<std::string> keys = std::exchange(changedKeys, {});
    for (const auto& key : announcedKeys) {
        keys.erase(key);
    }
    announcedKeys.clear();
    if (!keys.empty()) {
        sendNotice(keys);
    }
}

// History

/// The history, to change it: copies of this model share it until then.
HostModel::Known& HostModel::ownHistory() {
    if (known.use_count() > 1) {
        known = std::make_shared<Known>(*known);
    }
    return *known;
}

void HostModel::remember(const std::shared_ptr<SentEvent>& event) {
    Known& own = ownHistory();
    own.events.push_back(event);
    Fingerprint all;
    all.add(own.digest);
    all.add(event->text);
    own.digest = all.result();
    own.order.push_back(true);
    forgetOldest();
}

void HostModel::remember(const std::set<std::string>& keys) {
    if (sequence < completeAfter) {
        return;
    }
    Known& own = ownHistory();
    own.notices.emplace_back(sequence, keys);
    own.order.push_back(false);
    forgetOldest();
}

void HostModel::forgetOldest() {
    if (known->order.size() <= longestHistory) {
        return;
    }
    Known& own = ownHistory();
    while (own.order.size() > longestHistory) {
        if (own.order.front()) {
            completeAfter = std::max(completeAfter, own.events.front()->sequence);
            own.events.pop_front();
        } else {
            completeAfter = std::max(completeAfter, own.notices.front().first + 1);
            own.notices.pop_front();
        }
        own.order.pop_front();
    }
}

void HostModel::forgetHistory() {
    known = std::make_shared<Known>();
    completeAfter = sequence + 1;
}

// Frames of the settings

void HostModel::settingsFrame(const std::string& frame) {
    const Envelope json(frame);
    if (json.has("type")) {
        request(frame, std::nullopt, false);
    } else if (json.has("batch")) {
        batch(json);
    } else {
        query(json);
    }
}

void HostModel::request(const std::string& text, std::optional<std::size_t> index, bool isRolledBack) {
    const Envelope json(text);
    const auto members = SettingsHandlerFuzz::requestIn(json, sender.kind == Kind::SOCKET);
    if (!members.refusal.empty()) {
        return refuse(members.refusal, index);
    }
    requestType = members.type;
    Answer given{"refused", "not-stored", json.payloadText("settingDBId"), true, false, std::nullopt};
    if (requestType == 24 && !isRolledBack && isRejectedValue(given.key, json.payloadText("to"))) {
        given = answerToRejected(text);
    } else if (!isRolledBack || requestType != 24) {
        const auto name = names.find(sender.connection);
        deliver(requestType, text, members.client.value_or(name == names.end() ? "" : name->second));
        if (!isRolledBack) {
            performed();
        }
        given = ReferenceModel::answer();
    }
    if (members.asks) {
        const bool isWritten = given.outcome == "changed" && given.stored;
        answer(requestType, members.messageId, given, isWritten ? json.payloadText("to") : std::nullopt);
    }
}

void HostModel::deliver(int type, const std::string& text, const std::string& itsClient) {
    if (type == 22) {
        forgetHistory();
    }
    perform(sender.kind == Kind::SOCKET ? "socket" : "page", itsClient);
    ReferenceModel::request(type, text);
    if (type == 22) {
        forgetHistory();
    }
}

/// `value`: the one that was written, which is not read again.
void HostModel::answer(int type, const std::string& messageId, const Answer& given, std::optional<std::string> value) {
    std::string payload = R"({"outcome":")" + given.outcome + '"';
    if (given.outcome == "refused") {
        payload += R"(,"reason":")" + given.reason + R"(","message":")" + anyText + '"';
    }
    if (type == 24 && given.key) {
        payload += R"(,"settingDBId":)" + stringText(*given.key);
        if (!value) {
            const auto values = getSettings({*given.key});
            const auto found = values.find(*given.key);
            value = found == values.end() ? std::nullopt : std::optional(found->second);
        }
        payload += value ? R"(,"value":)" + stringText(*value) : "";
    }
    if (given.outcome == "changed" && !given.applied) {
        payload += R"(,"applied":false)";
    }
    if (given.newest) {
        payload += R"(,"newest":)" + std::to_string(*given.newest);
    }
    requestType = type;
    sendReply(messageId, payload + "}");
}

// Batches

void HostModel::batch(const Envelope& frame) {
    const auto requests = frame.elements("batch");
    if (!isBatch(requests)) {
        return refuse("bad-batch");
    }
    const std::shared_ptr<Known> before = known;
    const long sequenceBefore = sequence;
    const long completeBefore = completeAfter;
    beginTransaction();
    for (std::size_t index = 0; index < requests->size(); ++index) {
        request((*requests)[index], index, false);
    }
    if (commit()) {
        for (auto& output : outputs) {
            output.persisted = persisted();
        }
        return;
    }
    std::set<std::string> eventKeys;
    for (const auto& output : outputs) {
        if (output.isEvent) {
            eventKeys.insert(output.frame->pieces.front().event->key);
        }
    }
    known = before;
    sequence = sequenceBefore;
    completeAfter = completeBefore;
    outputs.clear();
    rollBack(*requests, eventKeys);
}

void HostModel::rollBack(const std::vector<std::string>& requests, const std::set<std::string>& eventKeys) {
    keysToReadAgain.insert(eventKeys.begin(), eventKeys.end());
    waits = !readsDisk();
    if (!waits) {
        startOver();
    }
    std::set<std::string> keys;
    for (std::size_t index = 0; index < requests.size(); ++index) {
        request(requests[index], index, true);
        const Envelope json(requests[index]);
        const auto key = json.payloadText("settingDBId");
        if (json.integer("type") == 24 && key) {
            keys.insert(*key);
        }
    }
    announcedKeys.clear();
    changedKeys.insert(keys.begin(), keys.end());
    performed();
}

void HostModel::startOver() {
    keysToReadAgain.clear();
    readState();
    forgetTimestamps();
    initializeSettings();
}

std::vector<Output> HostModel::readAgain(const Time& now) {
    time = now;
    outputs.clear();
    waits = false;
    perform("device", "");
    changedKeys.insert(keysToReadAgain.begin(), keysToReadAgain.end());
    startOver();
    performed();
    return std::move(outputs);
}

}  // namespace SettingsSimulation
