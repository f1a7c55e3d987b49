#pragma once

#include <memory>
#include <string>

#include "Metrics/MetricsDelegateInterface.h"
#include "SettingsHandlerKit/StorageObserver.h"
#include "SettingsHandlerKit/TrafficObserver.h"

namespace SettingsHandlerKit {

/// The metrics of the host in the Prometheus text format.
///
/// Bounded and private: every label value comes from a fixed list, everything else is counted as "other". So the number
/// of series does not depend on what clients send, and names of rooms and phones never leave through metrics. One
/// thread only.
class ServerMetrics : public Metrics::MetricsDelegateInterface, public TrafficObserver, public StorageObserver {
public:
    explicit ServerMetrics(const std::string& version);
    ~ServerMetrics() override;

    /// All metrics as text, with those of the process as they are now.
    std::string text();

    /// Does nothing: every event repeats a counter.
    void recordEvent(const std::string& group, const std::string& source,
                     const std::unordered_map<std::string, std::string>& attributes) override;
    /// Counts a change. `name`: the setting's key, "_", and the value or "error".
    void recordCounter(const std::string& name, int first, int second, double third) override;

    void clientConnected(const Client& client) override;
    void clientRefused(Origin origin) override;
    void clientDisconnected(const Client& client, DisconnectReason reason) override;
    /// Not counted: requests are counted when they are handled.
    void frameReceived(const Client& client, const std::string& frame) override;
    void frameSent(const Client* receiver, const std::string& frame) override;
    void frameRefused(const std::string& code) override;
    void requestHandled(int type, RequestOutcome outcome) override;

    void storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) override;

private:
    struct Families;
    std::unique_ptr<Families> families;
};

}  // namespace SettingsHandlerKit
