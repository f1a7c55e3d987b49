#include "SettingsHandlerKit/Server.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "SettingsHandlerKit/Logging.h"
#include "server/ServerParts.h"

namespace SettingsHandlerKit {

Server::Server(ServerOptions options) : parts(std::make_unique<Parts>(std::move(options))) {}

Server::~Server() {
    if (parts->thread.joinable()) {
        stop();
        join();
    }
    // A handler may keep the hub.
    parts->hub->use(nullptr);
}

void Server::addEndpoint(const Endpoint& endpoint, ClientListener& listener) {
    const auto& taken = parts->endpoints;
    if (endpoint.name.empty() || endpoint.name == "web" ||
        endpoint.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") != std::string::npos ||
        std::any_of(taken.begin(), taken.end(), [&](const auto& other) { return other.name == endpoint.name; })) {
        throw std::invalid_argument("an endpoint cannot be named '" + endpoint.name + "'");
    }
    parts->addEndpoint(endpoint.name, endpoint.socketPath, endpoint.origin, listener);
}

std::shared_ptr<CheckedSettingsHandler> Server::createHandler(
    Storage& storage, std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info) {
    watch(storage);
    std::shared_ptr<CheckedSettingsHandler> handler;
    perform([&] {
        handler = CheckedSettingsHandler::create(parts->hub, storage, parts->metrics, std::move(bridge),
                                                 std::move(launcher), std::move(info), handlerOptions());
        watch(handler);
        handler->setUnusableValuesAside();
        handler->initializeSettings();
        handler->migrateExistingDeviceSettings();
    });
    return handler;
}

std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> Server::transport() const {
    return parts->hub;
}

std::shared_ptr<Metrics::MetricsDelegateInterface> Server::metrics() const {
    return parts->metrics;
}

std::shared_ptr<ValueObserver> Server::valueObserver() const {
    return parts->hub;
}

std::shared_ptr<ClientListener> Server::clients() const {
    return parts->settingsClients;
}

std::shared_ptr<TrafficObserver> Server::traffic() const {
    return parts->traffic;
}

void Server::addTrafficObserver(std::shared_ptr<TrafficObserver> observer) {
    parts->traffic->add(std::move(observer));
}

CheckedSettingsHandler::Options Server::handlerOptions() const {
    return {[backlog = parts->backlog](std::size_t bytes) { return backlog->hasRoomFor(bytes); }};
}

void Server::watch(Storage& storage) {
    parts->watch(storage);
}

void Server::watch(const std::shared_ptr<CheckedSettingsHandler>& handler) {
    parts->hub->watch(handler);
    parts->transactions->watch(handler);
}

void Server::onRollBack(std::function<void()> action) {
    parts->transactions->onRollBack(std::move(action));
}

std::string Server::start() {
    parts->openListeners();
    return parts->startText();
}

SandboxFolders Server::foldersInUse() const {
    const auto folderOf = [](const std::string& file) {
        return std::filesystem::absolute(file).parent_path().string();
    };
    SandboxFolders folders;
    if (parts->storage != nullptr) {
        folders.changed.push_back(folderOf(parts->storage->file()));
    }
    for (const auto& endpoint : parts->endpoints) {
        if (!endpoint.path.empty()) {
            folders.cleared.push_back(folderOf(endpoint.path));
        }
    }
    return folders;
}

void Server::post(std::function<void()> action) {
    parts->loop.post([this, posted = std::move(action)] { parts->performPosted(posted); });
}

void Server::postLater(std::chrono::milliseconds delay, std::function<void()> action) {
    parts->delays.add(delay, [this, posted = std::move(action)] { parts->performPosted(posted); });
}

void Server::perform(const std::function<void()>& action) {
    parts->hub->perform(Origin::DEVICE, action);
}

Observation Server::observe(const std::string& key, SettingObserver observer) {
    return parts->hub->observers().add(key, std::move(observer));
}

Observation Server::observeAll(SettingObserver observer) {
    return parts->hub->observers().add(std::nullopt, std::move(observer));
}

unsigned long Server::eventsSent() const {
    return parts->hub->eventsSent();
}

std::string Server::socketPath() const {
    return parts->endpoints.front().path;
}

std::string Server::pageAddress() const {
    return parts->pageAddress();
}

std::optional<std::string> Server::renewPageKey() {
    return parts->renewPageKey();
}

std::string Server::metricsText() const {
    return parts->metrics->text();
}

void Server::addToHealth(const std::string& name, std::function<std::vector<std::string>()> texts) {
    parts->healthTexts[name] = std::move(texts);
}

std::string Server::healthText() const {
    return *parts->healthResponse().body;
}

}  // namespace SettingsHandlerKit
