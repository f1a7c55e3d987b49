#pragma once

#include <string>
#include <vector>

#include "service/logging/LogOutput.h"

namespace SettingsHost {

/// A log file of the host's own, mode 0600 from its first moment, whatever the mask. Before it grows over the limit it
/// becomes FILE.1, and what was FILE.1 becomes FILE.2. It is never written through a link, nor when it is no plain file
/// or another user's. Whole lines only: a line that does not fit on the disk is lost.
class LogFile : public LogOutput {
public:
    static constexpr std::size_t maximumSize = 1024U * 1024U;
    /// The names of all files of the log `file`, the newest first: FILE, FILE.1, FILE.2. They need not exist.
    static std::vector<std::string> filesOf(const std::string& file);

    explicit LogFile(std::string path, std::size_t limit = maximumSize);
    ~LogFile() override;

    bool write(const std::string& line) override;

    const std::string& name() const { return path; }
    /// Why the last line was lost, in words for a person.
    const std::string& failure() const { return reason; }
    /// Opens the file, unless it is open. Returns: false when it cannot be written to, see `failure`.
    bool open();
    /// Goes on in what is at the path now, so that others may move the file away. Returns: as `open`.
    bool reopen();

private:
    bool fail(const std::string& why);
    bool accept(int opened);
    bool rotate();
    bool append(const std::string& line);
    void close();

    std::string path;
    std::size_t limit;
    int descriptor = -1;
    std::size_t size = 0;
    std::string reason;
};

}  // namespace SettingsHost
