#include "wire/HostClients.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace WireTests {

namespace {

TestSupport::Witness schemasOf(Listener listener) {
    return [listener](const std::string& frame) { expectValid(listener, frame); };
}

}  // namespace

void expectValid(Listener listener, const std::string& frame) {
    const auto fault = Schemas::ofTheWire().faultOfHostFrame(listener, frame);
    if (fault) {
        ADD_FAILURE() << "the host broke the protocol: " << *fault;
    }
}

TestSupport::HttpResponse healthOf(std::uint16_t port) {
    auto response = TestSupport::httpGet(port, "/healthz");
    if (response.status != 0) {
        EXPECT_EQ(Schemas::ofTheWire().faultOf("health", response.body).value_or(""), "");
    }
    return response;
}

Listener listenerOf(const std::string& address) {
    const std::string path = address.substr(0, address.find('?'));
    return std::filesystem::path(path).filename().string().find("device") == std::string::npos ? Listener::SETTINGS
                                                                                               : Listener::DEVICE;
}

HostClient::HostClient(const std::string& path, Listener listener) : LineClient(path, schemasOf(listener)) {}

HostWebSocket::HostWebSocket(std::uint16_t port, const std::string& target, const std::string& protocol,
                             const std::vector<std::string>& headers, int receiveBuffer)
    : WebSocket(port, target, protocol, headers, receiveBuffer) {
    witness = schemasOf(listenerOf(target));
}

}  // namespace WireTests
