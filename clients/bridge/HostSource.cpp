#include "bridge/HostSource.h"

#include <chrono>
#include <string>
#include <utility>

#include <poll.h>

namespace SettingsBridge {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds pause{500};

}  // namespace

HostSource::HostSource(SettingsClient::Client& settingsClient, const Log& programLog,
                       std::function<void()> readEverything)
    : client(settingsClient), log(programLog), readAll(std::move(readEverything)) {}

Source::Wanted HostSource::wanted() {
    return {client.fileDescriptor(), POLLIN, due};
}

void HostSource::process(short /*events*/) {
    attempt([this] { client.process(); });
    if (!due || Clock::now() < *due) {
        return;
    }
    if (client.isConnected()) {
        read();
    } else {
        // The observer of the next connection reads.
        due.reset();
    }
}

void HostSource::read() {
    attempt([this] {
        readAll();
        due.reset();
    });
}

void HostSource::attempt(const std::function<void()>& action) {
    try {
        action();
    } catch (const SettingsClient::RequestRefused& error) {
        readLater(error.what());
    } catch (const SettingsClient::NotSupported& error) {
        // It stays so until an update of the host, which closes the connection.
        due.reset();
        log.write(LogLevel::WARNING, std::string("cannot read the settings: ") + error.what());
    } catch (const SettingsClient::ConnectionError&) {
        // `onDisconnected` is told, here and below.
    } catch (const SettingsClient::UnexpectedResponse&) {
    }
}

void HostSource::readLater(const char* reason) {
    // Once until it succeeds.
    log.write(due ? LogLevel::TRACE : LogLevel::WARNING,
              std::string("cannot read the settings, will try again: ") + reason);
    due = Clock::now() + pause;
}

}  // namespace SettingsBridge
