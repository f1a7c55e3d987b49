#include "HostPeer.h"

#include <array>
#include <stdexcept>

#include <sys/socket.h>

#include "support/LineClient.h"

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;

/// Lines from a socket that blocks.
class EventLines {
public:
    explicit EventLines(int connectedSocket) : socket(connectedSocket) {}

    /// The next line, and when the last of its bytes had come.
    const std::string& next(Clock::time_point* time = nullptr) {
        line.clear();
        for (;;) {
            const std::size_t end = pending.find('\n');
            if (end != std::string::npos) {
                line.assign(pending, 0, end);
                pending.erase(0, end + 1);
                return line;
            }
            const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), 0);
            if (time != nullptr) {
                *time = Clock::now();
            }
            if (count <= 0) {
                throw std::runtime_error("the host hung up");
            }
            pending.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }

private:
    int socket;
    std::array<char, 4096> buffer{};
    std::string pending;
    std::string line;
};

class HostSetter : public Setter {
public:
    explicit HostSetter(const std::string& path) : client(path) {}

    void set(const std::string& value) override {
        client.sendLine(R"({"type":24,"timestamp":1700000000000,"payload":{"settingDBId":"deviceName","to":")" + value +
                        "\"}}");
    }
    /// The event comes to this client, too.
    void settle() override { events.next(); }

private:
    TestSupport::LineClient client;
    EventLines events{client.descriptor()};
};

std::string newValueOf(const std::string& event) {
    const std::string member = R"("to":")";
    const std::size_t start = event.find(member) + member.size();
    return event.substr(start, event.find('"', start) - start);
}

}  // namespace

HostPeer::HostPeer(const std::filesystem::path& parent)
    : folder(parent),
      // Its log goes to a file, so that nobody has to read it meanwhile.
      host({"/bin/sh", "-c", "log=$1; shift; exec \"$@\" 2> \"$log\"", "sh", folder / "log", SETTINGS_HOST, "--storage",
            folder / "settings.db", "--socket", folder / "settings.sock", "--device-socket", folder / "device.sock",
            "--no-web"}) {
    if (!host.output().readLine()) {
        throw std::runtime_error("the host did not start");
    }
}

std::unique_ptr<Setter> HostPeer::connect() const {
    return std::make_unique<HostSetter>(folder / "settings.sock");
}

void HostPeer::observe(const Report& report) const {
    const TestSupport::LineClient client(folder / "settings.sock");
    EventLines events(client.descriptor());
    report.ready();
    for (;;) {
        Clock::time_point time;
        const std::string& event = events.next(&time);
        report.seen(time, newValueOf(event));
    }
}

}  // namespace Benchmarks
