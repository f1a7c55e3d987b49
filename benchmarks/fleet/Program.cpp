#include "fleet/Program.h"

#include <chrono>
#include <string>

#include "fleet/Names.h"
#include "host/client/Exchange.h"
#include "support/Texts.h"

namespace Benchmarks {

class Program::Host : public HostServer {
public:
    Host() : HostServer(Storage::MEMORY) {}
    std::string path() const { return socket(); }
};

Program::Program(int port)
    : host(std::make_unique<Host>()),
      somebody(host->connect(Listener::UNIX_SOCKET)),
      bridge(std::make_unique<TestSupport::ChildProcess>(std::vector<std::string>{
          SETTINGS_MQTT, "--broker", "127.0.0.1:" + std::to_string(port), "--socket", host->path(), "--id",
          televisionName(0), "--group", groupName, "--state", state.path().string(), "--log-level", "3"})) {}

Program::~Program() = default;

void Program::change(std::size_t /*television*/) {
    const std::string now = std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    // Until the event.
    exchange(*somebody, somebody->bytesOf(setRequest(changedKey, now)), now);
}

}  // namespace Benchmarks
