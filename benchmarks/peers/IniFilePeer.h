#pragma once

#include <filesystem>

#include "Peer.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

/// QSettings with a file of the INI format. It tells nobody of changes.
class IniFilePeer : public Peer {
public:
    enum class Safety { AS_IT_IS, SYNCHRONISED };

    /// The file lies in a fresh folder inside `parent`. `SYNCHRONISED`: file and folder are made safe after each
    /// change.
    IniFilePeer(const std::filesystem::path& parent, Safety chosen) : folder(parent), safety(chosen) {}

    std::unique_ptr<Setter> connect() const override;
    bool tellsOthers() const override { return false; }
    void observe(const Report& /*report*/) const override {}

private:
    TestSupport::TemporaryDirectory folder;
    Safety safety;
};

}  // namespace Benchmarks
