#include "support/HubWorld.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <stdexcept>
#include <string_view>

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
bool isForAll(const Envelope& frame) {
    return frame.integer("type") == 25 || frame.has("notice");
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
std::string entryOf(const Envelope& frame, const std::string& text, const std::string& origin) {
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

/// Moves the lines that start so out of `lines`.
Entries takeStartingWith(std::string_view beginning, Entries& lines) {
    const auto found = std::stable_partition(
        lines.begin(), lines.end(), [&](const std::string& line) { return !startsWithOneOf(line, {beginning}); });
    Entries taken(std::make_move_iterator(found), std::make_move_iterator(lines.end()));
    lines.erase(found, lines.end());
    return taken;
}

Entries textsOf(const std::vector<std::shared_ptr<const std::string>>& frames) {
    Entries texts;
    for (const auto& frame : frames) {
        texts.push_back(*frame);
    }
    return texts;
}

/// Random bytes are 0, and it is always the same time.
Environment predictable() {
    Environment environment;
    environment.now = [] { return std::chrono::system_clock::time_point(std::chrono::hours(500000)); };
    environment.random = [](std::size_t size) { return std::string(size, '\0'); };
    return environment;
}

constexpr std::string_view receivedLine = "received ";

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

HubWorld::HubWorld(Recorder& itsRecorder, const Surroundings& around, const Host& host, const Start* known)
    : recorder(itsRecorder),
      transactions(std::make_shared<FakeTransactions>(host.storesBatches, storage, sdk)),
      hub(std::make_shared<SettingsHandlerKit::MessageHub>(
          traffic, std::make_shared<SettingsHandlerKit::RequestContext>(),
          std::make_shared<SettingsHandlerKit::Backlog>(), predictable())),
      requester(std::make_shared<FrameCollector>(Origin::SOCKET, host.listenerOfRequester)),
      other(std::make_shared<FrameCollector>(Origin::PAGE)),
      handler(std::make_shared<QuickHandler>(hub, storage,
                                             std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk,
                                             std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal), device)),
      model(known != nullptr ? known->model
                             : WireModel(around,
                                         {host.listenerOfRequester == ListenerKind::UNIX_SOCKET,
                                          SettingsHandlerKit::programName(), host.storesBatches},
                                         keysInTableOrder())) {
    surround(storage, *sdk, *device, around);
    hub->connected(requester);
    hub->connected(other);
    hub->watch(handler);
    hub->administer(administration);
    hub->use(transactions);
    transactions->handler = handler;
    if (known != nullptr) {
        handler->initializeWith(known->values);
    } else {
        initialValues = handler->initializeAndTell();
    }
    journal.take();
}

void HubWorld::refuseTooLarge() {
    hub->oversized(requester);
    expect(model.refuseTooLarge(), traffic->take());
}

void HubWorld::receive(const std::string& frame) {
    hub->received(requester, frame);
    Entries lines = traffic->take();
    check(!lines.empty() && lines.front().size() == receivedLine.size() + frame.size() &&
              startsWithOneOf(lines.front(), {receivedLine}) &&
              lines.front().compare(receivedLine.size(), std::string::npos, frame) == 0,
          "a frame is reported first");
    expect(model.receive(frame), std::move(lines));
}

void HubWorld::expect(WireModel::Reaction expected, Entries lines) {
    const Entries entriesOfJournal = journal.take();
    checkSame(entriesOfJournal, expected.journal, "the journal of a frame");
    Entries entries;
    Entries forAll;
    Entries sent;
    for (const auto& text : textsOf(requester->takeUnchecked())) {
        const Envelope frame(text);
        checkFrame(frame, text);
        entries.push_back(entryOf(frame, text, "socket"));
        const bool isNew = isForAll(frame) && entries.size() > expected.resent;
        if (isNew) {
            forAll.push_back(text);
            if (!frame.has("notice")) {
                model.sent(text);
            }
        }
        // The key of the pages is not told to those who observe the traffic.
        if (!frame.has("page")) {
            sent.push_back((isNew ? "sent to all " : "sent to one ") + text);
        }
    }
    checkSame(entries, expected.frames, "the frames for the client");
    // They are the frames that were checked above.
    checkSame(textsOf(other->takeUnchecked()), forAll, "other clients get the events and notices only");
    checkSame(takeStartingWith("sent ", lines), sent, "the report of frames");
    for (const std::string_view kind : {"handled ", "refused "}) {
        checkSame(takeStartingWith(kind, lines), takeStartingWith(kind, expected.reports), "the report of what was ",
                  kind);
    }
    if (record != nullptr) {
        record->insert(record->end(), entriesOfJournal.begin(), entriesOfJournal.end());
        record->insert(record->end(), entries.begin(), entries.end());
    }
}

}  // namespace SettingsHandlerFuzz
