#include "host/EndToEndRound.h"

#include "host/EndToEndServers.h"

namespace Benchmarks {

namespace {

constexpr const char* change = "/set until event";
constexpr const char* read = "/get all until reply";
/// Servers that are compared take turns so often, since a busy machine is slower for a while.
constexpr int turns = 8;
constexpr int warmUp = 10;

std::string withClients(std::size_t clients) {
    return "/" + std::to_string(clients) + (clients == 1 ? " client" : " clients");
}

/// As large as the event that the host sends for one of the changes.
std::string eventLikeFrame() {
    return R"({"type":25,"messageId":"host-1795243863510-100","timestamp":1795243863837,"sequence":100,"origin":)"
           R"("socket","payload":{"settingDBId":"deviceName","from":"Living room 100","to":"Living room 101"}})";
}

void measureFloorCrowd(Round& round, Listener listener, std::size_t clients, const Effort& effort) {
    FanOutServer floor(listener, clients);
    Audience audience(floor, listener, clients);
    audience.measure(round[std::string("bare send/") + nameOf(listener) + withClients(clients)],
                     effort.exchangesWithCrowd, eventLikeFrame, [] { return "deviceName"; });
}

}  // namespace

const char* nameOf(Listener listener) {
    return listener == Listener::UNIX_SOCKET ? "unix" : "web";
}

const char* nameOf(Storage storage) {
    return storage == Storage::DISK ? "disk" : "memory";
}

Audience::Audience(Server& itsServer, Listener listener, std::size_t count) : server(itsServer) {
    while (clients.size() < count) {
        clients.push_back(server.connect(listener));
    }
}

void Audience::measure(Seen& seen, int count, const std::function<std::string()>& nextRequest,
                       const std::function<std::string()>& wanted) {
    double before = 0;
    for (int number = -warmUp; number < count; ++number) {
        if (number == 0) {
            before = server.processorMicroseconds();
        }
        const std::string bytes = clients.front()->bytesOf(nextRequest());
        const double latency = exchange(*clients.front(), bytes, wanted());
        if (number >= 0) {
            seen.latencies.push_back(latency);
        }
        for (std::size_t other = 1; other < clients.size(); ++other) {
            clients[other]->receive();
        }
    }
    seen.processorTime += server.processorMicroseconds() - before;
}

void Audience::measureChanges(Seen& seen, int count) {
    measure(
        seen, count, [this] { return changes.next(); }, [this] { return changes.wanted(); });
}

void Audience::measureReads(Seen& seen, int count) {
    measure(
        seen, count, [] { return std::string(getAllRequest); }, [] { return std::string(getAllReply); });
}

void compareWithEcho(Round& round, Storage storage, Listener listener, const Effort& effort) {
    HostServer host(storage);
    EchoServer echo(storage);
    Audience authenticated(host, listener, 1);
    Audience echoGuests(echo, listener, 1);
    const std::string kind = std::string("/") + nameOf(listener) + "/" + nameOf(storage);
    Seen& changed = round["host" + kind + change];
    Seen& wasRead = round["host" + kind + read];
    Seen& echoed = round["echo and upsert" + kind];
    const int count = storage == Storage::DISK ? effort.exchangesWithDisk : effort.exchanges;
    for (int turn = 0; turn < turns; ++turn) {
        authenticated.measureChanges(changed, count / turns);
        echoGuests.measureChanges(echoed, count / turns);
        authenticated.measureReads(wasRead, effort.exchanges / turns);
    }
}

void measureWithLog(Round& round, Listener listener, const Effort& effort) {
    HostServer host(Storage::MEMORY, 1);
    Audience authenticated(host, listener, 1);
    const std::string kind = std::string("host with log/") + nameOf(listener) + "/" + nameOf(Storage::MEMORY);
    authenticated.measureChanges(round[kind + change], effort.exchanges / turns);
    authenticated.measureReads(round[kind + read], effort.exchanges / turns);
}

void measureCrowds(Round& round, Storage storage, Listener listener, const Effort& effort) {
    const std::string kind = std::string("host/") + nameOf(listener) + "/" + nameOf(storage) + change;
    const int count = storage == Storage::DISK ? effort.exchangesWithDisk / turns : effort.exchangesWithCrowd;
    for (const std::size_t clients : effort.crowds) {
        HostServer host(storage);
        Audience audience(host, listener, clients);
        audience.measureChanges(round[kind + withClients(clients)], count);
        if (storage == Storage::MEMORY) {
            measureFloorCrowd(round, listener, clients, effort);
        }
    }
}

}  // namespace Benchmarks
