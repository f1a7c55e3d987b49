#pragma once

#include <filesystem>
#include <map>

#include "Peer.h"
#include "PrivateBus.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// GSettings with the dconf service, on a session bus of its own.
class DconfPeer : public Peer {
public:
    /// The database lies in a fresh folder inside `parent`.
    explicit DconfPeer(const std::filesystem::path& parent);

    std::unique_ptr<Setter> connect() const override;
    void observe(const Report& report) const override;

private:
    std::map<std::string, std::string> environment() const;
    /// For the processes that use the peer.
    void takeEnvironment() const;

    TestSupport::TemporaryDirectory folder;
    /// The service tells its clients by a file in memory that the database is a new one.
    TestSupport::TemporaryDirectory runtimeFolder;
    PrivateBus bus;
};

}  // namespace Benchmarks
