#include "server/protocol/Announcements.h"

#include <chrono>
#include <utility>

#include "Utils/RapidjsonUtil.h"
#include "Wire/Frames.h"

namespace SettingsHandlerKit {

namespace {

using Utils::RapidjsonUtil::tryGetStringMember;

}  // namespace

Announcements::Announcements(Clients& allClients, History& itsHistory, Environment itsEnvironment)
    : clients(allClients),
      history(itsHistory),
      environment(std::move(itsEnvironment)),
      messageIdPrefix("host-" + std::to_string(now()) + "-") {}

std::int64_t Announcements::now() const {
    using namespace std::chrono;
    return duration_cast<milliseconds>(environment.now().time_since_epoch()).count();
}

void Announcements::perform(Cause cause, const std::function<void()>& action) {
    Cause before = std::exchange(current, std::move(cause));
    ++performing;
    try {
        action();
    } catch (...) {
        performed(std::move(before));
        throw;
    }
    performed(std::move(before));
}

void Announcements::performed(Cause before) {
    current = std::move(before);
    if (--performing == 0) {
        sendNotice();
        tellObservers();
    }
}

void Announcements::tellObservers() {
    if (!observersHeld && performing == 0) {
        settingObservers.deliver();
    }
}

void Announcements::callObservers() {
    observersHeld = false;
    tellObservers();
}

void Announcements::valueChanged(const std::string& settingDBId) {
    changedKeys.insert(settingDBId);
    if (performing == 0) {
        sendNotice();
        tellObservers();
    }
}

void Announcements::reread(const std::set<std::string>& keys) {
    announcedKeys.clear();
    changedKeys.insert(keys.begin(), keys.end());
}

void Announcements::sendNotice() {
    std::set<std::string> keys;
    keys.swap(changedKeys);
    for (const auto& announced : announcedKeys) {
        keys.erase(announced);
    }
    announcedKeys.clear();
    if (keys.empty()) {
        return;
    }
    announce({std::make_shared<const std::string>(Wire::noticeFrame(keys)), {keys.begin(), keys.end()}, 0});
    if (!settingObservers.empty()) {
        for (const auto& key : keys) {
            settingObservers.tell({key, std::nullopt});
        }
    }
}

void Announcements::announce(Announcement announcement) {
    const bool isNotice = announcement.sequence == 0;
    if (!isNotice || !clients.empty()) {
        clients.sendToAll(announcement.frame);
    }
    if (batch) {
        batch->announcements.push_back(std::move(announcement));
    } else {
        history.add(std::move(announcement));
    }
}

std::string Announcements::sendEvent(int type, const rapidjson::Value& payload) {
    ++sequence;
    std::string messageId = messageIdPrefix + std::to_string(sequence);
    ObservedSetting told;
    if (tryGetStringMember(payload, "settingDBId", told.settingDBId) && performing != 0) {
        announcedKeys.insert(told.settingDBId);
    }
    const Wire::Event head{type, messageId, now(), sequence, originName(current.origin), current.client};
    announce({std::make_shared<const std::string>(Wire::eventFrame(head, payload)), {told.settingDBId}, sequence});
    if (!settingObservers.empty()) {
        auto& event = told.event.emplace();
        tryGetStringMember(payload, "from", event.from);
        tryGetStringMember(payload, "to", event.to);
        event.sequence = sequence;
        event.origin = current.origin;
        event.client = current.client;
        settingObservers.tell(std::move(told));
        tellObservers();
    }
    return messageId;
}

void Announcements::beginBatch() {
    batch = Batch{sequence, settingObservers.waitingCount(), {}};
}

void Announcements::commitBatch() {
    auto committed = std::exchange(batch, std::nullopt);
    for (auto& announcement : committed->announcements) {
        history.add(std::move(announcement));
    }
}

std::set<std::string> Announcements::rollBackBatch() {
    const auto undone = std::exchange(batch, std::nullopt);
    sequence = undone->sequence;
    settingObservers.forgetAfter(undone->observations);
    std::set<std::string> keys;
    for (const auto& announcement : undone->announcements) {
        if (announcement.sequence != 0) {
            keys.insert(announcement.keys.begin(), announcement.keys.end());
        }
    }
    return keys;
}

}  // namespace SettingsHandlerKit
