#include "server/protocol/Queries.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Logging.h"
#include "Wire/FrameInspector.h"
#include "Wire/QueryFrames.h"
#include "Wire/RefusalCode.h"

namespace SettingsHandlerKit {

namespace {

namespace RefusalCode = Wire::RefusalCode;

/// A query is refused, and nothing is done.
class QueryRefused : public std::exception {
public:
    explicit QueryRefused(Wire::Refusal refusal) : reason(std::move(refusal)) {}
    QueryRefused(const char* code, std::string message) : reason{code, std::move(message)} {}

    const Wire::Refusal& refusal() const { return reason; }

private:
    Wire::Refusal reason;
};

QueryRefused badRequest(const std::string& member, const std::string& rule) {
    return {RefusalCode::badRequest, "\"" + member + "\" must be " + rule};
}

/// The members of a query. One of the wrong type is refused; others than the named ones are ignored.
class Members {
public:
    explicit Members(const rapidjson::Value& itsObject) : object(itsObject) {}

    const rapidjson::Value* find(const char* name) const {
        const auto member = object.FindMember(name);
        return member == object.MemberEnd() ? nullptr : &member->value;
    }

    std::optional<std::string> text(const char* name) const {
        const auto* const value = find(name);
        if (value == nullptr) {
            return std::nullopt;
        }
        if (!value->IsString()) {
            throw badRequest(name, "a string");
        }
        return std::string(value->GetString(), value->GetStringLength());
    }

    std::optional<bool> boolean(const char* name) const {
        const auto* const value = find(name);
        if (value == nullptr) {
            return std::nullopt;
        }
        if (!value->IsBool()) {
            throw badRequest(name, "true or false");
        }
        return value->GetBool();
    }

    /// `rule`: for people.
    std::optional<std::uint64_t> number(const char* name, std::uint64_t least, std::uint64_t most,
                                        const char* rule) const {
        const auto* const value = find(name);
        if (value == nullptr) {
            return std::nullopt;
        }
        if (!value->IsUint64() || value->GetUint64() < least || value->GetUint64() > most) {
            throw badRequest(name, rule);
        }
        return value->GetUint64();
    }

    std::optional<Members> members(const char* name) const {
        const auto* const value = find(name);
        if (value == nullptr) {
            return std::nullopt;
        }
        if (!value->IsObject()) {
            throw badRequest(name, "an object");
        }
        return Members(*value);
    }

private:
    const rapidjson::Value& object;
};

template <typename Value>
Value required(std::optional<Value> value, const char* name, const char* rule) {
    if (!value) {
        throw badRequest(name, rule);
    }
    return std::move(*value);
}

/// What a client asks for that comes back.
struct ResumePoint {
    std::string run;
    std::uint64_t sequence = 0;
};

std::optional<ResumePoint> resumePointIn(const Members& hello) {
    const auto resume = hello.members("resume");
    if (!resume) {
        return std::nullopt;
    }
    constexpr const char* rule = "an integer of 0 or more";
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    return ResumePoint{required(resume->text("run"), "run", "a string"),
                       required(resume->number("sequence", 0, most, rule), "sequence", rule)};
}

std::optional<std::string> clientNameIn(const Members& hello) {
    auto name = hello.text("client");
    if (name && !Wire::isClientName(*name)) {
        throw badRequest("client", "1 to 64 characters, none of them a control character");
    }
    return name;
}

QueryRefused notStored(const std::string& message) {
    return {RefusalCode::notStored, message};
}

}  // namespace

struct Queries::Query {
    const std::shared_ptr<Client>& client;
    const std::string& messageId;
    Members members;
};

struct Queries::Kind {
    const char* name;
    void (Queries::*handle)(const Query& query);
    bool isAdministration;
};

Queries::Queries(Clients& itsClients, const History& itsHistory, std::string nameOfRun)
    : clients(itsClients), history(itsHistory), run(std::move(nameOfRun)) {}

const std::vector<Queries::Kind>& Queries::kinds() {
    static const std::vector<Kind> all{
        {"hello", &Queries::hello, false},         {"history", &Queries::findEvents, false},
        {"catalogue", &Queries::catalogue, false}, {"page", &Queries::page, true},
        {"backup", &Queries::backup, true},        {"status", &Queries::status, true}};
    return all;
}

bool Queries::handles(const rapidjson::Document& frame) const {
    return std::any_of(kinds().begin(), kinds().end(), [&](const Kind& kind) { return frame.HasMember(kind.name); });
}

void Queries::handle(const std::shared_ptr<Client>& client, const rapidjson::Document& frame) {
    const auto kind =
        std::find_if(kinds().begin(), kinds().end(), [&](const Kind& each) { return frame.HasMember(each.name); });
    try {
        const Members whole(frame);
        const std::string messageId = required(whole.text("messageId"), "messageId", "a string");
        if (kind->isAdministration &&
            (administration == nullptr || client->listenerKind() != ListenerKind::UNIX_SOCKET)) {
            throw QueryRefused(RefusalCode::notHere, "only available at the Unix socket");
        }
        (this->*kind->handle)({client, messageId, *whole.members(kind->name)});
    } catch (const QueryRefused& refused) {
        clients.refuse(client, refused.refusal());
    }
}

void Queries::reply(const Query& query, std::string frame) {
    clients.sendTo(query.client, std::make_shared<const std::string>(std::move(frame)));
}

void Queries::checkRoomFor(const std::vector<SharedFrame>& frames, std::size_t overheadOfEach) const {
    std::size_t bytes = 0;
    for (const auto& frame : frames) {
        bytes += frame->size() + overheadOfEach;
    }
    if (!clients.hasRoomFor(bytes)) {
        throw QueryRefused(Clients::tooMuchQueued());
    }
}

void Queries::hello(const Query& query) {
    const auto name = clientNameIn(query.members);
    const auto resume = resumePointIn(query.members);
    Wire::HelloReply told;
    told.run = run;
    told.sequence = history.newest();
    if (resume) {
        const auto missed = resume->run == run ? history.since(resume->sequence) : std::nullopt;
        told.missed = !missed;
        if (missed) {
            checkRoomFor(missed->events, Backlog::frameOverhead);
            told.reread = missed->reread;
            for (const auto& event : missed->events) {
                clients.sendTo(query.client, event);
            }
        }
    }
    if (name) {
        clients.setName(query.client, *name);
    }
    reply(query, Wire::helloFrame(query.messageId, told));
}

void Queries::findEvents(const Query& query) {
    const auto settingDBId = query.members.text("settingDBId");
    static_assert(History::maximumEntries == 1024);
    const auto limit = query.members.number("limit", 1, History::maximumEntries, "an integer from 1 to 1,024");
    const auto events = history.events(limit.value_or(History::maximumEntries), settingDBId);
    checkRoomFor(events, 1);
    reply(query, Wire::historyFrame(query.messageId, events));
}

void Queries::catalogue(const Query& query) {
    reply(query, Wire::catalogueFrame(query.messageId));
}

void Queries::page(const Query& query) {
    const bool newKey = query.members.boolean("newKey").value_or(false);
    std::string address = administration->pageAddress();
    if (newKey && !address.empty()) {
        std::optional<std::string> renewed;
        try {
            renewed = administration->renewPageKey();
        } catch (const std::exception& error) {
            writeLog(VessaLogger::ERROR, std::string("cannot replace the key of the pages: ") + error.what());
        }
        if (!renewed) {
            throw notStored("the new key could not be stored; the old one stays valid");
        }
        address = *renewed;
    }
    std::map<std::string, std::string> members;
    if (!address.empty()) {
        members["address"] = address;
    }
    // Observers of the traffic are not told: the key is the asker's alone.
    query.client->send(std::make_shared<const std::string>(Wire::queryReplyFrame(query.messageId, "page", members)));
}

void Queries::backup(const Query& query) {
    std::string file;
    try {
        file = administration->backUp();
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("database backup failed: ") + error.what());
        throw notStored(std::string("no backup was made: ") + error.what());
    }
    reply(query, Wire::queryReplyFrame(query.messageId, "backup", {{"file", file}}));
}

void Queries::status(const Query& query) {
    Wire::StatusReply told = administration->status();
    if (const auto handler = checkedHandler.lock()) {
        for (const auto& [key, timestamp] : handler->newestTimestamps()) {
            told.newest[key] = timestamp;
        }
    }
    reply(query, Wire::statusFrame(query.messageId, told));
}

}  // namespace SettingsHandlerKit
