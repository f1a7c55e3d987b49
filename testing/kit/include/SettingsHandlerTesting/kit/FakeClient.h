#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerTesting {

/// A connected client, for tests of a `ClientListener`. It keeps the frames that are sent to it. Threads: one.
/// Differences from a real one: it has no backlog, so it is never disconnected.
class FakeClient : public SettingsHandlerKit::Client {
public:
    /// A client of this origin, connected at a listener of this kind.
    explicit FakeClient(SettingsHandlerKit::Origin ownOrigin = SettingsHandlerKit::Origin::SOCKET,
                        SettingsHandlerKit::ListenerKind ownKind = SettingsHandlerKit::ListenerKind::UNIX_SOCKET)
        : clientOrigin(ownOrigin), kind(ownKind) {}

    void send(const std::shared_ptr<const std::string>& frame) override { frames.push_back(frame); }
    SettingsHandlerKit::Origin origin() const override { return clientOrigin; }
    SettingsHandlerKit::ListenerKind listenerKind() const override { return kind; }
    void close() override { isClosed = true; }

    /// Removes and returns the texts of the frames so far.
    std::vector<std::string> take() {
        std::vector<std::string> texts;
        for (const auto& frame : std::exchange(frames, {})) {
            texts.push_back(*frame);
        }
        return texts;
    }

    /// The frames so far. Those that go to several clients are shared by them.
    std::vector<std::shared_ptr<const std::string>> frames;

    /// Has `close` been called?
    bool isClosed = false;

private:
    SettingsHandlerKit::Origin clientOrigin;
    SettingsHandlerKit::ListenerKind kind;
};

}  // namespace SettingsHandlerTesting
