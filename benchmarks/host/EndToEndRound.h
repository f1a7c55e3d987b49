#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/client/Exchange.h"
#include "host/client/Server.h"

namespace Benchmarks {

/// What was seen of one kind of exchange in one round.
struct Seen {
    /// One for each exchange, in microseconds.
    std::vector<double> latencies;
    /// Processor time that the server used for them, in microseconds.
    double processorTime = 0;

    double processorTimeOfOne() const { return processorTime / static_cast<double>(latencies.size()); }
};

/// By name: "host/unix/memory/set until event".
using Round = std::map<std::string, Seen>;

struct Effort {
    /// Exchanges of a round; changes that wait for the disk are fewer.
    int exchanges = 1000;
    int exchangesWithDisk = 80;
    int exchangesWithCrowd = 200;
    /// Each of 1,000 events.
    int resumes = 20;
    std::vector<std::size_t> crowds{1, 4, 16, 64, 128};
};

/// A server with connected clients, of which the first asks and all receive.
class Audience {
public:
    Audience(Server& itsServer, Listener listener, std::size_t clients);

    /// Lets the first client do `count` exchanges and adds what was seen to `seen`.
    void measure(Seen& seen, int count, const std::function<std::string()>& nextRequest,
                 const std::function<std::string()>& wanted);
    void measureChanges(Seen& seen, int count);
    void measureReads(Seen& seen, int count);

private:
    Server& server;
    std::vector<std::unique_ptr<FrameConnection>> clients;
    Changes changes;
};

const char* nameOf(Listener listener);
const char* nameOf(Storage storage);

/// The host and the echo with one client each, taking turns.
void compareWithEcho(Round& round, Storage storage, Listener listener, const Effort& effort);
/// The host with its log at level 1, which is its default.
void measureWithLog(Round& round, Listener listener, const Effort& effort);
/// The host with more and more clients, and the floor with as many.
void measureCrowds(Round& round, Storage storage, Listener listener, const Effort& effort);

}  // namespace Benchmarks
