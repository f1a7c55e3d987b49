#pragma once

#include <cstddef>
#include <functional>

#include <sys/types.h>

namespace Benchmarks {

/// A process forked from this one, which must not have threads. Killed with the object, and when this process ends.
class Worker {
public:
    /// `work` runs in the new process, with its end of a pair of sockets that keep messages apart.
    explicit Worker(const std::function<void(int)>& work);
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// This process's end.
    int descriptor() const { return socket; }

private:
    pid_t process = -1;
    int socket = -1;
};

/// Sends one message. Throws when the other side is gone.
void sendMessage(int socket, const void* data, std::size_t size);
/// Receives one message of exactly `size` bytes. Throws when the other side is gone; on the side of the worker's owner
/// also when nothing comes for a minute.
void receiveMessage(int socket, void* data, std::size_t size);

}  // namespace Benchmarks
