#include "support/LineClient.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/SendAll.h"

namespace TestSupport {

namespace {

int connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("socket path too long: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {  // NOLINT
        ::close(socket);
        throw std::runtime_error("cannot connect to " + path + ": " + std::strerror(errno));
    }
    return socket;
}

}  // namespace

LineClient::LineClient(const std::string& path, Witness witnessOfLines)
    : socket(connectTo(path)), reader(socket), witness(std::move(witnessOfLines)) {}

LineClient::~LineClient() {
    close();
}

bool LineClient::send(const std::string& bytes) {
    return sendAll(socket, bytes);
}

std::optional<std::string> LineClient::receiveLine(std::chrono::milliseconds deadline) {
    auto line = reader.readLine(deadline);
    if (line && witness) {
        witness(*line);
    }
    return line;
}

std::string LineClient::receiveAll(std::chrono::milliseconds deadline) {
    std::string all = reader.readAll(deadline);
    if (witness) {
        std::size_t start = 0;
        for (auto end = all.find('\n'); end != std::string::npos; end = all.find('\n', start)) {
            witness(all.substr(start, end - start));
            start = end + 1;
        }
    }
    return all;
}

void LineClient::finishSending() {
    ::shutdown(socket, SHUT_WR);
}

void LineClient::close() {
    if (socket >= 0) {
        ::close(socket);
        socket = -1;
    }
}

}  // namespace TestSupport
