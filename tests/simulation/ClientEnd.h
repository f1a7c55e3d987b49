#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulation/Link.h"
#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// The client's end: lines, or a WebSocket.
class ClientEnd : public Connection {
public:
    ClientEnd(std::size_t itsNumber, Kind itsKind, std::shared_ptr<Link> itsLink)
        : ownNumber(itsNumber), ownKind(itsKind), link(std::move(itsLink)) {}

    std::size_t number() const override { return ownNumber; }
    Kind kind() const override { return ownKind; }
    void send(const std::string& frame) override;
    void sendBytes(const std::string& bytes) override;
    std::vector<std::string> take() override { return std::exchange(frames, {}); }
    void setReading(bool reads) override { link->clientReads = reads; }
    void endOutput() override { link->inputOver = true; }
    void close() override;
    bool isOpen() const override { return !link->clientGone && !isClosedByHost(); }
    bool isClosedByHost() const override {
        return (link->hostGone || link->outputOver) && link->toClient.empty() && !link->clientGone;
    }
    int closeStatus() const override { return webSocketStatus; }

    /// The request that opens a page's WebSocket, before all else.
    void openWebSocket(const std::string& pageAddress);
    bool canReceive() const { return link->clientReads && !link->clientGone && !link->toClient.empty(); }
    /// Takes the first `size` bytes that wait. Returns: them.
    std::string receive(std::size_t size);

private:
    bool takeFrame();
    bool takeLine();
    bool takeHead();
    bool takeMessage();
    void messageArrived(int kind, bool isFinal, std::string payload);

    const std::size_t ownNumber;
    const Kind ownKind;
    const std::shared_ptr<Link> link;
    std::string input;
    std::vector<std::string> frames;
    /// The beginning of a fragmented message.
    std::string fragments;
    bool isUpgraded = false;
    int webSocketStatus = 0;
};

}  // namespace SettingsSimulation
