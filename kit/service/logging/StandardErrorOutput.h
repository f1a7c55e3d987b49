#pragma once

#include <cstddef>
#include <string>

#include "service/logging/LogOutput.h"

namespace SettingsHost {

/// Writes lines to standard error. Lines for which a pipe or socket has no room are lost: whoever reads it may have
/// stopped. A line of which only a part had room is finished before the next one. Files and terminals are waited for.
class StandardErrorOutput : public LogOutput {
public:
    /// `descriptor` stays open as long as this lives. Others may share it, so its flags stay as they are.
    explicit StandardErrorOutput(int descriptor);
    ~StandardErrorOutput() override;

    bool write(const std::string& line) override;

private:
    enum class Kind { WAITED_FOR, SHARED_PIPE, OWN_PIPE, SOCKET };

    long writeSome(const char* text, std::size_t size);
    /// Returns: how much of `text` there was room for.
    std::size_t writeAsMuchAsPossible(const std::string& text);

    int target;
    Kind kind = Kind::WAITED_FOR;
    std::string rest;
};

}  // namespace SettingsHost
