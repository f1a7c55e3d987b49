#include "fleet/BrokerProcess.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <pwd.h>
#include <unistd.h>

#include "support/ConnectedSocket.h"
#include "support/ListeningSocket.h"

namespace Benchmarks {

namespace {

bool accepts(int port) {
    try {
        ::close(TestSupport::connectedTcpSocket(static_cast<std::uint16_t>(port)));
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

}  // namespace

BrokerProcess::BrokerProcess() : number(TestSupport::listeningTcpSocket("127.0.0.1").port()) {
    // As another user it would outlive this process. A subscriber of all televisions has as many messages waiting as
    // there are televisions.
    std::ofstream(folder / "mosquitto.conf")
        << "user " << ::getpwuid(::geteuid())->pw_name << "\nlistener " << number << " 127.0.0.1\n"
        << "allow_anonymous true\n"
           "persistence false\n"
           "log_dest none\n"
           "max_queued_messages 0\n"
           "set_tcp_nodelay true\n";
    start();
}

void BrokerProcess::start() {
    process = std::make_unique<TestSupport::ChildProcess>(
        std::vector<std::string>{MOSQUITTO_PROGRAM, "-c", folder / "mosquitto.conf"});
    for (int attempt = 0; !accepts(number); ++attempt) {
        if (attempt == 2000) {
            throw std::runtime_error("the broker does not start");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void BrokerProcess::killAndRestart() {
    process->sendSignal(SIGKILL);
    process->wait();
    start();
}

}  // namespace Benchmarks
