#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "SettingsHandlerTesting/FakeObservers.h"
#include "Utils/RapidjsonUtil.h"
#include "WholeHost.h"
#include "support/Sanitizers.h"

namespace SettingsHost {

namespace {

using Values = std::map<std::string, std::string>;
using Changes = std::vector<std::pair<std::string, std::string>>;

std::string escaped(const std::string& text) {
    std::string escapedText;
    for (const char character : text) {
        escapedText += character == '"' ? R"(\")" : std::string(1, character);
    }
    return escapedText;
}

/// One of each owner and kind, so many bytes that there is a checkpoint now and then.
Changes changesOf(unsigned round) {
    const std::string number = std::to_string(round);
    const std::string mode = round % 2 == 0 ? "true" : "false";
    return {{"deviceName", "Name " + number},
            {"friendlyName", "Friendly " + number},
            {"tovanEntitlementStatus", "Status " + number},
            {"orliaLocale", R"(["l-)" + number + R"("])"},
            {"timezone", "Zone/" + number},
            {"handsFreeEnabled", mode},
            {"handsFreeAlwaysOnEnabled", mode},
            {"pttAlwaysOnEnabled", mode},
            {"captionsStyles", number + std::string(20000, 'x')},
            {"a key of its own", number}};
}

std::string batchToMake(const Changes& changes) {
    std::vector<std::string> requests;
    for (const auto& [key, value] : changes) {
        requests.push_back(setRequest(key, escaped(value), 2, R"("messageId":"m","answer":true,)"));
        if (key == "timezone") {
            requests.emplace_back(R"({"type":7,"messageId":"g","payload":{"settings":[]}})");
        }
    }
    return batchOf(requests);
}

Values after(Values values, const Changes& changes) {
    for (const auto& [key, value] : changes) {
        values[key] = value;
    }
    return values;
}

/// What a client knows: values from events, the keys of notices, and the outcomes of answers.
struct Knowledge {
    Values values;
    std::set<std::string> toRead;
    std::vector<std::string> outcomes;

    void learn(const std::string& text) {
        rapidjson::Document frame;
        frame.Parse(text.c_str());
        if (frame.HasMember("notice")) {
            for (const auto& key : frame["notice"]["reread"].GetArray()) {
                toRead.insert(key.GetString());
            }
        } else if (frame["type"] == 25) {
            values[frame["payload"]["settingDBId"].GetString()] = frame["payload"]["to"].GetString();
        } else if (frame["payload"].HasMember("outcome")) {
            const auto& payload = frame["payload"];
            outcomes.emplace_back(payload["outcome"].GetString());
            if (payload.HasMember("reason")) {
                outcomes.back() += std::string(" ") + payload["reason"].GetString();
            }
        }
    }
};

/// An observer of the handler that knows the value.
class Told : public VessaNativeCommon::OrliaLocaleObserverInterface,
             public VessaNativeCommon::FriendlyNameObserverInterface,
             public teskVessa::NativeBridgeInterface {
public:
    void notifyOrliaLocaleChanged(const std::string& locale) override {
        values["orliaLocale"] = R"([")" + locale + R"("])";
    }
    void notifyFriendlyNameChanged(const std::string& name) override { values["friendlyName"] = name; }
    void notifyEntitlementStatusChanged(const std::string& status) override {
        values["tovanEntitlementStatus"] = status;
    }

    Values values;
};

}  // namespace

/// A batch is stored or not, whatever the disk does, and then everybody has the same values.
class Batch : public ::testing::Test {
protected:
    Batch() {
        start();
        for (const auto& [key, value] : changesOf(0)) {
            EXPECT_TRUE(host->handler->setSetting(key, value)) << key;
        }
        restart();
    }

    void start() {
        host = std::make_unique<WholeHost>(folder / "settings.db", disk);
        told = std::make_shared<Told>();
        host->handler->addOrliaLocaleObserver(told);
        host->handler->addFriendlyNameObserver(told);
        host->handler->addEntitlementStatusObserver(told);
        seen = std::make_shared<Knowledge>();
        observation = host->hub->observers().add(std::nullopt, [seeing = seen](const ObservedSetting& setting) {
            if (setting.event) {
                seeing->values[setting.settingDBId] = setting.event->to;
            } else {
                seeing->toRead.insert(setting.settingDBId);
            }
        });
        another = std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::PAGE, ListenerKind::WEB);
        host->hub->connected(another);
    }

    void restart() {
        host.reset();
        start();
    }

    /// As the owners have them.
    Values values() {
        std::vector<std::string> keys;
        for (const auto& change : changesOf(0)) {
            keys.push_back(change.first);
        }
        return host->handler->getSettings(keys);
    }

    static void expectKnown(Knowledge known, const Values& real, const char* who) {
        for (const auto& key : known.toRead) {
            known.values[key] = real.at(key);
        }
        for (const auto& [key, value] : known.values) {
            EXPECT_EQ(value, real.at(key)) << who << " " << key;
        }
    }

    Knowledge knowledgeOf(const std::shared_ptr<SettingsHandlerTesting::FakeClient>& client) {
        Knowledge knowledge;
        for (const auto& frame : client->take()) {
            knowledge.learn(frame);
        }
        return knowledge;
    }

    /// Storage, handler, observers, simulation and clients agree on `expected`, now and after a restart.
    void expectAgreement(const Values& expected, const std::vector<std::string>& outcomes) {
        EXPECT_TRUE(values() == expected);
        const Values cached = host->handler->getCurrentSettingsMap();
        for (const auto& [key, value] : expected) {
            const auto found = cached.find(key);
            // A cache that is made anew has keys of the catalogue only.
            EXPECT_TRUE(found == cached.end() ? key == "a key of its own" : found->second == value) << key;
        }
        for (const auto& [key, value] : told->values) {
            EXPECT_EQ(value, expected.at(key)) << "an observer of the handler";
        }
        expectKnown(*seen, expected, "an observer of the server");
        expectKnown(knowledgeOf(another), expected, "another client");
        const Knowledge asker = knowledgeOf(host->client);
        expectKnown(asker, expected, "the asking client");
        EXPECT_EQ(asker.outcomes, outcomes);
        restart();
        EXPECT_TRUE(values() == expected) << "after a restart";
    }

    void expectEitherOr(const Values& before, const Changes& changes) {
        const bool stored = values() == after(before, changes);
        (stored ? storedBatches : undoneBatches) += 1;
        std::vector<std::string> outcomes;
        for (const auto& [key, value] : changes) {
            outcomes.emplace_back(!stored ? "refused not-stored" : before.at(key) == value ? "unchanged" : "changed");
        }
        expectAgreement(stored ? after(before, changes) : before, outcomes);
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::unique_ptr<WholeHost> host;
    std::shared_ptr<Told> told;
    std::shared_ptr<Knowledge> seen;
    Observation observation;
    std::shared_ptr<SettingsHandlerTesting::FakeClient> another;
    unsigned storedBatches = 0;
    unsigned undoneBatches = 0;
};

TEST_F(Batch, NoFrameThatTellsOfItLeavesBeforeItIsStored) {
    host->hub->received(host->client, setRequest("deviceName", "the first change of a run flushes more"));
    host->client->take();
    another->take();
    seen->values.clear();
    std::vector<std::string> order;
    disk->onFlush([&] {
        order.emplace_back("flush");
        EXPECT_TRUE(host->client->frames.empty());
        EXPECT_TRUE(another->frames.empty());
        EXPECT_TRUE(seen->values.empty());
    });
    host->hub->received(host->client, batchToMake(changesOf(1)));
    disk->onFlush({});
    EXPECT_EQ(order, std::vector<std::string>{"flush"});
    // Two for each change and one for the GetSettings.
    EXPECT_EQ(host->client->frames.size(), 2 * changesOf(1).size() + 1);
    EXPECT_EQ(another->frames.size(), changesOf(1).size());
    EXPECT_EQ(seen->values.size(), changesOf(1).size());
}

TEST_F(Batch, IsStoredOrNotWhicheverCallOfTheDiskFails) {
    using Disk = SettingsHostTests::FaultyDisk;
    unsigned round = 0;
    for (const auto fault : {&Disk::failOnce, &Disk::failFrom, &Disk::fillUpFrom}) {
        // Until a batch has fewer calls, whether there is a checkpoint in it or not.
        unsigned spared = 0;
        for (long call = 1; spared < 10; call += TestSupport::sanitized ? 3 : 1) {
            SCOPED_TRACE("call " + std::to_string(call));
            const Values before = values();
            const Changes changes = changesOf(++round);
            (disk.get()->*fault)(call);
            host->hub->received(host->client, batchToMake(changes));
            const bool failed = disk->hasFailed();
            disk->work();
            // An operation that succeeds ends the wait for a storage that cannot be read.
            values();
            for (const auto& action : std::exchange(host->later, {})) {
                action();
            }
            spared += failed ? 0 : 1;
            expectEitherOr(before, changes);
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GE(storedBatches, 30U);
    EXPECT_GT(undoneBatches, TestSupport::sanitized ? 10U : 30U);
    RecordProperty("stored", static_cast<int>(storedBatches));
    RecordProperty("undone", static_cast<int>(undoneBatches));
}

TEST_F(Batch, IsCompleteOrAbsentWheneverThePowerIsCut) {
    std::mt19937 random(1);
    for (unsigned round = 1; round <= (TestSupport::sanitized ? 50 : 150); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        host.reset();
        disk->watch(folder.path());
        start();
        const Values before = values();
        const Changes changes = changesOf(round);
        disk->cutPowerAt(1 + round % 50);
        host->hub->received(host->client, batchToMake(changes));
        const Knowledge known = knowledgeOf(another);
        disk->cutPowerAt(1);
        host.reset();
        log.take();
        disk->restorePower(random);
        start();
        const bool stored = values() == after(before, changes);
        (stored ? storedBatches : undoneBatches) += 1;
        EXPECT_TRUE(stored || (values() == before && known.values.empty()));
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(storedBatches, 10U);
    EXPECT_GT(undoneBatches, 10U);
}

TEST_F(Batch, AfterAFailureTheNextOneIsStored) {
    disk->failOnce(1);
    host->hub->received(host->client, batchToMake(changesOf(1)));
    host->client->take();
    const Values before = values();
    host->hub->received(host->client, batchToMake(changesOf(3)));
    expectEitherOr(before, changesOf(3));
    EXPECT_EQ(storedBatches, 1U);
}

TEST_F(Batch, AfterAFailureOlderTimeStampsAreAcceptedAgain) {
    host->hub->received(host->client, setRequest("deviceName", "first", 100));
    disk->failOnce(1);
    host->hub->received(host->client, batchOf({setRequest("deviceName", "second", 200)}));
    disk->work();
    host->hub->received(host->client, setRequest("deviceName", "third", 50));
    EXPECT_EQ(values()["deviceName"], "third");
}

TEST_F(Batch, WhatALimitRefusesIsMissingAlone) {
    const std::string answer = R"("messageId":"m","answer":true,)";
    host->hub->received(host->client, batchOf({setRequest("deviceName", "Den", 2, answer),
                                               setRequest(std::string(257, 'k'), "v", 2, answer),
                                               setRequest("timezone", "Europe/Paris", 2, answer)}));
    EXPECT_EQ(knowledgeOf(host->client).outcomes,
              (std::vector<std::string>{"changed", "refused not-stored", "changed"}));
    EXPECT_EQ(values()["timezone"], "Europe/Paris");
}

}  // namespace SettingsHost
