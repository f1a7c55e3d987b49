#include "HubFixture.h"

namespace SettingsHandlerKit {

class ClientNamesTest : public HubFixture {
protected:
    void hello(const std::shared_ptr<Client>& client, const std::string& name) {
        hub->received(client, R"({"messageId":"h","hello":{"client":")" + name + "\"}}");
        taken();
    }

    /// The members of an event's cause that `frame` leads to; for another frame what is sent.
    std::string causeOf(const std::string& frame, const std::shared_ptr<Client>& client) {
        for (const auto& line : handled(frame, client)) {
            const auto begin = line.find("\"origin\"");
            if (begin != std::string::npos) {
                return line.substr(begin, line.find(",\"payload\"") - begin);
            }
            if (line.find(" {") != std::string::npos) {
                return line;
            }
        }
        return "nothing";
    }

    /// A change with `more` members.
    std::string change(const std::string& more = "") {
        return set("deviceName", "Den " + std::to_string(++changes), more);
    }

    int changes = 0;
    std::shared_ptr<JournalClient> page =
        std::make_shared<JournalClient>(journal, "page", Origin::PAGE, ListenerKind::WEB);
};

TEST_F(ClientNamesTest, AnEventHasTheNameOfTheClientThatCausedIt) {
    const auto watching = hub->observers().add(std::nullopt, recorder());
    EXPECT_EQ(handled(set("deviceName", "Den", R"("client":"remote",)")),
              (Lines{"storage.setValue(deviceName, Den)",
                     event(1, "deviceName", "TV", "Den", R"("origin":"socket","client":"remote")"),
                     "observer deviceName 'TV' -> 'Den' 1 socket 'remote'"}));
    // It holds for that request.
    EXPECT_EQ(handled(set("deviceName", "TV", "")).back(), "observer deviceName 'Den' -> 'TV' 2 socket ''");
}

TEST_F(ClientNamesTest, ARequestAtTheUnixSocketMayHaveItsOwn) {
    hello(asker, "bridge");
    EXPECT_EQ(causeOf(change(), asker), R"("origin":"socket","client":"bridge")");
    EXPECT_EQ(causeOf(change(R"("client":"caller",)"), asker), R"("origin":"socket","client":"caller")");
    EXPECT_EQ(causeOf(change(), asker), R"("origin":"socket","client":"bridge")");
    EXPECT_EQ(causeOf(change(), other), R"("origin":"socket")") << "that of another connection";
    hello(asker, "remote");
    EXPECT_EQ(causeOf(change(), asker), R"("origin":"socket","client":"remote")");
    hub->received(asker, R"({"messageId":"h","hello":{}})");
    taken();
    EXPECT_EQ(causeOf(change(), asker), R"("origin":"socket","client":"remote")") << "a hello without one";
}

TEST_F(ClientNamesTest, AtTheWebSocketOnlyTheConnectionHasOne) {
    EXPECT_EQ(causeOf(change(R"("client":"caller",)"), page), R"("origin":"page")");
    EXPECT_EQ(causeOf(change(R"("client":7,)"), page), R"("origin":"page")");
    hello(page, "sofa");
    EXPECT_EQ(causeOf(change(R"("client":"caller",)"), page), R"("origin":"page","client":"sofa")");
    EXPECT_EQ(causeOf(R"({"batch":[)" + change(R"("client":"caller",)") + "]}", page),
              R"("origin":"page","client":"sofa")");
}

TEST_F(ClientNamesTest, ANameThatIsNoneIsRefusedAndNothingIsDone) {
    for (const std::string name : {"7", "null", "true", "{}", "[]", "\"\"", R"("a\nb")", R"("a\u0000")", R"("\u007f")",
                                   R"("\u009b")", "\"\xc2\x80\""}) {
        EXPECT_EQ(handled(change(R"("client":)" + name + ",")), Lines{refusal("bad-request", badClient)}) << name;
        EXPECT_EQ(traffic->take().back(), "refused bad-request") << "not handled";
        EXPECT_EQ(handled(R"({"type":7,"messageId":"m","payload":{"settings":[]},"client":)" + name + "}"),
                  Lines{refusal("bad-request", badClient)});
        EXPECT_EQ(handled(R"({"type":22,"client":)" + name + "}"), Lines{refusal("bad-request", badClient)});
    }
    EXPECT_EQ(causeOf(change(R"("client":")" + std::string(65, 'n') + R"(",)"), asker),
              refusal("bad-request", badClient));
    EXPECT_EQ(causeOf(change(R"("answer":true,"client":"",)"), asker), refusal("no-message-id", noMessageId))
        << "the first fault";
    EXPECT_EQ(storage.values["deviceName"], "TV");
    EXPECT_TRUE(log.take().empty()) << "the handler was not called";
}

TEST_F(ClientNamesTest, EveryOtherCharacterIsAllowed) {
    std::string longest;
    for (int count = 0; count < 64; ++count) {
        longest += "\xf0\x9f\x98\x80";
    }
    for (const auto& name : {std::string("a"), std::string(" "), std::string("Wohnzimmer \xc3\xa4\xc2\xa0"), longest}) {
        EXPECT_EQ(causeOf(change(R"("client":")" + name + R"(",)"), asker),
                  R"("origin":"socket","client":")" + name + "\"");
    }
    EXPECT_EQ(causeOf(change(R"("client":"\"\\",)"), asker), R"("origin":"socket","client":"\"\\")");
}

TEST_F(ClientNamesTest, WhatNoClientCausedHasNone) {
    hello(asker, "remote");
    hub->perform(Origin::DEVICE, [&] { handler->setSetting("deviceName", "Den"); });
    EXPECT_EQ(taken().at(1), event(1, "deviceName", "TV", "Den", R"("origin":"device")"));
    // Not even meanwhile: the device's own doing.
    journal.at("storage.setValue(deviceName", [&] {
        hub->perform(Origin::DEVICE, [&] { handler->setSetting("timezone", "UTC"); });
        handler->setSetting("companionDevice", "Phone");
    });
    EXPECT_EQ(handled(change()),
              (Lines{"storage.setValue(deviceName, Den 1)", "sdk.setTimezone(UTC)",
                     event(2, "timezone", "America/Vancouver", "UTC", R"("origin":"device")"),
                     "storage.setValue(companionDevice, Phone)",
                     event(3, "companionDevice", R"([\"\",\"\"])", "Phone", R"("origin":"socket","client":"remote")"),
                     event(4, "deviceName", "Den", "Den 1", R"("origin":"socket","client":"remote")")}));
    // Nor has what observers in the process do afterwards.
    const auto chained = hub->observers().add(
        "deviceName", [&](const ObservedSetting& /*what*/) { handler->setSetting("timezone", "Europe/Paris"); });
    hub->received(asker, change());
    EXPECT_NE(taken().back().find(R"("sequence":6,"origin":"device","payload")"), std::string::npos);
}

TEST_F(ClientNamesTest, AClientThatIsGoneLeavesNoName) {
    hello(asker, "remote");
    hub->disconnected(asker, DisconnectReason::CLOSED);
    hub->connected(asker);
    EXPECT_EQ(causeOf(change(), asker), R"("origin":"socket")");
}

}  // namespace SettingsHandlerKit
