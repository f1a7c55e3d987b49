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

/// A message that a client of a transport received.
struct ReceivedMessage {
    /// A reply reaches the client that sent the request, an event every client.
    enum Kind { REPLY, EVENT };
    /// A reply or an event.
    Kind kind = REPLY;
    /// Type of an event; not compared for a reply.
    int type = 0;
    /// Of an event: empty when the transport does not send it to clients.
    std::string messageId;
    /// Compact JSON text.
    std::string payload;
};

/// Prints for failing checks.
inline std::ostream& operator<<(std::ostream& stream, const ReceivedMessage& message) {
    return stream << (message.kind == ReceivedMessage::REPLY ? "reply " : "event ") << message.messageId << " of type "
                  << message.type << ": " << message.payload;
}

/// Checks what the handler requires of a transport. Run it on your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyTransportMaker { … };
///     INSTANTIATE_TYPED_TEST_SUITE_P(MyTransport, TransportContract, MyTransportMaker);
///
/// The maker is default-constructed for each check, with two clients connected, and has
///
/// - `CommunicationHandler::CommunicationHandlerInterface& transport()`;
/// - `void send(int client, int messageType, const std::string& text)`: client 0 or 1 sends the request `text`, a JSON
///   object with the type in its member "type" too; returns after the transport has handled it;
/// - `std::vector<ReceivedMessage> take(int client)`: removes and returns all replies and events that were sent to the
///   client so far, in order, without refusals by the transport itself.
///
/// Its hook, for one check: `static constexpr bool anyThread = true;`: events may be sent on any thread.
///
/// Not checked: requests must be delivered one at a time, and the transport must stop before the handler is destroyed.
/// Not required: answers, batches, names of clients, resume and history. The kit's server has them; the handler ignores
/// their members, which reach it with the text of a request.
template <typename Maker>
class TransportContract : public ::testing::Test {
    /// @cond
protected:
    CommunicationHandler::CommunicationHandlerInterface& transport() { return maker.transport(); }

    /// Registers a handler that keeps its argument and then calls `reaction`.
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

    /// A payload that lives as long as the check: a transport that reads it too late fails the check and does not
    /// crash.
    rapidjson::Document& kept(const std::string& value) {
        payloads.push_back(std::make_unique<rapidjson::Document>(payloadOf(value)));
        return *payloads.back();
    }

    /// Sends a SettingChanged event.
    std::string announce(const std::string& value) {
        return transport().sendMessage(CommunicationHandler::SETTING_CHANGED, kept(value));
    }

    void reply(const std::string& messageId, const std::string& value) {
        transport().sendResponse(messageId, kept(value));
    }

    /// The messages that a client received, without the ids of events, which the transport chooses.
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
    /// Last, so that it is destroyed first: a transport may deliver until then.
    Maker maker;
    /// @endcond
};

TYPED_TEST_SUITE_P(TransportContract);
// A program may include this header without an instantiation.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TransportContract);

/// The handler finds the members of a request by these names.
TYPED_TEST_P(TransportContract, NamesTheMembersOfTheEnvelope) {
    const auto& transport = this->transport();
    EXPECT_NE(transport.messageIdKey, "");
    EXPECT_NE(transport.timestampKey, "");
    EXPECT_NE(transport.payloadKey, "");
    EXPECT_NE(transport.messageIdKey, transport.timestampKey);
    EXPECT_NE(transport.messageIdKey, transport.payloadKey);
    EXPECT_NE(transport.timestampKey, transport.payloadKey);
}

/// The handler registers in its constructor: a request must not be delivered to an object under construction.
TYPED_TEST_P(TransportContract, CallsNobodyWhileRegistering) {
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    this->keep(CommunicationHandler::GET_SETTINGS);
    EXPECT_TRUE(this->delivered.empty()) << "what arrived before the registration is not kept for it";
}

/// The function that the handler passes is valid during the call only.
TYPED_TEST_P(TransportContract, KeepsItsOwnCopyOfTheHandler) {
    auto part = std::make_shared<int>(0);
    const std::weak_ptr<int> whole = part;
    this->transport().registerMessageHandler(CommunicationHandler::LOG_OUT,
                                             [part = std::move(part)](const std::string&) { ++*part; });
    ASSERT_FALSE(whole.expired()) << "the handler was not copied";
    this->maker.send(0, CommunicationHandler::LOG_OUT, this->request(CommunicationHandler::LOG_OUT));
    EXPECT_EQ(*whole.lock(), 1);
}

/// The handler parses envelope and payload itself. It gets the type of a request only by which function is called.
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

/// Clients may be newer than the device's software.
TYPED_TEST_P(TransportContract, DropsWhatNobodyRegisteredFor) {
    this->keep(CommunicationHandler::GET_SETTINGS);
    for (const int type : {CommunicationHandler::SET_SETTINGS + 0, CommunicationHandler::SETTING_CHANGED + 0, 4711}) {
        EXPECT_NO_THROW(this->maker.send(0, type, this->request(type)));
    }
    EXPECT_TRUE(this->delivered.empty()) << "a request went to a handler of another type";
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->delivered.size(), 1U) << "the transport must keep working after an unknown type";
}

/// The handler gives the transport only the message id, which other clients may use too.
TYPED_TEST_P(TransportContract, RepliesToTheAskerAlone) {
    this->keep(CommunicationHandler::GET_SETTINGS, [this] { this->reply("m1", "first"); });
    this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), (std::vector<std::string>{this->replyText("m1", "first")}));
    EXPECT_EQ(this->received(1), std::vector<std::string>{}) << "a client received the reply to another one";
    this->maker.send(1, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), std::vector<std::string>{}) << "a client received the reply to another one";
    EXPECT_EQ(this->received(1), (std::vector<std::string>{this->replyText("m1", "first")}));
}

/// Every client gets every change: also the one that made it, and also changes at the device.
TYPED_TEST_P(TransportContract, SendsEventsToEveryClient) {
    this->keep(CommunicationHandler::SET_SETTINGS, [this] { this->announce("asked for"); });
    this->announce("at the device");
    this->maker.send(1, CommunicationHandler::SET_SETTINGS, this->request(CommunicationHandler::SET_SETTINGS));
    const std::vector<std::string> expected{this->eventText("at the device"), this->eventText("asked for")};
    EXPECT_EQ(this->received(0), expected);
    EXPECT_EQ(this->received(1), expected);
}

/// A client takes the later of an event and a reply for the newer value.
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

/// The document is valid during the call only: a transport that sends later must copy it or move it away.
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

/// Values are any text, of any length that the storage accepts.
TYPED_TEST_P(TransportContract, SendsAnyText) {
    using namespace std::string_literals;
    std::string value;
    this->keep(CommunicationHandler::GET_SETTINGS, [&] { this->reply("m1", value); });
    for (const std::string& text : {""s, R"("quoted" \ {"a":1})"s, "line\nline\r\ttab"s, "a\0b"s,
                                    "K\xc3\xbc\xf0\x9f\x93\xba"s, std::string(40000, 'x')}) {
        value = text;
        this->maker.send(0, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
        this->announce(text);
        EXPECT_TRUE(this->received(0) == (std::vector<std::string>{this->replyText("m1", text), this->eventText(text)}))
            << "a text of " << text.size() << " bytes, beginning '" << text.substr(0, 20) << "', came out changed";
    }
}

/// A client may choose any text as message id; the reply has the same.
TYPED_TEST_P(TransportContract, RepliesWithAnyMessageId) {
    std::string messageId;
    this->keep(CommunicationHandler::GET_SETTINGS, [&] { this->reply(messageId, "x"); });
    for (const std::string id : {"", R"(a "b" \)", "K\xc3\xbc", "0"}) {
        messageId = id;
        this->maker.send(0, CommunicationHandler::GET_SETTINGS,
                         this->request(CommunicationHandler::GET_SETTINGS, messageId));
        EXPECT_EQ(this->received(0), (std::vector<std::string>{this->replyText(id, "x")}));
    }
}

/// The handler ignores the result of sendMessage; a derived handler may use it.
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

/// The handler catches nothing: an exception of a collaborator reaches the transport, which must handle the next
/// request.
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
        // A transport without its own thread may pass it to the caller.
    }
    throws = false;
    this->maker.send(1, CommunicationHandler::GET_SETTINGS, this->request(CommunicationHandler::GET_SETTINGS));
    EXPECT_EQ(this->received(0), std::vector<std::string>{});
    EXPECT_EQ(this->received(1), (std::vector<std::string>{this->replyText("m1", "x")}));
}

/// The event of a change at the device is sent on the device layer's thread, while requests run on the transport's.
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
