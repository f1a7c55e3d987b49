#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "model/ReferenceModel.h"

namespace SettingsHandlerFuzz {

class Envelope;

/// The code with which a host refuses a text that is not an object within the limits; empty for one that is.
std::string refusalOf(const std::string& frame);
/// `json`: the parsed frame.
std::string refusalOf(const std::string& frame, const Envelope& json);
/// 1 to 64 characters, none of them a control character.
bool isName(const std::optional<std::string>& name);
/// Is the value one that would end the process inside the handler?
bool isRejectedValue(const std::optional<std::string>& key, const std::optional<std::string>& value);
/// What every host makes of a frame's members before it does anything.
struct RequestMembers {
    /// The code with which the request is refused; empty: it is not.
    std::string refusal;
    int type = 0;
    /// Must its outcome be answered?
    bool asks = false;
    std::string messageId;
    /// In whose name it is.
    std::optional<std::string> client;
};
RequestMembers requestIn(const Envelope& frame, bool isAtUnixSocket);
struct QueryMembers {
    std::string refusal;
    std::string name;
    std::string messageId;
    /// The text of its object.
    std::string members;
};
QueryMembers queryIn(const Envelope& frame, bool isAtUnixSocket);
/// Where a client that says hello goes on.
struct ResumeMembers {
    std::string run;
    unsigned long sequence = 0;
};
bool isHello(const Envelope& members);
std::optional<ResumeMembers> resumeIn(const Envelope& members);
bool isHistoryQuery(const Envelope& members);
bool isBatch(const std::optional<std::vector<std::string>>& requests);

/// An independent, simple implementation of the wire, for one client that sends; the other clients get the events.
/// It tells what each frame leads to, and shares no code with the product.
///
/// Frames are entries: "event 3 phone {…}", "notice ["a"]", "reply 7 m1 {…}", "answer 24 m1 {…}" without the message
/// for people, "refusal bad-request 2", "query {…}" with the whole text.
class WireModel {
public:
    using Entries = std::vector<std::string>;

    /// What a frame leads to.
    struct Reaction {
        /// Frames for the client.
        Entries frames;
        /// How many of the first ones are old events, for this client alone.
        std::size_t resent = 0;
        Entries journal;
        /// Codes of refusals, and requests with their outcomes, as they are reported.
        Entries reports;
    };

    static constexpr const char* pageAddress = "http://127.0.0.1:8097/?key=x";
    /// 16 bytes of 0.
    static constexpr const char* run = "00000000000000000000000000000000";

    struct Host {
        /// Otherwise it is at the web port.
        bool clientAtUnixSocket;
        /// What its log lines begin with.
        std::string name;
        /// Otherwise they are rolled back.
        bool storesBatches;
    };

    WireModel(const Surroundings& around, Host itsHost, std::vector<std::string> keysInTableOrder);

    Reaction receive(const std::string& frame);
    Reaction refuseTooLarge();

    /// The event that the host sent last, as it sent it.
    void sent(const std::string& event);

private:
    struct Event {
        long sequence;
        std::string key;
        std::string entry;
        std::string text;
    };
    /// What the history knows.
    struct Known {
        long sequence = 0;
        std::vector<Event> events;
        /// Of a notice, with the event before it.
        std::vector<std::pair<long, std::set<std::string>>> notices;
        /// Everything is known to whom has this event.
        long since = 0;
    };

    void refuse(const std::string& code, const std::optional<std::size_t>& index = std::nullopt);
    /// `json`: the parsed text.
    void request(const std::string& text, const Envelope& json, const std::optional<std::size_t>& index,
                 bool isRolledBack = false);
    Answer deliver(int type, const std::string& text, const Envelope& json, const std::string& name);
    void announce(const std::string& payload, const std::string& name);
    void answer(long type, const std::string& messageId, const Answer& given);
    void batch(const Envelope& frame);
    void rollBack(const std::vector<std::string>& requests, const Surroundings& before);
    void query(const Envelope& frame);
    void hello(const std::string& messageId, const Envelope& members);
    std::string resend(long since);
    void findEvents(const std::string& messageId, const Envelope& members);
    void administer(const std::string& name, const std::string& messageId, const Envelope& members);
    void reply(const std::string& messageId, const std::string& name, const std::string& text);

    ReferenceModel handler;
    Host host;
    std::string clientName;
    Known known;
    Reaction reaction;
};

}  // namespace SettingsHandlerFuzz
