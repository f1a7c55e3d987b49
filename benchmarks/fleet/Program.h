#pragma once

#include <memory>

#include "fleet/Fleet.h"
#include "host/client/Server.h"
#include "support/ProcessUsage.h"

namespace Benchmarks {

/// The program settings-mqtt, as the television 0, with a settings-host. Both log errors only.
class Program : public Bridges {
public:
    /// Does not wait until it is connected. Errors: `std::runtime_error`.
    explicit Program(int port);
    ~Program() override;

    void change(std::size_t television) override;
    double processorMicroseconds() const override { return TestSupport::processorMicroseconds(bridge->pid()); }
    double memory() const override { return memoryOf(bridge->pid()); }

private:
    class Host;

    const TestSupport::TemporaryDirectory state{TestSupport::memoryFolder()};
    const std::unique_ptr<Host> host;
    const std::unique_ptr<FrameConnection> somebody;
    std::unique_ptr<TestSupport::ChildProcess> bridge;
};

}  // namespace Benchmarks
