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
    if (frame.has("error")) {
        check(!frame.textIn("error", "message").value_or("").empty(), "a refusal has a message");
        const std::string index = frame.compactIn("error", "index");
        return "refusal " + frame.textIn("error", "code").value_or("(none)") + (index.empty() ? "" : " ") + index;
    }
    if (frame.has("notice")) {
        return "notice " + frame.compactIn("notice", "reread");
    }
    const std::string messageId = frame.text("messageId").value_or("(none)");
    if (frame.has("catalogue")) {
        const auto settings = Envelope(frame.compact("catalogue")).elements("settings");
        check(settings && settings->size() == keysInTableOrder().size(), "the catalogue has every setting");
        return R"(query {"messageId":)" + stringText(messageId) + R"(,"catalogue":…})";
    }
    const std::string type = frame.compact("type");
    if (type == "25") {
        return entryOfEvent(frame, origin);
    }
    if (type == "7" || type == "18") {
        return "reply " + type + " " + messageId + ", " + frame.compact("payload");
    }
    return type.empty() ? "query " + text : entryOfAnswer(type, messageId, frame.compact("payload"));
}

/// Checks that the reports that start so are `actual`, in this order.
void checkReports(const Entries& actual, const Entries& expected, std::string_view beginning) {
    std::size_t count = 0;
    for (const auto& report : expected) {
        if (startsWithOneOf(report, {beginning})) {
            check(count < actual.size() && actual[count] == report, "the report of what was ", report);
            ++count;
        }
    }
    check(count == actual.size(), "the report of what was ", count < actual.size() ? actual[count] : beginning);
}

/// Random bytes are 0, and it is always the same time.
Environment predictable() {
    Environment environment;
    environment.now = [] { return std::chrono::system_clock::time_point(std::chrono::hours(500000)); };
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
    expect(model.refuseTooLarge());
}

void HubWorld::receive(const std::string& frame) {
    hub->received(requester, frame);
    expect(model.receive(frame), &frame);
}

void HubWorld::expect(const WireModel::Reaction& expected, const std::string* received) {
    const TrafficRecord::Reports reports = traffic->take();
    if (received != nullptr) {
        check(reports.startsWithReceived && reports.received.front() == *received, "a frame is reported first");
    }
    const Entries entriesOfJournal = journal.take();
    checkSame(entriesOfJournal, expected.journal, "the journal of a frame");
    const Entries entries = expectFrames(expected, reports.sent);
    checkReports(reports.handled, expected.reports, "handled ");
    checkReports(reports.refused, expected.reports, "refused ");
    if (record != nullptr) {
        record->insert(record->end(), entriesOfJournal.begin(), entriesOfJournal.end());
        record->insert(record->end(), entries.begin(), entries.end());
    }
}

/// Returns: the frames for the requester as entries of the model.
Entries HubWorld::expectFrames(const WireModel::Reaction& expected, const std::vector<TrafficRecord::Sent>& reported) {
    const auto frames = requester->takeUnchecked();
    const auto framesOfOther = other->takeUnchecked();
    Entries entries;
    std::size_t forAll = 0;
    std::size_t sent = 0;
    for (const auto& text : frames) {
        const Envelope frame(*text);
        checkFrame(frame, *text);
        entries.push_back(entryOf(frame, *text, "socket"));
        const bool isNew = isForAll(frame) && entries.size() > expected.resent;
        if (isNew) {
            // It is checked above.
            check(forAll < framesOfOther.size() && *framesOfOther[forAll] == *text,
                  "other clients get the events and notices: ", *text);
            ++forAll;
            if (!frame.has("notice")) {
                model.sent(*text);
            }
        }
        // The key of the pages is not told to those who observe the traffic.
        if (!frame.has("page")) {
            check(sent < reported.size() && reported[sent].toAll == isNew && reported[sent].frame == *text,
                  "the report of a frame: ", *text);
            ++sent;
        }
    }
    checkSame(entries, expected.frames, "the frames for the client");
    check(forAll == framesOfOther.size(), "other clients get the events and notices only");
    check(sent == reported.size(), "frames that were not sent are not reported");
    return entries;
}

}  // namespace SettingsHandlerFuzz
