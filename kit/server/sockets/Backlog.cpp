#include "server/sockets/Backlog.h"

#include <algorithm>
#include <utility>

#include <malloc.h>

#include "server/sockets/ListenerLimits.h"

namespace SettingsHandlerKit {

namespace {

/// An entry in the queue of one client.
constexpr std::size_t placeOverhead = sizeof(std::shared_ptr<const std::string>);
/// After so many bytes were released, free memory of the heap goes back to the system: the first when nothing waits.
constexpr std::size_t worthGivingBackAtRest = 1024UL * 1024UL;
constexpr std::size_t worthGivingBack = 4UL * worthGivingBackAtRest;

}  // namespace

/// A quarter more, for the fragmentation of the heap and for what the database keeps besides.
std::size_t Backlog::costOf(std::size_t bytes) {
    return bytes + bytes / 4;
}

void Backlog::hold(const std::string& frame) {
    if (frames[&frame]++ == 0) {
        total += costOf(frame.size()) + frameOverhead;
    }
    total += placeOverhead;
}

void Backlog::release(const std::string& frame) {
    const auto entry = frames.find(&frame);
    std::size_t cost = placeOverhead;
    if (--entry->second == 0) {
        frames.erase(entry);
        cost += costOf(frame.size()) + frameOverhead;
    }
    total -= cost;
    released += cost;
}

void Backlog::countInput(std::size_t before, std::size_t now) {
    total += costOf(now);
    total -= costOf(before);
    released += before > now ? before - now : 0;
}

void Backlog::makeRoom() {
    while (total > limit) {
        const auto waiting = [](const ClientBacklog* client) { return client->unreadBytes + client->inputBytes; };
        const auto most = std::max_element(clients.begin(), clients.end(), [&](const auto* one, const auto* other) {
            return waiting(one) < waiting(other);
        });
        if (most == clients.end() || waiting(*most) == 0) {
            return;
        }
        (*most)->overflow();
    }
}

void Backlog::giveMemoryBack() {
    if (released >= (total == 0 ? worthGivingBackAtRest : worthGivingBack)) {
        released = 0;
        ::malloc_trim(0);
    }
}

ClientBacklog::ClientBacklog(std::shared_ptr<Backlog> backlogOfAll, std::function<void()> dropClient)
    : all(std::move(backlogOfAll)), drop(std::move(dropClient)) {
    all->clients.push_back(this);
}

ClientBacklog::~ClientBacklog() {
    clear();
    all->clients.erase(std::find(all->clients.begin(), all->clients.end(), this));
}

void ClientBacklog::push(const std::shared_ptr<const std::string>& frame) {
    const std::size_t behindFirst = empty() ? 0 : unreadBytes - frames.front()->size();
    if (behindFirst > maximumWaiting) {
        overflow();
        return;
    }
    frames.push_back(frame);
    unreadBytes += frame->size();
    all->hold(*frame);
    all->makeRoom();
}

void ClientBacklog::pop() {
    unreadBytes -= frames.front()->size();
    all->release(*frames.front());
    frames.pop_front();
    all->giveMemoryBack();
}

void ClientBacklog::setInput(std::size_t bytes) {
    if (bytes != inputBytes) {
        all->countInput(std::exchange(inputBytes, bytes), bytes);
        all->makeRoom();
        all->giveMemoryBack();
    }
}

void ClientBacklog::clear() {
    while (!empty()) {
        pop();
    }
    setInput(0);
}

bool ClientBacklog::pauseInput(std::size_t more) {
    inputPaused = unreadBytes + more > maximumUnread;
    return inputPaused;
}

bool ClientBacklog::resumeInput(std::size_t more) {
    return inputPaused && !pauseInput(more);
}

void ClientBacklog::overflow() {
    reason = DisconnectReason::TOO_SLOW;
    drop();
    clear();
}

}  // namespace SettingsHandlerKit
