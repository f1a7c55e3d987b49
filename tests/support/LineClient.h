#pragma once

#include <memory>
#include <string>

#include "support/LineReader.h"
#include "support/Witness.h"

namespace TestSupport {

/// A client of a Unix socket that exchanges lines.
class LineClient {
public:
    /// Connects; throws when nobody listens.
    explicit LineClient(const std::string& path, Witness witnessOfLines = nullptr);
    ~LineClient();

    LineClient(const LineClient&) = delete;
    LineClient& operator=(const LineClient&) = delete;

    /// Sends all of `bytes`. Returns: false when the other side is gone.
    bool send(const std::string& bytes);
    bool sendLine(const std::string& line) { return send(line + "\n"); }

    std::optional<std::string> receiveLine(std::chrono::milliseconds deadline = waitTimeout);
    /// Everything until the other side closes.
    std::string receiveAll(std::chrono::milliseconds deadline = waitTimeout);
    bool closedByPeer() const { return reader.atEnd(); }

    /// Closes the sending side.
    void finishSending();
    void close();
    int descriptor() const { return socket; }

private:
    int socket;
    LineReader reader;
    Witness witness;
};

}  // namespace TestSupport
