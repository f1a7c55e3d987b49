#pragma once

#include <string>
#include <vector>

#include "service/logging/LogOutput.h"

namespace SettingsHandlerKit {

/// A log file with mode 0600 from its creation, whatever the umask. Before it exceeds the limit it is rotated: FILE
/// becomes FILE.1, FILE.1 becomes FILE.2. Links, files of other users and anything but regular files are refused. A
/// line is written completely or not at all: one that does not fit on the disk is lost.
class LogFile : public LogOutput {
public:
    static constexpr std::size_t maximumSize = 1024UL * 1024UL;
    /// The names of all files of the log `file`, the newest first: FILE, FILE.1, FILE.2. They need not exist.
    static std::vector<std::string> filesOf(const std::string& file);

    explicit LogFile(std::string path, std::size_t limit = maximumSize);
    ~LogFile() override;

    bool write(const std::string& line) override;

    const std::string& name() const { return path; }
    /// Why the last line was lost, for a message.
    const std::string& failure() const { return reason; }
    /// Opens the file unless it is open. Returns: false when it cannot be written, see `failure`.
    bool open();
    /// Closes the file and opens the path again, for programs that rename log files. Returns: as `open`.
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

}  // namespace SettingsHandlerKit
