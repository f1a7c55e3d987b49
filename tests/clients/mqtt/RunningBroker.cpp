#include "RunningBroker.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <pwd.h>
#include <unistd.h>

#include "support/ConnectedSocket.h"
#include "support/Files.h"
#include "support/ListeningSocket.h"

namespace MqttTest {

namespace {

void runOrThrow(const std::vector<std::string>& command) {
    const auto finished = TestSupport::run(command);
    if (finished.status != 0) {
        throw std::runtime_error(command[0] + " " + command[1] + ": " + finished.errors);
    }
}

}  // namespace

RunningBroker::RunningBroker(const std::vector<std::string>& configuration)
    : number(std::to_string(TestSupport::listeningTcpSocket("127.0.0.1").port())) {
    std::ofstream file(folder / "mosquitto.conf");
    // Otherwise it becomes another user when root starts it, who may not read the test's files.
    file << "user " << ::getpwuid(::geteuid())->pw_name << "\nlog_dest file " << folder / "log"
         << "\nlog_type all\n"
         << "listener " << number << " 127.0.0.1\n";
    for (const auto& line : configuration) {
        file << line << '\n';
    }
    file.close();
    start();
}

void RunningBroker::start() {
    process.emplace(std::vector<std::string>{MOSQUITTO_PROGRAM, "-c", folder / "mosquitto.conf"});
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    for (;;) {
        try {
            ::close(TestSupport::connectedTcpSocket(static_cast<std::uint16_t>(std::stoi(number))));
            return;
        } catch (const std::runtime_error&) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw std::runtime_error("mosquitto does not start: " + log() + process->errors().readAll());
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
}

void RunningBroker::kill() {
    process->sendSignal(SIGKILL);
    process->wait();
}

std::string RunningBroker::log() const {
    return TestSupport::contentOf(folder / "log");
}

Subscriber::Subscriber(const std::string& port, const std::vector<std::string>& topics,
                       const std::vector<std::string>& options)
    : process([&] {
          std::vector<std::string> command{"stdbuf", "-oL", "mosquitto_sub", "-d", "-v", "-q",
                                           "1",      "-h",  "127.0.0.1",     "-p", port};
          command.insert(command.end(), options.begin(), options.end());
          for (const auto& topic : topics) {
              command.insert(command.end(), {"-t", topic});
          }
          return command;
      }()) {
    for (;;) {
        const auto line = process.output().readLine();
        if (!line) {
            throw std::runtime_error("mosquitto_sub: " + process.errors().readAll());
        }
        if (line->rfind("Subscribed ", 0) == 0) {
            return;
        }
    }
}

std::string Subscriber::next() {
    for (;;) {
        const auto line = process.output().readLine();
        if (!line) {
            throw std::runtime_error("no message came; mosquitto_sub: " + process.errors().readAll());
        }
        if (line->rfind("Client ", 0) != 0 && line->rfind("Subscribed ", 0) != 0) {
            return *line;
        }
    }
}

std::vector<std::string> Subscriber::until(const std::string& start) {
    std::vector<std::string> messages;
    try {
        do {
            messages.push_back(next());
        } while (messages.back().rfind(start, 0) != 0);
    } catch (const std::runtime_error& error) {
        std::string seen;
        for (const auto& message : messages) {
            seen += "\n" + message;
        }
        throw std::runtime_error("waited for " + start + ": " + error.what() + "; came:" + seen);
    }
    return messages;
}

std::string Subscriber::await(const std::string& start) {
    return until(start).back();
}

void publish(const std::string& port, const std::string& topic, const std::string& payload,
             const std::vector<std::string>& options) {
    std::vector<std::string> command{"mosquitto_pub", "-q", "1", "-h", "127.0.0.1", "-p", port, "-t", topic};
    TestSupport::TemporaryDirectory folder;
    if (payload.empty()) {
        command.emplace_back("-n");
    } else {
        // Not as an argument: it may be long, or hold any byte.
        std::ofstream(folder / "payload") << payload;
        command.insert(command.end(), {"-f", folder / "payload"});
    }
    command.insert(command.end(), options.begin(), options.end());
    runOrThrow(command);
}

Authority::Authority() {
    runOrThrow({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days",
                "2", "-subj", "/CN=authority", "-keyout", folder / "ca.key", "-out", folder / "ca.pem"});
}

void Authority::issue(const std::string& name, int days) const {
    const std::string request = folder / (name + ".csr");
    runOrThrow({"openssl", "req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj",
                "/CN=" + name, "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", folder / (name + ".key"), "-out",
                request});
    runOrThrow({"openssl", "x509", "-req", "-in", request, "-CA", folder / "ca.pem", "-CAkey", folder / "ca.key",
                "-CAcreateserial", "-copy_extensions", "copy", "-days", std::to_string(days), "-out",
                folder / (name + ".pem")});
}

}  // namespace MqttTest
