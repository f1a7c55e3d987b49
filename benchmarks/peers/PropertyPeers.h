#pragma once

#include <filesystem>
#include <string>

#include "Peer.h"
#include "PrivateBus.h"
#include "Worker.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// A writable property of a service written with sd-bus, behind a message bus of its own. It stores nothing.
class BusPropertyPeer : public Peer {
public:
    BusPropertyPeer();

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    TestSupport::TemporaryDirectory folder;
    PrivateBus bus;
    Worker service;
};

/// systemd-hostnamed, which stores the machine's pretty name in /etc, on a message bus of its own and with an /etc of
/// its own. Needs root.
class HostnamedPeer : public Peer {
public:
    /// Its /etc lies in a fresh folder inside `parent`. Throws `std::runtime_error` when it cannot be had here.
    explicit HostnamedPeer(const std::filesystem::path& parent);
    ~HostnamedPeer() override;

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    TestSupport::TemporaryDirectory folder;
    PrivateBus bus;
};

}  // namespace Benchmarks
