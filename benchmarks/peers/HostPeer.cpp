#include <stdexcept>

#include "HostCommand.h"
#include "Peer.h"
#include "SocketLines.h"
#include "support/ChildProcess.h"
#include "support/LineClient.h"
#include "support/Texts.h"

namespace Benchmarks {

namespace {

class HostSetter : public Setter {
public:
    explicit HostSetter(const std::string& path) : client(path) {}

    void set(const std::string& value) override { client.sendLine(setRequest("deviceName", value)); }
    /// The event comes to this client, too.
    void settle() override { events.next(); }

private:
    TestSupport::LineClient client;
    SocketLines events{client.descriptor()};
};

std::string newValueOf(const std::string& event) {
    const std::string member = R"("to":")";
    const std::size_t start = event.find(member) + member.size();
    return event.substr(start, event.find('"', start) - start);
}

class HostPeer : public Peer {
public:
    HostPeer(const std::filesystem::path& parent, int logLevel) : folder(parent), host(hostCommand(folder, logLevel)) {
        if (!host.output().readLine()) {
            throw std::runtime_error("the host did not start");
        }
    }

    std::unique_ptr<Setter> connect() const override { return std::make_unique<HostSetter>(folder / "settings.sock"); }

    void observe(const Report& report) const override {
        const TestSupport::LineClient client(folder / "settings.sock");
        SocketLines events(client.descriptor());
        report.ready();
        for (;;) {
            const std::string value = newValueOf(events.next());
            report.seen(std::chrono::steady_clock::now(), value);
        }
    }

private:
    TestSupport::TemporaryDirectory folder;
    TestSupport::ChildProcess host;
};

}  // namespace

std::unique_ptr<Peer> hostPeer(const std::filesystem::path& parent, int logLevel) {
    return std::make_unique<HostPeer>(parent, logLevel);
}

}  // namespace Benchmarks
