#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "SettingsHandlerTesting/Journal.h"
#include "model/Json.h"

namespace SettingsHandlerFuzz {

/// While it exists, records the log lines of the process in a journal, as the link-time doubles do.
class LogToJournal {
public:
    explicit LogToJournal(SettingsHandlerTesting::Journal& journal);
    ~LogToJournal();
    LogToJournal(const LogToJournal&) = delete;
    LogToJournal& operator=(const LogToJournal&) = delete;
};

/// Checks that a frame is one JSON object on one line, in valid UTF-8. `json` is the parsed `frame`.
void checkFrame(const Envelope& json, const std::string& frame);

/// A client that keeps the frames it gets.
class FrameCollector : public SettingsHandlerKit::Client {
public:
    explicit FrameCollector(SettingsHandlerKit::Origin ownOrigin, SettingsHandlerKit::ListenerKind ownListener =
                                                                      SettingsHandlerKit::ListenerKind::UNIX_SOCKET)
        : clientOrigin(ownOrigin), clientListener(ownListener) {}

    void send(const std::shared_ptr<const std::string>& frame) override;
    SettingsHandlerKit::Origin origin() const override { return clientOrigin; }
    SettingsHandlerKit::ListenerKind listenerKind() const override { return clientListener; }

    /// Removes and returns the frames, checked.
    std::vector<std::string> take();
    /// Without a check.
    std::vector<std::shared_ptr<const std::string>> takeUnchecked();

private:
    SettingsHandlerKit::Origin clientOrigin;
    SettingsHandlerKit::ListenerKind clientListener;
    std::vector<std::shared_ptr<const std::string>> frames;
};

/// Records the notifications of frames and requests.
class TrafficRecord : public SettingsHandlerKit::TrafficObserver {
public:
    void clientConnected(const SettingsHandlerKit::Client& /*client*/) override {}
    void clientDisconnected(const SettingsHandlerKit::Client& /*client*/,
                            SettingsHandlerKit::DisconnectReason /*reason*/) override {}
    void clientRefused(SettingsHandlerKit::Origin /*origin*/) override {}
    void frameReceived(const SettingsHandlerKit::Client& client, const std::string& frame) override;
    void frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) override;
    void frameRefused(const std::string& code) override;
    void requestHandled(int type, SettingsHandlerKit::RequestOutcome outcome) override;

    struct Sent {
        bool toAll;
        std::string frame;
    };
    struct Reports {
        std::vector<std::string> received;
        std::vector<Sent> sent;
        /// "handled 24 CHANGED".
        std::vector<std::string> handled;
        /// "refused not-json".
        std::vector<std::string> refused;
        /// Was the first report that of a received frame?
        bool startsWithReceived = false;
    };

    /// Removes and returns what was reported.
    Reports take();

private:
    Reports reports;
};

/// The code of a refusal; empty when `frame` is not a refusal.
std::string codeOf(const std::string& frame);

}  // namespace SettingsHandlerFuzz
