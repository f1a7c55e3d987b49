#include "support/HubWorld.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "SettingsHandlerKit/Logging.h"
#include "model/Json.h"
#include "support/Check.h"
#include "support/Surround.h"
#include "support/TableOrder.h"

namespace SettingsHandlerFuzz {

namespace {

using SettingsHandlerKit::Environment;
using SettingsHandlerKit::ListenerKind;
using SettingsHandlerKit::Origin;

/// Is it an event or a notice?
bool isForAll(const std::string& frame) {
    const Envelope json(frame);
    return json.integer("type") == 25 || json.has("notice");
}

std::string entryOfEvent(const Envelope& frame, const std::string& origin) {
    Entries members{"type", "messageId", "timestamp", "sequence", "origin", "payload"};
    if (frame.has("client")) {
        members.insert(members.end() - 1, "client");
    }
    check(frame.names() == members, "the members of an event");
    check(frame.text("origin") == origin, "an event names its origin");
    return "event " + frame.compact("sequence") + " " + frame.text("client").value_or("") + " " +
           frame.compact("payload");
}

/// Without the message for people.
std::string entryOfAnswer(const std::string& type, const std::string& messageId, std::string payload) {
    const Envelope members(payload);
    const auto message = members.text("message");
    check(message.has_value() == (members.text("outcome") == "refused"), "a refusal has a message");
    if (message) {
        check(!message->empty(), "a message is not empty");
        const std::string member = ",\"message\":" + stringText(*message);
        payload.erase(payload.find(member), member.size());
    }
    return "answer " + type + " " + messageId + ", " + payload;
}

/// A frame as an entry of the model.
std::string entryOf(const std::string& text, const std::string& origin) {
    const Envelope frame(text);
    const std::string type = frame.compact("type");
    const std::string messageId = frame.text("messageId").value_or("(none)");
    if (frame.has("error")) {
        const Envelope error(frame.compact("error"));
        check(!error.text("message").value_or("").empty(), "a refusal has a message");
        return "refusal " + error.text("code").value_or("(none)") + (error.has("index") ? " " : "") +
               error.compact("index");
    }
    if (frame.has("notice")) {
        return "notice " + Envelope(frame.compact("notice")).compact("reread");
    }
    if (frame.has("catalogue")) {
        const auto settings = Envelope(frame.compact("catalogue")).elements("settings");
        check(settings && settings->size() == keysInTableOrder().size(), "the catalogue has every setting");
        return R"(query {"messageId":)" + stringText(messageId) + R"(,"catalogue":…})";
    }
    if (type == "25") {
        return entryOfEvent(frame, origin);
    }
    if (type == "7" || type == "18") {
        return "reply " + type + " " + messageId + ", " + frame.compact("payload");
    }
    return type.empty() ? "query " + text : entryOfAnswer(type, messageId, frame.compact("payload"));
}

Entries startingWith(const std::string& beginning, const Entries& lines) {
    Entries found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                 [&](const std::string& line) { return line.rfind(beginning, 0) == 0; });
    return found;
}

/// Random bytes are 0.
Environment predictable() {
    Environment environment;
    environment.random = [](std::size_t size) { return std::string(size, '\0'); };
    return environment;
}

}  // namespace

std::optional<std::string> FakeAdministration::renewPageKey() {
    return storage.refusesWrites ? std::nullopt : std::optional<std::string>(WireModel::pageAddress);
}

std::string FakeAdministration::backUp() {
    if (storage.refusesWrites) {
        throw std::runtime_error("full");
    }
    return "copy";
}

Wire::StatusReply FakeAdministration::status() {
    Wire::StatusReply told;
    told.health = "{}";
    told.hostVersion = "1";
    told.now = 1;
    return told;
}

void FakeTransactions::begin() {
    before.stored = storage.values;
    before.locales = sdk->locales;
    before.timezone = sdk->timezone;
}

void FakeTransactions::restore(const std::set<std::string>& /*changed*/) {
    storage.values = before.stored;
    sdk->locales = before.locales;
    sdk->timezone = before.timezone;
    handler.lock()->initializeSettings();
}

HubWorld::HubWorld(const Surroundings& around, ListenerKind listenerOfRequester, bool storesBatches)
    : transactions(std::make_shared<FakeTransactions>(storesBatches, storage, sdk)),
      hub(std::make_shared<SettingsHandlerKit::MessageHub>(
          traffic, std::make_shared<SettingsHandlerKit::RequestContext>(),
          std::make_shared<SettingsHandlerKit::Backlog>(), predictable())),
      requester(std::make_shared<FrameCollector>(Origin::SOCKET, listenerOfRequester)),
      other(std::make_shared<FrameCollector>(Origin::PAGE)),
      handler(SettingsHandlerKit::CheckedSettingsHandler::create(
          hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk,
          std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal), device)),
      model(around,
            {listenerOfRequester == ListenerKind::UNIX_SOCKET, SettingsHandlerKit::programName(), storesBatches},
            keysInTableOrder()) {
    surround(storage, *sdk, *device, around);
    hub->connected(requester);
    hub->connected(other);
    hub->watch(handler);
    hub->administer(administration);
    hub->use(transactions);
    transactions->handler = handler;
    handler->initializeSettings();
    journal.take();
}

void HubWorld::refuseTooLarge() {
    hub->oversized(requester);
    expect(model.refuseTooLarge(), traffic->take());
}

void HubWorld::receive(const std::string& frame) {
    hub->received(requester, frame);
    Entries lines = traffic->take();
    check(!lines.empty() && lines.front() == "received " + frame, "a frame is reported first");
    lines.erase(lines.begin());
    expect(model.receive(frame), lines);
}

void HubWorld::expect(const WireModel::Reaction& expected, const Entries& lines) {
    checkSame(journal.take(), expected.journal, "the journal of a frame");
    const Entries frames = requester->take();
    Entries entries;
    Entries forAll;
    Entries sent;
    for (const auto& text : frames) {
        entries.push_back(entryOf(text, "socket"));
        const bool isNew = isForAll(text) && entries.size() > expected.resent;
        if (isNew) {
            forAll.push_back(text);
        }
        // The key of the pages is not told to those who observe the traffic.
        if (!Envelope(text).has("page")) {
            sent.push_back((isNew ? "sent to all " : "sent to one ") + text);
        }
    }
    checkSame(entries, expected.frames, "the frames for the client");
    checkSame(other->take(), forAll, "other clients get the events and notices only");
    checkSame(startingWith("sent ", lines), sent, "the report of frames");
    for (const std::string kind : {"handled ", "refused "}) {
        checkSame(startingWith(kind, lines), startingWith(kind, expected.reports), "the report of what was ", kind);
    }
    for (const auto& text : forAll) {
        if (!Envelope(text).has("notice")) {
            model.sent(text);
        }
    }
}

}  // namespace SettingsHandlerFuzz
