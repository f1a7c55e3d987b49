#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "support/LineClient.h"

namespace Endurance {

/// A client of the settings socket that sends pipelined batches of everything a client may send, good and bad, and
/// checks that each question gets its own answer, in order, and that no event is lost between them.
class SoakClient {
public:
    /// Keys that this client alone writes, besides those that all share.
    static constexpr std::uint64_t ownKeys = 50;

    SoakClient(std::string socketPath, int number);

    /// Sends the batch `round`, in which every value is one that was not sent before. Returns: how many requests.
    std::uint64_t sendBatch(std::uint64_t round);

    /// Reads until the batch is answered. Errors: throws `std::runtime_error` on a wrong, missing or late answer.
    void receiveAnswers();

    /// Clears the settings of all clients, which may have nothing under way. Returns: how many requests that took.
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
    /// How the answers must begin that have not come yet.
    std::deque<std::string> expected;
    /// 0: none seen on this connection.
    std::uint64_t lastSequence = 0;
    std::uint64_t eventCount = 0;
};

}  // namespace Endurance
