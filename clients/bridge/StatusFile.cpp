#include "bridge/StatusFile.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "Wire/ObjectWriter.h"

namespace SettingsBridge {

namespace {

/// A reader never sees a part: every state is one write of this size, filled with blanks.
constexpr std::size_t size = 512;

/// Empty when there is none.
std::string folderFor(const std::string& program) {
    if (std::string managed = managedFolder(std::getenv("RUNTIME_DIRECTORY")); !managed.empty()) {
        return managed;
    }
    const char* const user = std::getenv("XDG_RUNTIME_DIR");
    if (user == nullptr || user[0] != '/') {
        return "";
    }
    std::string folder = std::string(user) + "/" + program;
    ::mkdir(folder.c_str(), S_IRWXU);
    return folder;
}

/// Returns: -1 when the file cannot be opened, or another process has it.
int openLocked(const std::string& path) {
    const int opened = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (opened >= 0 && ::fcntl(opened, F_OFD_SETLK, &whole) != 0) {
        ::close(opened);
        return -1;
    }
    return opened;
}

}  // namespace

std::string managedFolder(const char* folders) {
    return folders == nullptr || folders[0] != '/' ? "" : std::string(folders, std::strcspn(folders, ":"));
}

StatusFile::StatusFile(const std::string& program, std::string itsVersion) : version(std::move(itsVersion)) {
    const std::string folder = folderFor(program);
    if (!folder.empty()) {
        path = folder + "/status.json";
        descriptor = openLocked(path);
    }
}

StatusFile::~StatusFile() {
    if (descriptor >= 0) {
        ::unlink(path.c_str());
        ::close(descriptor);
    }
}

void StatusFile::write(bool connected, const std::string& text) {
    if (std::exchange(written, text) == text) {
        return;
    }
    ::sd_notify(0, ("STATUS=" + text).c_str());
    if (descriptor < 0) {
        return;
    }
    Wire::ObjectWriter writer;
    writer.text("version", version);
    writer.boolean("connected", connected);
    writer.text("text", text.substr(0, size / 4));
    std::string content = writer.finish();
    content.resize(size - 1, ' ');
    content += '\n';
    // A status that cannot be written is no reason to stop.
    if (::pwrite(descriptor, content.data(), content.size(), 0) < 0) {
        return;
    }
}

}  // namespace SettingsBridge
