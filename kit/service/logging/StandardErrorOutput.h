#pragma once

#include <cstddef>
#include <string>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

/// Writes lines to standard error. A line is lost when a pipe or socket is full, as its reader may have stopped. A line
/// that was written in part is completed before the next one. Writes to files and terminals block.
class StandardErrorOutput : public LogOutput {
public:
    /// `descriptor` outlives the object. Other processes may share it, so its flags are not changed.
    explicit StandardErrorOutput(int descriptor);
    ~StandardErrorOutput() override;

    bool write(const std::string& line) override;

private:
    enum class Kind { BLOCKING, SHARED_PIPE, OWN_PIPE, SOCKET };

    long writeSome(const char* text, std::size_t size);
    /// Returns: how many bytes of `text` were written.
    std::size_t writeAsMuchAsPossible(const std::string& text);

    int target;
    Kind kind = Kind::BLOCKING;
    std::string rest;
};

}  // namespace SettingsHandlerKit
