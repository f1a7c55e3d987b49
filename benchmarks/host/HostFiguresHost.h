#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/LineClient.h"
#include "support/TemporaryDirectory.h"
#include "support/WebClient.h"

namespace Benchmarks {

using Words = std::vector<std::string>;

/// Where a host keeps its database and sockets; more than one host can use it, one after the other.
class HostFolder {
public:
    explicit HostFolder(const std::filesystem::path& parent) : folder(parent) {}

    std::string socket() const { return folder / "settings.sock"; }
    std::string file(const std::string& name) const { return folder / name; }
    /// The command line of a host in this folder.
    Words command(bool withWeb) const;

private:
    TestSupport::TemporaryDirectory folder;
};

/// A host that serves. Stopped like a service with the object.
class MeasuredHost {
public:
    /// Starts the host and waits for the line that says it is ready. `prefix` is what stands in front of it.
    MeasuredHost(const HostFolder& folder, bool withWeb, const Words& prefix = {});
    ~MeasuredHost();

    MeasuredHost(const MeasuredHost&) = delete;
    MeasuredHost& operator=(const MeasuredHost&) = delete;

    pid_t pid() const { return process.pid(); }
    /// From just before the program was started to the line that says it is ready.
    double startMilliseconds() const { return milliseconds; }

    std::unique_ptr<TestSupport::WebSocket> page() const;
    /// Has the figures at /metrics written and sent once.
    void scrape() const;

private:
    std::chrono::steady_clock::time_point begin;
    TestSupport::ChildProcess process;
    std::string ready;
    double milliseconds = 0;
};

/// A client of the settings socket that makes changes and waits for what comes of them.
class Writer {
public:
    explicit Writer(const HostFolder& folder) : connection(folder.socket()) {}

    /// Sends the requests at once and waits until all are handled. Returns: how many events came.
    std::size_t send(const Words& requests);
    /// Writes the values from `first` up to `last`, none like another, `last` left out. Errors: throws when one was
    /// not accepted.
    void write(std::size_t first, std::size_t last);

private:
    TestSupport::LineClient connection;
};

}  // namespace Benchmarks
