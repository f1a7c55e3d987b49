#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "support/LineClient.h"

namespace Endurance {

/// A client of the settings socket that sends pipelined batches of all kinds of requests, valid and invalid, and checks
/// that every reply arrives in order and no event is lost.
class SoakClient {
public:
    /// The number of keys that only this client writes.
    static constexpr std::uint64_t ownKeys = 50;

    SoakClient(std::string socketPath, int number);

    /// Sends the batch `round`, with values that were not sent before. Returns: the number of requests.
    std::uint64_t sendBatch(std::uint64_t round);

    /// Reads all replies of the batch. Errors: `std::runtime_error` for a wrong, missing or late reply.
    void receiveAnswers();

    /// Logs out; no client may have a batch in progress. Returns: the number of requests.
    std::uint64_t logOut();

    void reconnect();

    std::uint64_t events() const { return eventCount; }

private:
    void add(const std::string& request);
    void addSet(const std::string& key, const std::string& value, int timestamp = 1);
    void addChanges(const std::string& mark, std::uint64_t round);
    void addRefused(const std::string& mark);
    void addQuestions(const std::string& mark, const std::string& ownKey, const std::string& ownValue);
    void checkEvent(const std::string& line);

    std::string path;
    std::string name;
    std::unique_ptr<TestSupport::LineClient> connection;
    std::string batch;
    std::uint64_t batchSize = 0;
    /// The beginnings of the replies that are still expected.
    std::deque<std::string> expected;
    /// 0: no event on this connection yet.
    std::uint64_t lastSequence = 0;
    std::uint64_t eventCount = 0;
};

}  // namespace Endurance
