#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/client/FrameConnection.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

enum class Listener { UNIX_SOCKET, WEB_SOCKET };

/// Where a server keeps its database: at a folder of the disk, or in memory.
enum class Storage { DISK, MEMORY };

/// Keeps this process, and the servers that it starts afterwards, on the processor that it runs on. A request and its
/// answer then cost what both sides compute; otherwise one of two servers may have to wake a sleeping processor each
/// time and the other not, as the scheduler likes.
void stayOnOneProcessor();

/// A server in its own process, with its own folders, that goes away with the object. Its log goes to
/// /dev/null.
class Server {
public:
    virtual ~Server() = default;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    virtual std::unique_ptr<FrameConnection> connect(Listener listener) = 0;

    /// Processor time used until now, to the nanosecond, in microseconds.
    double processorMicroseconds() const;
    pid_t pid() const { return process->pid(); }

protected:
    explicit Server(Storage storage);

    /// Starts it and waits for the line that says it is ready. Returns: the line.
    std::string start(const std::vector<std::string>& arguments);
    std::string database() const { return storageFolder / "settings.db"; }
    std::string socket() const { return socketFolder / "settings.sock"; }
    std::string otherSocket() const { return socketFolder / "device.sock"; }

private:
    TestSupport::TemporaryDirectory storageFolder;
    TestSupport::TemporaryDirectory socketFolder;
    std::unique_ptr<TestSupport::ChildProcess> process;
};

/// settings-host with its web port.
class HostServer : public Server {
public:
    /// Log lines of `logLevel` and more are formatted and written.
    explicit HostServer(Storage storage, int logLevel = 3);

    std::unique_ptr<FrameConnection> connect(Listener listener) override;

private:
    std::uint16_t port = 0;
    std::string key;
};

}  // namespace Benchmarks
