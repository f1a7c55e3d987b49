#pragma once

#include <filesystem>

#include "Peer.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// Our host over its Unix socket, as it is shipped but for what it logs.
class HostPeer : public Peer {
public:
    /// What its log takes.
    enum class Log { AS_USUAL, ERRORS_ONLY };

    /// The database lies in a fresh folder inside `parent`.
    HostPeer(const std::filesystem::path& parent, Log log);

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    TestSupport::TemporaryDirectory folder;
    TestSupport::ChildProcess host;
};

}  // namespace Benchmarks
