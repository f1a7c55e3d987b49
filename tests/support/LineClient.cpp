#include "support/LineClient.h"

#include <utility>

#include <sys/socket.h>
#include <unistd.h>

#include "support/ConnectedSocket.h"
#include "support/SendAll.h"

namespace TestSupport {

LineClient::LineClient(const std::string& path, Witness witnessOfLines)
    : socket(connectedUnixSocket(path)), reader(socket), witness(std::move(witnessOfLines)) {}

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
