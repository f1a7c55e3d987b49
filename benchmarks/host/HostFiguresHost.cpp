#include "HostFiguresHost.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "support/Texts.h"

namespace Benchmarks {

namespace {

constexpr std::size_t requestsAtOnce = 100;

Words joined(Words front, const Words& back) {
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

std::string between(const std::string& text, const std::string& before, char after) {
    const std::size_t place = text.find(before);
    if (place == std::string::npos) {
        throw std::runtime_error("the host has no web port: " + text);
    }
    const std::size_t start = place + before.size();
    return text.substr(start, text.find(after, start) - start);
}

std::uint16_t portOf(const std::string& readyLine) {
    return static_cast<std::uint16_t>(std::stoi(between(readyLine, "127.0.0.1:", '/')));
}

}  // namespace

Words HostFolder::command(bool withWeb) const {
    Words words{SETTINGS_HOST, "--storage",       folder / "settings.db", "--socket",
                socket(),      "--device-socket", file("device.sock")};
    if (!withWeb) {
        words.emplace_back("--no-web");
        return words;
    }
    const Words web{"--listen", "127.0.0.1:0"};
    // Pages that were built are part of what a host holds.
    return std::filesystem::exists(SETTINGS_PAGES "/index.html")
               ? joined(joined(words, web), {"--pages", SETTINGS_PAGES})
               : joined(words, web);
}

MeasuredHost::MeasuredHost(const HostFolder& folder, bool withWeb, const Words& prefix)
    : begin(std::chrono::steady_clock::now()), process(joined(prefix, folder.command(withWeb))) {
    const auto line = process.output().readLine();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - begin;
    if (!line) {
        throw std::runtime_error("the host did not start: " + process.errors().readAll(std::chrono::seconds(1)));
    }
    ready = *line;
    milliseconds = passed.count();
}

MeasuredHost::~MeasuredHost() {
    process.sendSignal(SIGTERM);
    process.wait();
}

std::unique_ptr<TestSupport::WebSocket> MeasuredHost::page() const {
    auto socket = std::make_unique<TestSupport::WebSocket>(
        portOf(ready), "/settings?key=" + between(ready, "key=", ' '), "settings.v1");
    if (socket->status() != 101) {
        throw std::runtime_error("the host let no page in");
    }
    return socket;
}

void MeasuredHost::scrape() const {
    if (TestSupport::httpGet(portOf(ready), "/metrics").status != 200) {
        throw std::runtime_error("the host gave no figures");
    }
}

std::size_t Writer::send(const Words& requests) {
    std::string text;
    for (const auto& request : requests) {
        text += request + "\n";
    }
    connection.send(text + R"({"type":18,"messageId":"done"})" + "\n");
    std::size_t events = 0;
    for (;;) {
        const auto line = connection.receiveLine();
        if (!line) {
            throw std::runtime_error("the host does not answer");
        }
        if (line->find(R"("type":18)") != std::string::npos) {
            return events;
        }
        events += line->find(R"("type":25)") != std::string::npos ? 1 : 0;
    }
}

void Writer::write(std::size_t first, std::size_t last) {
    static const std::array<std::string, 4> keys{"deviceName", "captionsStyles", "captionsFontSize", "companionDevice"};
    for (std::size_t number = first; number < last;) {
        Words requests;
        for (; number < last && requests.size() < requestsAtOnce; ++number) {
            requests.push_back(setRequest(keys[number % keys.size()], "value " + std::to_string(number), "1"));
        }
        if (send(requests) != requests.size()) {
            throw std::runtime_error("a change was not accepted");
        }
    }
}

}  // namespace Benchmarks
