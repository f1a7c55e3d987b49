#include "SettingsClient/Errors.h"
#include "connection/Connection.h"
#include "scenarios/Channel.h"

namespace SettingsCtl {

namespace {

class LineChannel : public Channel {
public:
    LineChannel(const std::vector<SettingsClient::SocketCandidate>& candidates, std::chrono::milliseconds timeout)
        : connection(candidates, timeout) {}

    int descriptor() const override { return connection.descriptor(); }
    void send(const std::string& text) override { connection.send({text}); }
    bool read() override {
        try {
            connection.readAvailable();
            return true;
        } catch (const SettingsClient::ConnectionError&) {
            return false;
        }
    }
    std::optional<std::string> take() override { return connection.takeLine(); }

private:
    SettingsClient::Connection connection;
};

}  // namespace

std::unique_ptr<Channel> lineChannel(const std::vector<SettingsClient::SocketCandidate>& candidates,
                                     std::chrono::milliseconds timeout) {
    return std::make_unique<LineChannel>(candidates, timeout);
}

}  // namespace SettingsCtl
