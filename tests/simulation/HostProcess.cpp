#include "simulation/HostProcess.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace SettingsSimulation {

namespace {

std::string randomBytes(Choices& choices, std::size_t count) {
    SeededChoices random(choices.pick(std::size_t{1} << 32U, "the seed of random bytes"));
    std::string bytes(count, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random.pick(256, "")); });
    return bytes;
}

}  // namespace

HostProcess::HostProcess(const Surroundings& surroundings)
    : itsServer(options(surroundings)),
      television(itsServer, {itsFaults, surroundings.sleep, surroundings.restart}),
      deviceFrames({std::shared_ptr<void>(), &television.deviceClients()}, surroundings.report) {
    itsServer.addEndpoint({"device", std::nullopt, SettingsHandlerKit::Origin::DEVICE}, deviceFrames);
    television.openStorage(storageFile, surroundings.disk);
    television.startHandler(std::nullopt);
    itsServer.start();
}

SettingsHandlerKit::ServerOptions HostProcess::options(const Surroundings& surroundings) {
    SettingsHandlerKit::ServerOptions chosen;
    chosen.environment.random = [&choices = surroundings.choices](std::size_t count) {
        return randomBytes(choices, count);
    };
    chosen = withFaults(
        std::move(chosen), itsFaults,
        [this](auto delay, auto action) { itsServer.postLater(delay, std::move(action)); },
        [this](const auto& client) { television.clientCut(client); });
    chosen.between = [behind = chosen.between, report = surroundings.report](auto hub) {
        return std::make_shared<HandledFrames>(behind(std::move(hub)), report);
    };
    return chosen;
}

}  // namespace SettingsSimulation
