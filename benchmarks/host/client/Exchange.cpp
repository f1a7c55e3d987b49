#include "host/client/Exchange.h"

#include <chrono>
#include <stdexcept>

#include "support/Texts.h"

namespace Benchmarks {

const char* const getAllRequest = R"({"type":7,"messageId":"g","payload":{"settings":[]}})";
const char* const getAllReply = R"("settings":{"captionsEnabled":)";

double exchange(FrameConnection& connection, const std::string& bytes, const std::string& part) {
    const auto start = std::chrono::steady_clock::now();
    connection.send(bytes);
    const std::string_view answer = connection.receive();
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - start;
    if (answer.find(part) == std::string_view::npos) {
        throw std::runtime_error("not the answer to " + bytes + ": " + std::string(answer));
    }
    return took.count();
}

Changes::Changes()
    : number(std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
                 .count()) {}

std::string Changes::next() {
    ++number;
    value = "Living room " + std::to_string(number % 1000);
    return setRequest("deviceName", value, std::to_string(number));
}

}  // namespace Benchmarks
