#pragma once

#include <filesystem>

#include "Peer.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// Our host as it is shipped, over its Unix socket.
class HostPeer : public Peer {
public:
    /// The database lies in a fresh folder inside `parent`.
    explicit HostPeer(const std::filesystem::path& parent);

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    TestSupport::TemporaryDirectory folder;
    TestSupport::ChildProcess host;
};

}  // namespace Benchmarks
