#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "SettingsHandlerKit/ClientListener.h"

namespace SettingsSimulation {

/// Stands between connections and who handles their frames, and reports each frame.
class HandledFrames : public SettingsHandlerKit::ClientListener {
public:
    struct Report {
        /// Returns: the connection whose bytes are read now.
        std::function<std::size_t()> connection;
        /// To call `action` is to handle the frame, nothing for one that was too large.
        std::function<void(std::size_t connection, const std::optional<std::string>& frame,
                           const std::function<void()>& action)>
            handle;
    };

    HandledFrames(std::shared_ptr<ClientListener> behind, Report itsReport)
        : next(std::move(behind)), report(std::move(itsReport)) {}

    void connected(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void disconnected(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                      SettingsHandlerKit::DisconnectReason reason) override;
    void received(const std::shared_ptr<SettingsHandlerKit::Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void refused(SettingsHandlerKit::Origin origin) override { next->refused(origin); }

private:
    std::shared_ptr<ClientListener> next;
    Report report;
    std::map<const SettingsHandlerKit::Client*, std::size_t> connections;
};

}  // namespace SettingsSimulation
