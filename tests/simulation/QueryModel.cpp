// The model of queries.

#include <algorithm>

#include "model/Json.h"
#include "model/WireModel.h"
#include "simulation/HostModel.h"

namespace SettingsSimulation {

namespace {

using SettingsHandlerFuzz::arrayText;
using SettingsHandlerFuzz::stringText;

}  // namespace

void HostModel::query(const Envelope& frame) {
    const auto found = SettingsHandlerFuzz::queryIn(frame, sender.kind == Kind::SOCKET);
    if (!found.refusal.empty()) {
        return refuse(found.refusal);
    }
    const Envelope members(found.members);
    const std::string id = R"({"messageId":)" + stringText(found.messageId) + ",";
    if (found.name == "hello") {
        hello(id, members);
    } else if (found.name == "history") {
        findEvents(id, members);
    } else if (found.name == "catalogue") {
        toSender(id + R"("catalogue":{"settings":)" + anyJson + "}}");
    } else if (found.name == "page") {
        page(id, members);
    } else if (found.name == "backup") {
        backUp(id);
    } else {
        status(id);
    }
}

void HostModel::hello(const std::string& id, const Envelope& members) {
    if (!SettingsHandlerFuzz::isHello(members)) {
        return refuse("bad-request");
    }
    std::string more;
    if (const auto resume = SettingsHandlerFuzz::resumeIn(members)) {
        const auto since = static_cast<long>(resume->sequence);
        const bool missed = resume->run != run || resume->sequence > static_cast<unsigned long>(sequence) ||
                            resume->sequence < static_cast<unsigned long>(completeAfter);
        more = R"(,"missed":)" + std::string(missed ? "true" : "false");
        std::set<std::string> keys;
        for (const auto& event : known->events) {
            if (!missed && event->sequence > since) {
                Expectation frame;
                frame.pieces.push_back({"", event});
                toSender(std::move(frame));
            }
        }
        for (const auto& [noticed, reread] : known->notices) {
            if (!missed && noticed >= since) {
                keys.insert(reread.begin(), reread.end());
            }
        }
        more += missed ? "" : R"(,"reread":)" + arrayText({keys.begin(), keys.end()});
    }
    if (const auto name = members.text("client")) {
        names[sender.connection] = *name;
    }
    toSender(id + R"("hello":{"version":"1.1.0","run":")" + std::string(1, Unknown::run) + R"(","sequence":)" +
             std::to_string(sequence) + more + "}}");
}

void HostModel::findEvents(const std::string& id, const Envelope& members) {
    if (!SettingsHandlerFuzz::isHistoryQuery(members)) {
        return refuse("bad-request");
    }
    const auto limit = members.number("limit");
    const auto key = members.text("settingDBId");
    std::vector<std::shared_ptr<SentEvent>> found;
    for (const auto& event : known->events) {
        if (!key || event->key == *key) {
            found.push_back(event);
        }
    }
    Expectation frame;
    frame.pieces.push_back({id + R"("history":{"events":[)", nullptr});
    const std::size_t first = found.size() - std::min<std::size_t>(found.size(), limit.value_or(found.size()));
    for (std::size_t place = first; place < found.size(); ++place) {
        frame.pieces.push_back({place == first ? "" : ",", found[place]});
    }
    frame.pieces.push_back({"]}}", nullptr});
    toSender(std::move(frame));
}

void HostModel::status(const std::string& id) {
    std::string newest;
    for (const auto& [key, timestamp] : timestamps()) {
        newest += (newest.empty() ? "" : ",") + stringText(key) + ":" + std::to_string(timestamp);
    }
    toSender(id + R"("status":{"health":)" + anyJson + Unknown::anything + R"("newest":{)" + newest + R"(},"now":)" +
             anyTimestamp + "}}");
}

void HostModel::page(const std::string& id, const Envelope& members) {
    if (members.has("newKey") && !members.isBoolean("newKey")) {
        return refuse("bad-request");
    }
    if (members.isTrue("newKey")) {
        if (!writesDisk()) {
            return refuse("not-stored");
        }
        changedDisk();
        replacesKey = true;
    }
    toSender(id + R"("page":{"address":")" + anyText + "\"}}");
}

void HostModel::backUp(const std::string& id) {
    if (!writesDisk()) {
        return refuse("not-stored");
    }
    toSender(id + R"("backup":{"file":")" + anyText + "\"}}");
}

}  // namespace SettingsSimulation
