#include "Worker.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

[[noreturn]] void runAsProcess(const std::function<void(int)>& work, int socket) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        work(socket);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        ::_exit(EXIT_FAILURE);
    }
    // What the other process owns is not ours to destroy.
    ::_exit(EXIT_SUCCESS);
}

}  // namespace

Worker::Worker(const std::function<void(int)>& work) {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::runtime_error("cannot make a pair of sockets");
    }
    process = ::fork();
    if (process < 0) {
        throw std::runtime_error("cannot start a process");
    }
    if (process == 0) {
        ::close(ends[0]);
        runAsProcess(work, ends[1]);
    }
    ::close(ends[1]);
    socket = ends[0];
    const timeval waitTimeout{60, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &waitTimeout, sizeof(waitTimeout));
}

Worker::~Worker() {
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    ::close(socket);
}

void sendMessage(int socket, const void* data, std::size_t size) {
    if (::send(socket, data, size, MSG_NOSIGNAL) != static_cast<ssize_t>(size)) {
        throw std::runtime_error("a process of the benchmark is gone");
    }
}

void receiveMessage(int socket, void* data, std::size_t size) {
    if (::recv(socket, data, size, 0) != static_cast<ssize_t>(size)) {
        throw std::runtime_error("a process of the benchmark is gone, or sees nothing");
    }
}

}  // namespace Benchmarks
