#include "simulation/Link.h"

#include <algorithm>
#include <utility>

namespace SettingsSimulation {

namespace {

/// What a socket reads at once.
constexpr std::size_t mostReadAtOnce = 65536;

/// Most often all; else one byte, half of them, or any number.
std::size_t pieceOf(std::size_t size, Choices& choices) {
    constexpr std::size_t wholeOnes = 5;
    switch (size < 2 ? 0 : choices.pick(wholeOnes + 3, "how much arrives")) {
        case wholeOnes:
            return 1;
        case wholeOnes + 1:
            return size / 2;
        case wholeOnes + 2:
            return 1 + choices.pick(size, "how many bytes arrive");
        default:
            return size;
    }
}

}  // namespace

std::shared_ptr<MemoryStream> MemoryStream::open(SettingsHandlerKit::EventLoop& loop, std::shared_ptr<Link> link) {
    auto stream = std::make_shared<MemoryStream>();
    stream->link = std::move(link);
    uv_async_init(loop.handle(), stream->get(), nullptr);
    stream->opened(stream);
    return stream;
}

void MemoryStream::give(std::size_t size) {
    const std::string bytes = link->toHost.substr(0, size);
    link->toHost.erase(0, size);
    if (user != nullptr) {
        user->received(bytes.data(), bytes.size());
    }
}

void MemoryStream::read(Choices& choices) {
    const auto self = shared();
    if (link->toHost.empty()) {
        endTold = true;
        if (user != nullptr) {
            user->inputEnded();
        }
        return;
    }
    const std::size_t room = user == nullptr ? mostReadAtOnce : std::min(mostReadAtOnce, user->room());
    give(pieceOf(std::min(room, link->toHost.size()), choices));
}

bool MemoryStream::readNow() {
    const auto self = shared();
    if (!canRead()) {
        return false;
    }
    PlainChoices all;
    read(all);
    return true;
}

void MemoryStream::write(const std::string& bytes) {
    if (isClosed || link->hostGone) {
        return;
    }
    const std::size_t taken = link->clientGone ? 0 : std::min(bytes.size(), link->roomLeft());
    link->toClient.append(bytes, 0, taken);
    rest = bytes.substr(taken);
}

void MemoryStream::writeRest() {
    const auto self = shared();
    const bool isLost = link->clientGone;
    const std::size_t taken = isLost ? rest.size() : std::min(rest.size(), link->roomLeft());
    if (!isLost) {
        link->toClient.append(rest, 0, taken);
    }
    rest.erase(0, taken);
    if (rest.empty() && user != nullptr) {
        user->written(!isLost);
    }
}

void MemoryStream::endOutput() {
    if (!isClosed) {
        link->outputOver = true;
    }
}

void MemoryStream::close() {
    if (!std::exchange(isClosed, true)) {
        rest.clear();
        link->hostGone = true;
        closeHandle();
    }
}

void MemoryStream::closed() {
    if (user != nullptr) {
        std::exchange(user, nullptr)->closed();
    }
}

}  // namespace SettingsSimulation
