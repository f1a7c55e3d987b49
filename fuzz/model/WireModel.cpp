#include "model/WireModel.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "model/Json.h"
#include "model/Utf8.h"

namespace SettingsHandlerFuzz {

namespace {

bool isRefusal(const std::string& report) {
    return report.rfind("refused ", 0) == 0;
}

bool isRequestType(const std::optional<long>& type, const std::vector<long>& types) {
    return type && std::find(types.begin(), types.end(), *type) != types.end();
}

}  // namespace

bool isName(const std::optional<std::string>& name) {
    if (!name) {
        return false;
    }
    std::size_t characters = 0;
    for (std::size_t place = 0; place < name->size(); ++place) {
        const auto byte = static_cast<unsigned char>((*name)[place]);
        const bool isSecondBlock = byte == 0xc2 && static_cast<unsigned char>((*name)[place + 1]) < 0xa0;
        if (byte < 0x20 || byte == 0x7f || isSecondBlock) {
            return false;
        }
        characters += (byte & 0xc0U) == 0x80 ? 0 : 1;
    }
    return characters > 0 && characters <= 64;
}

bool isRejectedValue(const std::optional<std::string>& key, const std::optional<std::string>& value) {
    if (key != "orliaLocale" || !value) {
        return false;
    }
    const Envelope json(*value);
    return json.isJson() && (!json.isArray() || json.nesting() > 32);
}

RequestMembers requestIn(const Envelope& frame, bool isAtUnixSocket) {
    RequestMembers found;
    const auto type = frame.integer("type");
    if (!isRequestType(type, {7, 18, 19, 22, 24})) {
        found.refusal = "unknown-type";
        return found;
    }
    found.type = static_cast<int>(*type);
    found.asks = frame.isTrue("answer") && *type != 7 && *type != 18;
    const auto messageId = frame.text("messageId");
    found.messageId = messageId.value_or("");
    const bool namesClient = isAtUnixSocket && frame.has("client");
    found.client = namesClient ? frame.text("client") : std::nullopt;
    if (found.asks && !messageId) {
        found.refusal = "no-message-id";
    } else if (namesClient && !isName(found.client)) {
        found.refusal = "bad-request";
    }
    return found;
}

QueryMembers queryIn(const Envelope& frame, bool isAtUnixSocket) {
    const std::vector<std::string> names{"hello", "history", "catalogue", "page", "backup", "status"};
    const auto name = std::find_if(names.begin(), names.end(), [&](const auto& each) { return frame.has(each); });
    if (name == names.end()) {
        return {"unknown-type", "", "", ""};
    }
    const auto messageId = frame.text("messageId");
    if (!messageId) {
        return {"bad-request", "", "", ""};
    }
    if (!isAtUnixSocket && name - names.begin() > 2) {
        return {"not-here", "", "", ""};
    }
    if (!frame.hasObject(*name)) {
        return {"bad-request", "", "", ""};
    }
    return {"", *name, *messageId, frame.compact(*name)};
}

bool isHello(const Envelope& members) {
    return (!members.has("client") || isName(members.text("client"))) &&
           (!members.has("resume") || resumeIn(members).has_value());
}

std::optional<ResumeMembers> resumeIn(const Envelope& members) {
    const Envelope resume(members.has("resume") ? members.compact("resume") : "{}");
    const auto run = resume.isObject() ? resume.text("run") : std::nullopt;
    const auto sequence = resume.isObject() ? resume.number("sequence") : std::nullopt;
    return run && sequence ? std::optional(ResumeMembers{*run, *sequence}) : std::nullopt;
}

bool isHistoryQuery(const Envelope& members) {
    const auto limit = members.number("limit");
    return (!members.has("limit") || (limit && *limit > 0 && *limit <= 1024)) &&
           (!members.has("settingDBId") || members.text("settingDBId"));
}

bool isBatch(const std::optional<std::vector<std::string>>& requests) {
    return requests && !requests->empty() && requests->size() <= 64 &&
           std::all_of(requests->begin(), requests->end(), [](const std::string& text) {
               const Envelope request(text);
               return request.isObject() && isRequestType(request.integer("type"), {7, 18, 24});
           });
}

std::string refusalOf(const std::string& frame) {
    return refusalOf(frame, Envelope(frame));
}

std::string refusalOf(const std::string& frame, const Envelope& json) {
    if (frame.find('\0') != std::string::npos || !json.isJson() || !json.isWellFormed()) {
        return "not-json";
    }
    if (json.nesting() > 32) {
        return "too-deep";
    }
    return json.isObject() ? "" : "not-an-object";
}

WireModel::WireModel(const Surroundings& around, Host itsHost, std::vector<std::string> keysInTableOrder)
    : handler(std::move(keysInTableOrder)), host(std::move(itsHost)) {
    handler.around = around;
    handler.initializeSettings();
    handler.take();
}

void WireModel::sent(const std::string& event) {
    const auto unknown =
        std::find_if(known.events.begin(), known.events.end(), [](const Event& each) { return each.text.empty(); });
    if (unknown != known.events.end()) {
        unknown->text = event;
    }
}

WireModel::Reaction WireModel::refuseTooLarge() {
    refuse("too-large");
    return std::exchange(reaction, {});
}

WireModel::Reaction WireModel::receive(const std::string& frame) {
    const Envelope json(frame);
    const std::string code = refusalOf(frame, json);
    if (!code.empty()) {
        refuse(code);
    } else if (json.has("type")) {
        request(frame, json, std::nullopt);
    } else if (json.has("batch")) {
        batch(json);
    } else {
        query(json);
    }
    return std::exchange(reaction, {});
}

void WireModel::refuse(const std::string& code, const std::optional<std::size_t>& index) {
    reaction.frames.push_back("refusal " + code + (index ? " " + std::to_string(*index) : ""));
    reaction.reports.push_back("refused " + code);
}

// Requests

void WireModel::request(const std::string& text, const Envelope& json, const std::optional<std::size_t>& index,
                        bool isRolledBack) {
    const RequestMembers members = requestIn(json, host.clientAtUnixSocket);
    if (!members.refusal.empty()) {
        return refuse(members.refusal, index);
    }
    Answer given{"refused", "not-stored", json.payloadText("settingDBId"), true, false, std::nullopt};
    if (!isRolledBack || members.type != 24) {
        given = deliver(members.type, text, json, members.client.value_or(clientName));
    }
    if (members.asks) {
        answer(members.type, members.messageId, given);
    }
}

/// Returns: what it led to.
Answer WireModel::deliver(int type, const std::string& text, const Envelope& json, const std::string& name) {
    const std::string handled = "handled " + std::to_string(type) + " ";
    if (type == 24 && isRejectedValue(json.payloadText("settingDBId"), json.payloadText("to"))) {
        reaction.journal.push_back("log 3 " + host.name +
                                   ":rejected orliaLocale: must be a JSON array of at most 32 levels");
        reaction.reports.push_back(handled + "REJECTED");
        return handler.answerToRejected(text);
    }
    if (type == 22) {
        known = {known.sequence, {}, {}, known.sequence + 1};
    }
    handler.request(type, text);
    std::string outcome = "SILENT";
    for (const auto& entry : handler.take()) {
        const std::string message = "transport.sendMessage(25, ";
        const std::string response = "transport.sendResponse(";
        if (entry.rfind(message, 0) == 0) {
            announce(entry.substr(message.size(), entry.size() - message.size() - 1), name);
            outcome = "CHANGED";
        } else if (entry.rfind(response, 0) == 0) {
            reaction.frames.push_back("reply " + std::to_string(type) + " " +
                                      entry.substr(response.size(), entry.size() - response.size() - 1));
            outcome = "ANSWERED";
        } else if (entry.rfind("metricsCache.", 0) != 0) {
            // The real metrics cache has no journal.
            reaction.journal.push_back(entry);
        }
    }
    reaction.reports.push_back(handled + outcome);
    return handler.answer();
}

void WireModel::announce(const std::string& payload, const std::string& name) {
    const std::string entry = "event " + std::to_string(++known.sequence) + " " + name + " " + payload;
    reaction.frames.push_back(entry);
    known.events.push_back({known.sequence, *Envelope(payload).text("settingDBId"), entry, ""});
}

void WireModel::answer(long type, const std::string& messageId, const Answer& given) {
    std::string payload = R"({"outcome":")" + given.outcome + '"';
    if (given.outcome == "refused") {
        payload += R"(,"reason":")" + given.reason + '"';
    }
    if (type == 24 && given.key) {
        payload += R"(,"settingDBId":)" + stringText(*given.key);
        const auto values = handler.getSettings({*given.key});
        const auto value = values.find(*given.key);
        const Entries reading = handler.take();
        // What was just stored need not be read again.
        if (given.outcome != "changed" || value == values.end() || !given.stored) {
            reaction.journal.insert(reaction.journal.end(), reading.begin(), reading.end());
        }
        payload += value == values.end() ? "" : R"(,"value":)" + stringText(value->second);
    }
    if (given.outcome == "changed" && !given.applied) {
        payload += R"(,"applied":false)";
    }
    if (given.newest) {
        payload += R"(,"newest":)" + std::to_string(*given.newest);
    }
    reaction.frames.push_back("answer " + std::to_string(type) + " " + messageId + ", " + payload + "}");
}

void WireModel::batch(const Envelope& frame) {
    const auto requests = frame.elements("batch");
    if (!isBatch(requests)) {
        return refuse("bad-batch");
    }
    const Known before = known;
    const Surroundings around = handler.around;
    for (std::size_t index = 0; index < requests->size(); ++index) {
        request((*requests)[index], Envelope((*requests)[index]), index);
    }
    if (!host.storesBatches) {
        known = before;
        rollBack(*requests, around);
    }
}

/// The owners have what they had before the batch.
void WireModel::rollBack(const std::vector<std::string>& requests, const Surroundings& before) {
    reaction.frames.clear();
    const Entries first = std::exchange(reaction.reports, {});
    handler.around = before;
    handler.initializeSettings();
    const Entries initialization = handler.take();
    reaction.journal.insert(reaction.journal.end(), initialization.begin(), initialization.end());
    std::set<std::string> keys;
    for (std::size_t index = 0; index < requests.size(); ++index) {
        const Envelope json(requests[index]);
        request(requests[index], json, index, true);
        const auto key = json.payloadText("settingDBId");
        if (json.integer("type") == 24 && key) {
            keys.insert(*key);
        }
    }
    // Each request is reported once, and each refusal.
    const Entries second = std::exchange(reaction.reports, {});
    std::remove_copy_if(first.begin(), first.end(), std::back_inserter(reaction.reports), isRefusal);
    std::copy_if(second.begin(), second.end(), std::back_inserter(reaction.reports), isRefusal);
    if (!keys.empty()) {
        known.notices.emplace_back(known.sequence, keys);
        reaction.frames.push_back("notice " + arrayText({keys.begin(), keys.end()}));
    }
}

// Queries

void WireModel::query(const Envelope& frame) {
    const QueryMembers found = queryIn(frame, host.clientAtUnixSocket);
    if (!found.refusal.empty()) {
        return refuse(found.refusal);
    }
    const Envelope members(found.members);
    if (found.name == "hello") {
        hello(found.messageId, members);
    } else if (found.name == "history") {
        findEvents(found.messageId, members);
    } else {
        administer(found.name, found.messageId, members);
    }
}

void WireModel::reply(const std::string& messageId, const std::string& name, const std::string& text) {
    reaction.frames.push_back(R"(query {"messageId":)" + stringText(messageId) + ",\"" + name + "\":" + text + "}");
}

void WireModel::hello(const std::string& messageId, const Envelope& members) {
    if (!isHello(members)) {
        return refuse("bad-request");
    }
    const auto resume = resumeIn(members);
    const bool missed =
        resume && (resume->run != run || resume->sequence > static_cast<unsigned long>(known.sequence) ||
                   resume->sequence < static_cast<unsigned long>(known.since));
    std::string more = missed ? R"(,"missed":true)" : "";
    if (resume && !missed) {
        more = resend(static_cast<long>(resume->sequence));
    }
    clientName = members.text("client").value_or(clientName);
    reply(messageId, "hello",
          R"({"version":"1.1.0","run":")" + std::string(run) + R"(","sequence":)" + std::to_string(known.sequence) +
              more + "}");
}

/// Returns: what the reply says of it.
std::string WireModel::resend(long since) {
    for (const auto& event : known.events) {
        if (event.sequence > since) {
            reaction.frames.push_back(event.entry);
            ++reaction.resent;
        }
    }
    std::set<std::string> reread;
    for (const auto& [sequence, keys] : known.notices) {
        if (sequence >= since) {
            reread.insert(keys.begin(), keys.end());
        }
    }
    return R"(,"missed":false,"reread":)" + arrayText({reread.begin(), reread.end()});
}

void WireModel::findEvents(const std::string& messageId, const Envelope& members) {
    if (!isHistoryQuery(members)) {
        return refuse("bad-request");
    }
    const auto limit = members.number("limit");
    const auto key = members.text("settingDBId");
    std::vector<std::string> texts;
    for (const auto& event : known.events) {
        if (!key || event.key == *key) {
            texts.push_back(event.text);
        }
    }
    const std::size_t first = texts.size() - std::min<std::size_t>(texts.size(), limit.value_or(1024));
    std::string list;
    for (std::size_t place = first; place < texts.size(); ++place) {
        list += (list.empty() ? "" : ",") + texts[place];
    }
    reply(messageId, "history", R"({"events":[)" + list + "]}");
}

void WireModel::administer(const std::string& name, const std::string& messageId, const Envelope& members) {
    if (name == "catalogue") {
        reply(messageId, name, "…");
    } else if (name == "status") {
        std::string newest;
        for (const auto& [key, timestamp] : handler.timestamps()) {
            newest += (newest.empty() ? "" : ",") + stringText(key) + ":" + std::to_string(timestamp);
        }
        reply(messageId, name,
              R"({"health":{},"versions":{"host":"1","wire":"1.1.0"},"newest":{)" + newest + R"(},"now":1})");
    } else if (name == "backup") {
        if (handler.around.refusesWrites) {
            reaction.journal.push_back("log 3 " + host.name + ":database backup failed: full");
            return refuse("not-stored");
        }
        reply(messageId, name, R"({"file":"copy"})");
    } else if (members.has("newKey") && !members.isBoolean("newKey")) {
        refuse("bad-request");
    } else if (members.isTrue("newKey") && handler.around.refusesWrites) {
        refuse("not-stored");
    } else {
        reply(messageId, name, R"({"address":")" + std::string(pageAddress) + "\"}");
    }
}

}  // namespace SettingsHandlerFuzz
