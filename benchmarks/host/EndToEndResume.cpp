#include "host/EndToEndResume.h"

#include <chrono>
#include <stdexcept>

namespace Benchmarks {

namespace {

std::string helloRequest(const std::string& members) {
    return R"({"messageId":"h","hello":{)" + members + "}}";
}

/// The name of the run, as the reply to a hello tells it.
std::string runIn(std::string_view reply) {
    const std::string_view member = R"("run":")";
    const std::size_t start = reply.find(member);
    if (start == std::string_view::npos) {
        throw std::runtime_error("not the reply to a hello: " + std::string(reply));
    }
    const std::size_t value = start + member.size();
    return std::string(reply.substr(value, reply.find('"', value) - value));
}

}  // namespace

void measureResume(Round& round, const Effort& effort) {
    HostServer host(Storage::MEMORY);
    const auto client = host.connect(Listener::UNIX_SOCKET);
    client->send(client->bytesOf(helloRequest("")));
    const std::string run = runIn(client->receive());
    Changes changes;
    for (unsigned number = 0; number < missedEvents; ++number) {
        exchange(*client, client->bytesOf(changes.next()), changes.wanted());
    }
    const std::string resume = client->bytesOf(helloRequest(R"("resume":{"run":")" + run + R"(","sequence":0})"));
    Seen& seen = round[resumeName];
    const double before = host.processorMicroseconds();
    for (int number = 0; number < effort.resumes; ++number) {
        const auto start = std::chrono::steady_clock::now();
        client->send(resume);
        for (unsigned event = 0; event < missedEvents; ++event) {
            client->receive();
        }
        const std::string_view reply = client->receive();
        const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - start;
        if (reply.find(R"("missed":false)") == std::string_view::npos) {
            throw std::runtime_error("not the end of a resume: " + std::string(reply));
        }
        seen.latencies.push_back(took.count());
    }
    seen.processorTime += host.processorMicroseconds() - before;
}

}  // namespace Benchmarks
