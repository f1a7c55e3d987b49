#pragma once

#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerTesting/JsonText.h"
#include "SettingsHandlerTesting/Requests.h"
#include "SettingsHandlerTesting/contracts/Hooks.h"

namespace SettingsHandlerTesting {

/// What a client of a transport received.
struct ReceivedMessage {
    /// A reply reaches the requester, an event everybody.
    enum Kind { REPLY, EVENT };
    /// A reply or an event.
    Kind kind = REPLY;
    /// Of an event; of a reply it is not compared.
    int type = 0;
    /// Of an event: empty when the clients are not told of it.
    std::string messageId;
    /// Compact JSON text.
    std::string payload;
};

/// As failing checks print it.
inline std::ostream& operator<<(std::ostream& stream, const ReceivedMessage& message) {
    return stream << (message.kind == ReceivedMessage::REPLY ? "reply " : "event ") << message.messageId << " of type "
                  << message.type << ": " << message.payload;
}

/// What the handler relies on in every transport. Run it over your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyTransportMaker { … };
///     INSTANTIATE_TYPED_TEST_SUITE_P(MyTransport, TransportContract, MyTransportMaker);
///
/// The maker is default-constructed for each check, with two clients connected, and has
///
/// - `CommunicationHandler::CommunicationHandlerInterface& transport()`;
/// - `void send(int client, int messageType, const std::string& text)`: client 0 or 1 sends the request `text`, a JSON
///   object with the type in its member "type" too; returns when the transport has dealt with it;
/// - `std::vector<ReceivedMessage> take(int client)`: replies and events that reached the client since it was asked
///   last, in their order, all that were sent by now; refusals of the transport's own are left out.
///
/// Its hook, for a check of its own: `static constexpr bool anyThread = true;`: events may be sent on every thread.
///
/// It cannot show that requests are delivered one at a time, nor that the transport stops before the handler goes.
template <typename Maker>
class TransportContract : public ::testing::Test {
    /// @cond
protected:
    CommunicationHandler::CommunicationHandlerInterface& transport() { return maker.transport(); }

    /// Registers a handler that keeps what it is called with, and then does `reaction`.
    void keep(int messageType, std::function<void()> reaction = {}) {
        transport().registerMessageHandler(messageType, [this, reaction, messageType](const std::string& text) {
            delivered.emplace_back(messageType, text);
            if (reaction) {
                reaction();
            }
        });
    }

    std::string request(int messageType, const std::string& messageId = "m1") {
        return requestText(transport(), messageType, messageId, 1, R"({"settings":[]})");
    }

    static rapidjson::Document payloadOf(const std::string& value) {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("to", rapidjson::Value(value, payload.GetAllocator()), payload.GetAllocator());
        return payload;
    }

    /// A payload that lives as long as the check: a transport that looks at it too late fails, and does not crash.
    rapidjson::Document& kept(const std::string& value) {
        payloads.push_back(std::make_unique<rapidjson::Document>(payloadOf(value)));
        return *payloads.back();
    }

    /// Sends the event "a setting changed".
    std::string announce(const std::string& value) {
        return transport().sendMessage(CommunicationHandler::SETTING_CHANGED, kept(value));
    }

    void reply(const std::string& messageId, const std::string& value) {
        transport().sendResponse(messageId, kept(value));
    }

    /// What a client received, without the ids of events, which are the transport's own.
    std::vector<std::string> received(int client) {
        std::vector<std::string> texts;
        for (const auto& message : maker.take(client)) {
            texts.push_back(message.kind == ReceivedMessage::REPLY
                                ? "reply " + message.messageId + " " + message.payload
                                : "event " + std::to_string(message.type) + " " + message.payload);
        }
        return texts;
    }

    static std::string eventText(const std::string& value) { return "event 25 " + jsonText(payloadOf(value)); }
    static std::string replyText(const std::string& messageId, const std::string& value) {
        return "reply " + messageId + " " + jsonText(payloadOf(value));
    }

    using Deliveries = std::vector<std::pair<int, std::string>>;

    Deliveries delivered;
    std::vector<std::unique_ptr<rapidjson::Document>> payloads;
    /// Last, so that it goes first: a transport that delivers at its end finds the rest in place.
    Maker maker;
    /// @endcond
};

TYPED_TEST_SUITE_P(TransportContract);
// Whoever includes this may have nothing to check with it yet.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TransportContract);

/// The handler looks for the members of a request by these names.
TYPED_TEST_P(TransportContract, NamesTheMembersOfTheEnvelope) {
    const auto& transport = this->transport();
    EXPECT_NE(transport.messageIdKey, "");
    EXPECT_NE(transport.timestampKey, "");
    EXPECT_NE(transport.payloadKey, "");
    EXPECT_NE(transport.messageIdKey, transport.timestampKey);
    EXPECT_NE(transport.messageIdKey, transport.payloadKey);
    EXPECT_NE(transport.timestampKey, transport.payloadKey);
}

/// The handler registers in its constructor: a request delivered in there finds half an object.
TYPED_TEST_P(TransportContract, CallsNobodyWhileRegistering) {
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    this->keep(CommunicationHandler::GET_SETTINGS);
    EXPECT_TRUE(this->delivered.empty()) << "what arrived before the registration is not kept for it";
}

/// The function that the handler passes lives during the call only.
TYPED_TEST_P(TransportContract, KeepsItsOwnCopyOfTheHandler) {
    auto part = std::make_shared<int>(0);
    const std::weak_ptr<int> whole = part;
    this->transport().registerMessageHandler(CommunicationHandler::LOG_OUT,
                                             [part = std::move(part)](const std::string&) { ++*part; });
    ASSERT_FALSE(whole.expired()) << "the handler was not copied";
    this->maker.send(0, CommunicationHandler::LOG_OUT, this->request(CommunicationHandler::LOG_OUT));
    EXPECT_EQ(*whole.lock(), 1);
}

/// The handler reads envelope and payload itself, and tells requests apart by nothing but who is called.
TYPED_TEST_P(TransportContract, DeliversTheWholeTextToTheHandlerOfItsType) {
    const std::vector<int> types{CommunicationHandler::GET_SETTINGS, CommunicationHandler::IS_ORLIA_SELECTED_VA,
                                 CommunicationHandler::OPEN_VA_SETTINGS, CommunicationHandler::SET_SETTINGS,
                                 CommunicationHandler::LOG_OUT};
    for (const int type : types) {
        this->keep(type);
    }
    typename TestFixture::Deliveries expected;
    int client = 0;
    for (const int type : types) {
        std::string text = this->request(type, "\" K\xc3\xbc");
        text.insert(1, R"( "unknown" : [ 1.50, null ], )");
        this->maker.send(client, type, text);
        expected.emplace_back(type, text);
        client = 1 - client;
    }
    EXPECT_EQ(this->delivered, expected) << "each request goes to the handler of its type, every byte of it";
}

/// Pages may be newer than the device's software.
TYPED_TEST_P(TransportContract, DropsWhatNobodyRegisteredFor) {
    this->keep(CommunicationHandler::GET_SETTINGS);
    for (const int type : {CommunicationHandler::SET_SETTINGS + 0, CommunicationHandler::SETTING_CHANGED + 0, 4711}) {
        EXPECT_NO_THROW(this->maker.send(0, type, this->request(type)));
    }
    EXPECT_TRUE(this->delivered.empty()) << "a request went to a handler of another type";
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->delivered.size(), 1U) << "the transport must go on after an unknown type";
}

/// The handler names nobody but the message: other pages would take the reply for theirs.
TYPED_TEST_P(TransportContract, RepliesToTheAskerAlone) {
    this->keep(CommunicationHandler::GET_SETTINGS, [this] { this->reply("m1", "first"); });
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), (std::vector<std::string>{this->replyText("m1", "first")}));
    EXPECT_EQ(this->received(1), std::vector<std::string>{}) << "a client received the reply to another one";
    this->maker.send(1, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), std::vector<std::string>{}) << "a client received the reply to another one";
    EXPECT_EQ(this->received(1), (std::vector<std::string>{this->replyText("m1", "first")}));
}

/// Every page shows the new value, whoever changed it: also the one that did, and also a change made at the device.
TYPED_TEST_P(TransportContract, SendsEventsToEveryClient) {
    this->keep(CommunicationHandler::SET_SETTINGS, [this] { this->announce("asked for"); });
    this->announce("at the device");
    this->maker.send(1, CommunicationHandler::SET_SETTINGS, this->request(CommunicationHandler::SET_SETTINGS));
    const std::vector<std::string> expected{this->eventText("at the device"), this->eventText("asked for")};
    EXPECT_EQ(this->received(0), expected);
    EXPECT_EQ(this->received(1), expected);
}

/// A page that writes and then asks takes the reply for the newer of the two.
TYPED_TEST_P(TransportContract, KeepsTheOrder) {
    this->keep(CommunicationHandler::GET_SETTINGS, [this] {
        this->announce("1");
        this->reply("m1", "2");
        this->announce("3");
    });
    this->announce("0");
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    this->announce("4");
    EXPECT_EQ(this->received(0),
              (std::vector<std::string>{this->eventText("0"), this->eventText("1"), this->replyText("m1", "2"),
                                        this->eventText("3"), this->eventText("4")}));
    EXPECT_EQ(this->received(1), (std::vector<std::string>{this->eventText("0"), this->eventText("1"),
                                                           this->eventText("3"), this->eventText("4")}));
}

/// The document is valid during the call only: what is sent later must have been copied, or moved away.
TYPED_TEST_P(TransportContract, SendsPayloadsAsTheyWereDuringTheCall) {
    auto& answer = this->kept("answer");
    auto& event = this->kept("event");
    this->keep(CommunicationHandler::GET_SETTINGS, [&] {
        this->transport().sendResponse("m1", answer);
        answer.SetObject();
    });
    this->transport().sendMessage(CommunicationHandler::SETTING_CHANGED, event);
    event.SetObject();
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), (std::vector<std::string>{this->eventText("event"), this->replyText("m1", "answer")}));
}

/// Values are the user's: any text, of any length that the storage takes.
TYPED_TEST_P(TransportContract, SendsAnyText) {
    using namespace std::string_literals;
    std::string value;
    this->keep(CommunicationHandler::GET_SETTINGS, [&] { this->reply("m1", value); });
    for (const std::string& text : {""s, "\"quoted\" \\ {\"a\":1}"s, "line\nline\r\ttab"s, "a\0b"s,
                                    "K\xc3\xbc\xf0\x9f\x93\xba"s, std::string(40000, 'x')}) {
        value = text;
        this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
        this->announce(text);
        EXPECT_TRUE(this->received(0) == (std::vector<std::string>{this->replyText("m1", text), this->eventText(text)}))
            << "a text of " << text.size() << " bytes, beginning '" << text.substr(0, 20) << "', came out changed";
    }
}

/// A message id is the client's own and may be any text; the handler gives it back as it was.
TYPED_TEST_P(TransportContract, RepliesWithAnyMessageId) {
    std::string messageId;
    this->keep(CommunicationHandler::GET_SETTINGS, [&] { this->reply(messageId, "x"); });
    for (const std::string id : {"", "a \"b\" \\", "K\xc3\xbc", "0"}) {
        messageId = id;
        this->maker.send(0, CommunicationHandler::GET_SETTINGS,
                         this->request(CommunicationHandler::GET_SETTINGS, messageId));
        EXPECT_EQ(this->received(0), (std::vector<std::string>{this->replyText(id, "x")}));
    }
}

/// The handler itself ignores what sendMessage answers. A derived handler may follow an event by it.
TYPED_TEST_P(TransportContract, AnswersWithTheIdOfTheEvent) {
    const std::string first = this->announce("first");
    const std::string second = this->announce("second");
    EXPECT_NE(first, second) << "two events have one id";
    const auto messages = this->maker.take(0);
    ASSERT_EQ(messages.size(), 2U);
    if (!messages[0].messageId.empty()) {
        EXPECT_EQ(messages[0].messageId, first) << "clients are told of another id than the sender";
        EXPECT_EQ(messages[1].messageId, second) << "clients are told of another id than the sender";
    }
}

/// The handler catches nothing: an exception of a storage comes out of it, and the next request is another one's.
TYPED_TEST_P(TransportContract, GoesOnAfterAnException) {
    bool throws = true;
    this->keep(CommunicationHandler::GET_SETTINGS, [&] {
        if (throws) {
            throw std::runtime_error("thrown by a handler");
        }
        this->reply("m1", "x");
    });
    try {
        this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    } catch (const std::runtime_error&) {
        // A transport without a loop of its own may let it out to the one who delivers.
    }
    throws = false;
    this->maker.send(1, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), std::vector<std::string>{});
    EXPECT_EQ(this->received(1), (std::vector<std::string>{this->replyText("m1", "x")}));
}

/// A change at the device is announced on the device layer's thread, while requests come on the transport's.
TYPED_TEST_P(TransportContract, TakesEventsFromAnyThread) {
    if constexpr (!offers<AnyThreadHook, TypeParam>) {
        GTEST_SKIP() << "needs `static constexpr bool anyThread = true;` in the maker";
    } else {
        constexpr int count = 20;
        this->keep(CommunicationHandler::GET_SETTINGS, [this] { this->reply("m1", "x"); });
        std::vector<rapidjson::Document*> events;
        for (int number = 0; number < count; ++number) {
            events.push_back(&this->kept(std::to_string(number)));
        }
        auto device = std::async(std::launch::async, [&] {
            for (auto* const event : events) {
                this->transport().sendMessage(CommunicationHandler::SETTING_CHANGED, *event);
            }
        });
        for (int number = 0; number < count; ++number) {
            this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
        }
        EXPECT_NO_THROW(device.get());
        std::vector<std::string> announced;
        std::size_t replies = 0;
        for (const auto& text : this->received(0)) {
            if (text == this->replyText("m1", "x")) {
                ++replies;
            } else {
                announced.push_back(text);
            }
        }
        std::vector<std::string> expected;
        for (int number = 0; number < count; ++number) {
            expected.push_back(this->eventText(std::to_string(number)));
        }
        EXPECT_EQ(announced, expected);
        EXPECT_EQ(this->received(1), expected);
        EXPECT_EQ(replies, static_cast<std::size_t>(count));
    }
}

REGISTER_TYPED_TEST_SUITE_P(TransportContract, NamesTheMembersOfTheEnvelope, CallsNobodyWhileRegistering,
                            KeepsItsOwnCopyOfTheHandler, DeliversTheWholeTextToTheHandlerOfItsType,
                            DropsWhatNobodyRegisteredFor, RepliesToTheAskerAlone, SendsEventsToEveryClient,
                            KeepsTheOrder, SendsPayloadsAsTheyWereDuringTheCall, SendsAnyText, RepliesWithAnyMessageId,
                            AnswersWithTheIdOfTheEvent, GoesOnAfterAnException, TakesEventsFromAnyThread);

}  // namespace SettingsHandlerTesting
