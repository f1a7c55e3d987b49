#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/Journal.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"

namespace SettingsHandlerKit {

/// Records its frames in the journal: "asker <frame>".
class JournalClient : public Client {
public:
    JournalClient(SettingsHandlerTesting::Journal& recorder, std::string ownName, Origin ownOrigin = Origin::SOCKET,
                  ListenerKind ownKind = ListenerKind::UNIX_SOCKET)
        : journal(recorder), name(std::move(ownName)), clientOrigin(ownOrigin), kind(ownKind) {}

    void send(const std::shared_ptr<const std::string>& frame) override { journal.add(name + " " + *frame); }
    Origin origin() const override { return clientOrigin; }
    ListenerKind listenerKind() const override { return kind; }

private:
    SettingsHandlerTesting::Journal& journal;
    std::string name;
    Origin clientOrigin;
    ListenerKind kind;
};

/// Those of a disk that fails when it is told to. They keep the storage and the voice SDK as they were.
class JournalTransactions : public Transactions {
public:
    JournalTransactions(SettingsHandlerTesting::Journal& recorder, SettingsHandlerTesting::FakeStorage& itsStorage)
        : journal(recorder), storage(itsStorage) {}

    void begin() override {
        journal.add("begin");
        before = storage.values;
    }
    bool commit() override {
        journal.add("commit");
        if (fails) {
            storage.values = before;
        }
        return !fails;
    }
    void restore(const std::set<std::string>& changed) override {
        std::string keys;
        for (const auto& key : changed) {
            keys += " " + key;
        }
        journal.add("restore" + keys);
        if (onRestore) {
            onRestore();
        }
    }

    bool fails = false;
    std::function<void()> onRestore;

private:
    SettingsHandlerTesting::Journal& journal;
    SettingsHandlerTesting::FakeStorage& storage;
    std::map<std::string, std::string> before;
};

/// The hub with a real handler and two clients. The journal has the frames, the writes, and what else tests record.
class HubFixture : public ::testing::Test {
protected:
    using Lines = std::vector<std::string>;

    HubFixture() {
        storage.values["deviceName"] = "TV";
        handler->initializeSettings();
        hub->watch(handler);
        hub->connected(asker);
        hub->connected(other);
        taken();
        log.take();
        traffic->take();
    }

    /// Returns: the journal without calls that change nothing. A frame that both clients were sent is "all <frame>".
    Lines taken() {
        Lines entries;
        for (auto& entry : journal.take()) {
            if (!entries.empty() && isSameFrame(entries.back(), entry)) {
                entries.back() = "all" + entry.substr(entry.find(' '));
            } else if (entry.find(".get") == std::string::npos && entry.rfind("sdk.is", 0) != 0 &&
                       entry.rfind("metrics.", 0) != 0) {
                entries.push_back(std::move(entry));
            }
        }
        return entries;
    }

    /// What `client` is sent for `frame`, with what happens meanwhile.
    Lines handled(const std::string& frame, const std::shared_ptr<Client>& client) {
        hub->received(client, frame);
        return taken();
    }
    Lines handled(const std::string& frame) { return handled(frame, asker); }

    /// A SetSettings request that asks for an answer; `more` are members before the payload.
    static std::string set(const std::string& key, const std::string& value,
                           const std::string& more = R"("messageId":"m","answer":true,)", long timestamp = 5) {
        return R"({"type":24,)" + more + R"("timestamp":)" + std::to_string(timestamp) +
               R"(,"payload":{"settingDBId":")" + key + R"(","to":")" + value + R"("}})";
    }
    static std::string silentSet(const std::string& key, const std::string& value) { return set(key, value, ""); }

    /// The event that every client is sent; `cause` has its members "origin" and "client".
    static std::string event(int sequence, const std::string& key, const std::string& from, const std::string& to,
                             const std::string& cause = R"("origin":"socket")") {
        return R"(all {"type":25,"messageId":"host-1700000000000-)" + std::to_string(sequence) +
               R"(","timestamp":1700000000000,"sequence":)" + std::to_string(sequence) + "," + cause +
               R"(,"payload":{"settingDBId":")" + key + R"(","from":")" + from + R"(","to":")" + to + R"("}})";
    }

    /// The answer to a SetSettings request of the asker.
    static std::string answer(const std::string& payload, const std::string& messageId = "m") {
        return R"(asker {"type":24,"messageId":")" + messageId + R"(","payload":{)" + payload + "}}";
    }

    /// A refusal to the asker; `index` is that of a request in a batch.
    static std::string refusal(const std::string& code, const std::string& message,
                               std::optional<int> index = std::nullopt) {
        return R"(asker {"error":{"code":")" + code + R"(","message":")" + message + "\"" +
               (index ? ",\"index\":" + std::to_string(*index) : "") + "}}";
    }

    static constexpr const char* noMessageId = R"(\"answer\" needs a \"messageId\" that is a string)";
    static constexpr const char* badClient =
        R"(\"client\" must be 1 to 64 characters, none of them a control character)";
    static constexpr const char* noRoom =
        "too much data is queued for clients that do not read; try again later or request fewer settings";

    /// An observer in the process that records what it is told.
    SettingObserver recorder() {
        return [this](const ObservedSetting& what) {
            journal.add("observer " + what.settingDBId +
                        (what.event ? " '" + what.event->from + "' -> '" + what.event->to + "' " +
                                          std::to_string(what.event->sequence) + " " + originName(what.event->origin) +
                                          " '" + what.event->client + "'"
                                    : " notice"));
        };
    }

    static bool isSameFrame(const std::string& one, const std::string& next) {
        return (one.rfind("asker {", 0) == 0 || one.rfind("other {", 0) == 0) && one.substr(5) == next.substr(5) &&
               one != next;
    }

    SettingsHostTests::LogRecording log;
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeAppLaunch> launcher =
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal);
    std::shared_ptr<TrafficRecording> traffic = std::make_shared<TrafficRecording>();
    std::chrono::system_clock::time_point time{std::chrono::milliseconds(1700000000000)};
    std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>();
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(traffic, std::make_shared<RequestContext>(), backlog,
                                                                   Environment{[this] { return time; }, randomBytes});
    std::shared_ptr<CheckedSettingsHandler> handler = CheckedSettingsHandler::create(
        hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk, launcher,
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal));
    std::shared_ptr<JournalTransactions> transactions = std::make_shared<JournalTransactions>(journal, storage);
    std::shared_ptr<JournalClient> asker = std::make_shared<JournalClient>(journal, "asker");
    std::shared_ptr<JournalClient> other = std::make_shared<JournalClient>(journal, "other");
};

}  // namespace SettingsHandlerKit
