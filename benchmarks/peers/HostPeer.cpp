#include "HostPeer.h"

#include <stdexcept>

#include "SocketLines.h"
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

}  // namespace

HostPeer::HostPeer(const std::filesystem::path& parent, Log log)
    : folder(parent),
      // Its log goes to a file, so that nobody has to read it meanwhile.
      host({"/bin/sh", "-c", R"(log=$1; shift; exec "$@" 2> "$log")", "sh", folder / "log", SETTINGS_HOST, "--storage",
            folder / "settings.db", "--socket", folder / "settings.sock", "--device-socket", folder / "device.sock",
            "--no-web", "--log-level", log == Log::AS_USUAL ? "1" : "3"}) {
    if (!host.output().readLine()) {
        throw std::runtime_error("the host did not start");
    }
}

std::unique_ptr<Setter> HostPeer::connect() const {
    return std::make_unique<HostSetter>(folder / "settings.sock");
}

void HostPeer::observe(const Report& report) const {
    const TestSupport::LineClient client(folder / "settings.sock");
    SocketLines events(client.descriptor());
    report.ready();
    for (;;) {
        const std::string value = newValueOf(events.next());
        report.seen(std::chrono::steady_clock::now(), value);
    }
}

}  // namespace Benchmarks
