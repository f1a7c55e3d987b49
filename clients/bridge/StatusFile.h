#pragma once

#include <string>

namespace SettingsBridge {

/// The first of the folders that the service manager has made and names in a variable such as STATE_DIRECTORY, where
/// several are separated by colons. `folders` is its value; null: it is not set. Returns: empty when there is none.
std::string managedFolder(const char* folders);

/// Tells the service manager and `settingsctl doctor` how a bridge is, the latter in `status.json` in the folder that
/// the service manager made for the program (RUNTIME_DIRECTORY), or in `PROGRAM` below XDG_RUNTIME_DIR. The file is
/// locked while the program runs, so one that has crashed is told from one that runs. Without such a folder, and when
/// another process has the file, nothing is written.
class StatusFile {
public:
    StatusFile(const std::string& program, std::string itsVersion);
    /// Removes the file.
    ~StatusFile();
    StatusFile(const StatusFile&) = delete;
    StatusFile& operator=(const StatusFile&) = delete;

    /// `connected`: to both sides. `text` is for people, who may show it to others: no names, addresses or values.
    /// Does nothing while the text stays the same.
    void write(bool connected, const std::string& text);

private:
    const std::string version;
    std::string path;
    int descriptor = -1;
    std::string written;
};

}  // namespace SettingsBridge
