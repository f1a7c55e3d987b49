#include "simulation/ClientsWithFaults.h"

#include <deque>
#include <utility>

#include "Utils/Rapidjson.h"
#include "Wire/MessageType.h"

namespace SettingsHost {

namespace {

using SettingsHandlerKit::Client;
using Frame = std::shared_ptr<const std::string>;

/// Frames that wait for a client are no part of the server's backlog, so they have a limit of their own.
constexpr std::size_t mostBytesLate = std::size_t{1024} * 1024;

/// A frame of the server is well formed, and begins with its type.
bool isEvent(const std::string& frame) {
    static const std::string beginning = "{\"type\":" + std::to_string(Wire::SETTING_CHANGED) + ",";
    return frame.rfind(beginning, 0) == 0;
}

bool asksToResume(const std::string& frame) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(frame.c_str());
    return !document.HasParseError() && document.IsObject() && !document.HasMember("type") &&
           !document.HasMember("batch") && document.HasMember("hello");
}

}  // namespace

/// What the clients have in common.
struct ClientsWithFaults::Shared {
    std::shared_ptr<Faults> faults;
    Later later;
    Cut cut;
};

class ClientsWithFaults::ClientWithFaults : public Client, public std::enable_shared_from_this<ClientWithFaults> {
public:
    ClientWithFaults(std::shared_ptr<Client> realClient, std::shared_ptr<Shared> whatIsShared)
        : real(std::move(realClient)), shared(std::move(whatIsShared)) {}

    void send(const Frame& frame) override {
        const Faults& faults = *shared->faults;
        if (isCut) {
            return;
        }
        if (faults.isOn(Fault::EVENTS_DROPPED) && !isResuming && isEvent(*frame)) {
            close();
        } else if (faults.isOn(Fault::REPLIES_LATE)) {
            sendLate(frame, faults.timeOf(Fault::REPLIES_LATE));
        } else {
            real->send(frame);
        }
    }

    SettingsHandlerKit::Origin origin() const override { return real->origin(); }
    SettingsHandlerKit::ListenerKind listenerKind() const override { return real->listenerKind(); }
    void close() override {
        isCut = true;
        waiting.clear();
        shared->cut(*this);
        real->close();
    }

    void resuming(bool resumes) { isResuming = resumes; }

    /// Sends what waits, up to the frame `number`.
    void release(unsigned long number) {
        while (!waiting.empty() && waiting.front().first <= number) {
            waitingBytes -= waiting.front().second->size();
            real->send(waiting.front().second);
            waiting.pop_front();
        }
    }
    void releaseAll() { release(lastNumber); }

private:
    void sendLate(const Frame& frame, std::chrono::milliseconds time) {
        waiting.emplace_back(++lastNumber, frame);
        waitingBytes += frame->size();
        if (waitingBytes > mostBytesLate) {
            close();
            return;
        }
        // One whose frame was released meanwhile finds nothing to do.
        shared->later(time, [client = weak_from_this(), number = lastNumber] {
            if (const auto self = client.lock()) {
                self->release(number);
            }
        });
    }

    const std::shared_ptr<Client> real;
    const std::shared_ptr<Shared> shared;
    std::deque<std::pair<unsigned long, Frame>> waiting;
    std::size_t waitingBytes = 0;
    unsigned long lastNumber = 0;
    bool isResuming = false;
    bool isCut = false;
};

ClientsWithFaults::ClientsWithFaults(std::shared_ptr<SettingsHandlerKit::ClientListener> realServer,
                                     std::shared_ptr<Faults> faults, Later later, Cut cut)
    : server(std::move(realServer)),
      shared(std::make_shared<Shared>(Shared{std::move(faults), std::move(later), std::move(cut)})) {
    shared->faults->onChange(Fault::REPLIES_LATE, [this] { releaseAll(); });
}

ClientsWithFaults::~ClientsWithFaults() = default;

/// With another delay or none, new frames must not overtake those that wait.
void ClientsWithFaults::releaseAll() {
    for (const auto& entry : clients) {
        entry.second->releaseAll();
    }
}

const std::shared_ptr<ClientsWithFaults::ClientWithFaults>& ClientsWithFaults::known(
    const std::shared_ptr<Client>& client) {
    return clients.at(client.get());
}

void ClientsWithFaults::connected(const std::shared_ptr<Client>& client) {
    const auto created = std::make_shared<ClientWithFaults>(client, shared);
    clients.emplace(client.get(), created);
    server->connected(created);
}

void ClientsWithFaults::disconnected(const std::shared_ptr<Client>& client,
                                     SettingsHandlerKit::DisconnectReason reason) {
    const auto gone = known(client);
    clients.erase(client.get());
    server->disconnected(gone, reason);
}

void ClientsWithFaults::received(const std::shared_ptr<Client>& client, const std::string& frame) {
    const auto sender = known(client);
    sender->resuming(shared->faults->isOn(Fault::EVENTS_DROPPED) && asksToResume(frame));
    server->received(sender, frame);
    sender->resuming(false);
}

void ClientsWithFaults::oversized(const std::shared_ptr<Client>& client) {
    server->oversized(known(client));
}

void ClientsWithFaults::refused(SettingsHandlerKit::Origin origin) {
    server->refused(origin);
}

}  // namespace SettingsHost
