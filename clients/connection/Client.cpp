#include "SettingsClient/Client.h"

#include <utility>

#include <poll.h>

#include "Wire/Requests.h"
#include "connection/Changes.h"
#include "connection/EventOrder.h"
#include "connection/Refusals.h"
#include "connection/Session.h"

namespace SettingsClient {

namespace {

/// Reads a reply with `read`.
template <typename Read>
auto ask(Session& session, const std::string& messageId, const std::string& frame, const Read& read) {
    const Wire::HostFrame reply = session.ask(messageId, frame);
    try {
        return read(reply);
    } catch (const Wire::MalformedFrame& fault) {
        throw notAHost(fault);
    }
}

Setting settingOf(const Wire::HostFrame& entry) {
    Setting setting;
    setting.key = entry.textAt({"key"}).value_or("");
    setting.number = static_cast<int>(entry.integerAt({"number"}).value_or(0));
    setting.kind = entry.textAt({"kind"}).value_or("");
    setting.values = entry.textsAt({"values"}).value_or(std::vector<std::string>());
    setting.defaultValue = entry.textAt({"default"});
    setting.owner = entry.textAt({"owner"}).value_or("");
    setting.setBy = entry.textAt({"setBy"}).value_or("");
    setting.privacy = entry.textAt({"privacy"}).value_or("");
    setting.description = entry.textAt({"description"}).value_or("");
    return setting;
}

}  // namespace

Client::Client(Options options) : session(std::make_unique<Session>(std::move(options))) {}

Client::~Client() = default;

void Client::connect() {
    session->connect();
}

bool Client::isConnected() const {
    return session->isConnected();
}

std::string Client::socketPath() const {
    return session->socketPath();
}

std::string Client::wireVersion() {
    session->connect();
    return session->wireVersion();
}

std::map<std::string, std::string> Client::get(const std::vector<std::string>& keys) {
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::getSettingsRequest(id, keys), [](const auto& reply) {
        return reply.stringsAt({"payload", "settings"});
    });
}

Answer Client::set(const std::string& key, const std::string& value, std::optional<std::int64_t> timestamp) {
    return setOne(*session, {key, value, timestamp});
}

std::vector<Answer> Client::setAll(const std::vector<Assignment>& assignments) {
    return setInBatches(*session, assignments);
}

bool Client::isSelected() {
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::bareRequest(Wire::IS_ORLIA_SELECTED_VA, id), [](const auto& reply) {
        const auto selected = reply.booleanAt({"payload", "isOrliaSelectedAsVA"});
        return selected ? *selected : throw Wire::MalformedFrame();
    });
}

Answer Client::openSettings() {
    return request(*session, Wire::OPEN_VA_SETTINGS);
}

Answer Client::logOut() {
    return request(*session, Wire::LOG_OUT);
}

std::vector<Event> Client::history(const std::string& key, std::optional<int> limit) {
    session->requireAnswers("history");
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::historyFrame(id, key, limit), [](const auto& reply) {
        std::vector<Event> events;
        for (auto& event : reply.objectsAt({"history", "events"})) {
            events.push_back(eventOf(Wire::HostFrame(std::move(event))));
        }
        return events;
    });
}

void Client::actFor(const std::string& name) {
    session->caller = name;
}

std::vector<Setting> Client::catalogue() {
    session->requireAnswers("catalogue");
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::queryFrame(id, "catalogue"), [](const auto& reply) {
        std::vector<Setting> settings;
        for (auto& entry : reply.objectsAt({"catalogue", "settings"})) {
            settings.push_back(settingOf(Wire::HostFrame(std::move(entry))));
        }
        return settings;
    });
}

std::optional<std::string> Client::pageAddress(bool newKey) {
    session->requireAnswers("administration");
    const std::string id = session->newMessageId();
    return ask(*session, id, newKey ? Wire::newPageKeyFrame(id) : Wire::queryFrame(id, "page"), [](const auto& reply) {
        return reply.textAt({"page", "address"});
    });
}

std::string Client::backUp() {
    session->requireAnswers("administration");
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::queryFrame(id, "backup"), [](const auto& reply) {
        auto file = reply.textAt({"backup", "file"});
        return file ? *file : throw Wire::MalformedFrame();
    });
}

std::string Client::status() {
    session->requireAnswers("administration");
    const std::string id = session->newMessageId();
    return ask(*session, id, Wire::queryFrame(id, "status"),
               [](const auto& reply) { return reply.objectAt({"status"}); });
}

void Client::onEvent(std::function<void(const Event&)> observer, bool atOnce) {
    session->observers.event = std::move(observer);
    session->observers.eventsAtOnce = atOnce;
}

void Client::onReread(std::function<void(const Reread&)> observer) {
    session->observers.reread = std::move(observer);
}

void Client::onConnected(std::function<void()> observer) {
    session->observers.connected = std::move(observer);
}

void Client::onDisconnected(std::function<void(const std::string& reason)> observer) {
    session->observers.disconnected = std::move(observer);
}

int Client::fileDescriptor() const {
    return session->descriptor();
}

void Client::process() {
    session->process();
}

void Client::run() {
    while (!session->isStopped) {
        pollfd wanted{session->descriptor(), POLLIN, 0};
        ::poll(&wanted, 1, -1);
        session->process();
    }
    session->isStopped = false;
}

void Client::stop() {
    session->isStopped = true;
}

}  // namespace SettingsClient
