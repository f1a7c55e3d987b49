#pragma once

#include <string>
#include <vector>

#include "SettingsHandlerTesting/Journal.h"
#include "server/protocol/TrafficObserver.h"
#include "server/sockets/Client.h"

namespace SettingsHandlerFuzz {

/// Writes the lines of the process to a journal while it lives, as the doubles of the platform do.
class LogToJournal {
public:
    explicit LogToJournal(SettingsHandlerTesting::Journal& journal);
    ~LogToJournal();
    LogToJournal(const LogToJournal&) = delete;
    LogToJournal& operator=(const LogToJournal&) = delete;
};

/// Keeps the frames that it is sent. Each must be one JSON object on one line, in valid UTF-8.
class FrameCollector : public SettingsHost::Client {
public:
    explicit FrameCollector(SettingsHost::Origin ownOrigin) : clientOrigin(ownOrigin) {}

    void send(const std::shared_ptr<const std::string>& frame) override;
    SettingsHost::Origin origin() const override { return clientOrigin; }
    SettingsHost::ListenerKind listenerKind() const override { return SettingsHost::ListenerKind::UNIX_SOCKET; }

    std::vector<std::string> take();

private:
    SettingsHost::Origin clientOrigin;
    std::vector<std::string> frames;
};

/// Keeps the notifications of frames and requests.
class TrafficLines : public SettingsHost::TrafficObserver {
public:
    void clientConnected(const SettingsHost::Client& /*client*/) override {}
    void clientDisconnected(const SettingsHost::Client& /*client*/,
                            SettingsHost::DisconnectReason /*reason*/) override {}
    void clientRefused(SettingsHost::Origin /*origin*/) override {}
    void frameReceived(const SettingsHost::Client& client, const std::string& frame) override;
    void frameSent(const SettingsHost::Client* receiver, const std::string& frame) override;
    void frameRefused(const std::string& code) override;
    void requestHandled(int type, SettingsHost::RequestOutcome outcome) override;

    std::vector<std::string> take();

private:
    std::vector<std::string> lines;
};

/// The code that the transport must refuse `frame` with, found without its help; empty when it must take it.
std::string refusalOf(const std::string& frame);

/// The code of a refusal; empty when `frame` is something else.
std::string codeOf(const std::string& frame);

}  // namespace SettingsHandlerFuzz
