#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

/// A client that records the frames sent to it.
class RecordingClient : public Client {
public:
    explicit RecordingClient(Origin ownOrigin = Origin::SOCKET, ListenerKind ownKind = ListenerKind::UNIX_SOCKET)
        : clientOrigin(ownOrigin), kind(ownKind) {}
    std::vector<std::shared_ptr<const std::string>> frames;
    void send(const std::shared_ptr<const std::string>& frame) override { frames.push_back(frame); }
    Origin origin() const override { return clientOrigin; }
    ListenerKind listenerKind() const override { return kind; }

    std::vector<std::string> take() {
        std::vector<std::string> texts;
        for (const auto& frame : frames) {
            texts.push_back(*frame);
        }
        frames.clear();
        return texts;
    }

private:
    Origin clientOrigin;
    ListenerKind kind;
};

}  // namespace SettingsHandlerKit
