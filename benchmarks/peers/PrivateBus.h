#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "support/ChildProcess.h"

namespace Benchmarks {

/// A message bus with nothing on it but what is started here.
class PrivateBus {
public:
    /// Its files lie in `folder`. `services`: what is started when it is spoken to, by bus name, with `environment`.
    PrivateBus(const std::filesystem::path& folder, const std::map<std::string, std::string>& services,
               const std::map<std::string, std::string>& environment);

    const std::string& address() const { return busAddress; }

private:
    std::string busAddress;
    std::unique_ptr<TestSupport::ChildProcess> daemon;
};

}  // namespace Benchmarks
