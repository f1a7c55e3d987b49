#include "server/sockets/SocketFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "server/sockets/PassedSocket.h"

namespace SettingsHandlerKit {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw ListenerError(what + ": " + std::strerror(errno));
}

void makeFolder(const std::filesystem::path& folder) {
    if (folder.empty() || std::filesystem::exists(std::filesystem::symlink_status(folder))) {
        return;
    }
    makeFolder(folder.parent_path());
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        fail("cannot create the folder " + folder.string());
    }
}

/// Opens the folder, so that the folder that was checked is the one that is used. It stays locked while the descriptor
/// is open: of two hosts that start at once, the second checks the socket after the first.
int openRuntimeFolder(const std::filesystem::path& folder) {
    makeFolder(folder);
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (opened.get() < 0) {
        if (errno == ELOOP || errno == ENOTDIR) {
            throw ListenerError(folder.string() +
                                " is a link or not a folder; the host's sockets need their own folder");
        }
        fail("cannot open the folder " + folder.string());
    }
    struct stat status {};
    if (::fstat(opened.get(), &status) != 0) {
        fail("cannot read the attributes of the folder " + folder.string());
    }
    if (status.st_uid != ::geteuid()) {
        throw ListenerError("the folder " + folder.string() + " belongs to another user");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw ListenerError("the folder " + folder.string() + " is writable by others");
    }
    ::flock(opened.get(), LOCK_EX);
    return opened.release();
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw ListenerError("the socket path is longer than " + std::to_string(sizeof(address.sun_path) - 1) +
                            " bytes: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

Descriptor createSocket() {
    Descriptor opened(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (opened.get() < 0) {
        fail("cannot create a socket");
    }
    return opened;
}

void removeStaleSocket(const std::string& path, const sockaddr_un& address) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw ListenerError(path + " exists and is not a socket; left unchanged");
    }
    const Descriptor probe(createSocket());
    if (::connect(probe.get(), generic(address), sizeof(address)) == 0 || errno != ECONNREFUSED) {
        throw ListenerError("another host listens at " + path);
    }
    if (::unlink(path.c_str()) != 0) {
        fail("cannot remove the stale socket " + path);
    }
}

}  // namespace

SocketFile::SocketFile(SocketPlace place, bool isOwn) {
    if (auto* const passed = std::get_if<Descriptor>(&place)) {
        socketPath = checkPassedUnixSocket(passed->get());
        descriptor = std::move(*passed);
        removed = !isOwn;
        if (isOwn) {
            remember();
        }
        return;
    }
    socketPath = std::filesystem::absolute(std::get<std::string>(place)).string();
    const Descriptor folder(openRuntimeFolder(std::filesystem::path(socketPath).parent_path()));
    bindAndListen();
}

void SocketFile::bindAndListen() {
    const sockaddr_un address = addressOf(socketPath);
    removeStaleSocket(socketPath, address);
    Descriptor socket = createSocket();
    // The mask decides the mode with which the file is created.
    const mode_t before = ::umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const int bound = ::bind(socket.get(), generic(address), sizeof(address));
    ::umask(before);
    if (bound != 0) {
        fail("cannot bind the socket " + socketPath);
    }
    remember();
    if (::listen(socket.get(), SOMAXCONN) != 0) {
        fail("cannot listen at " + socketPath);
    }
    descriptor = std::move(socket);
}

void SocketFile::remember() {
    struct stat status {};
    if (::lstat(socketPath.c_str(), &status) != 0) {
        fail("cannot listen at " + socketPath);
    }
    device = status.st_dev;
    inode = status.st_ino;
}

SocketFile::~SocketFile() {
    remove();
}

void SocketFile::remove() {
    struct stat status {};
    if (!removed && ::lstat(socketPath.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode) {
        ::unlink(socketPath.c_str());
    }
    removed = true;
}

bool SocketFile::leave() {
    return !std::exchange(removed, true);
}

int SocketFile::takeDescriptor() {
    return descriptor.release();
}

}  // namespace SettingsHandlerKit
