#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

class ClientBacklog;

/// The one budget for the backlogs of all clients, at all listeners together: frames that they have not read, and what
/// they sent that could not be handled yet. Over the limit the client with the largest backlog is dropped, then the
/// next one, until the rest fits. One thread only.
///
/// Everything counts with the memory that it takes: a frame for many clients once, and each with its overhead.
class Backlog {
public:
    static constexpr std::size_t maximum = 32UL * 1024UL * 1024UL;
    /// Memory of a frame besides its text: the string and its reference count, their headers in the heap, and its entry
    /// in the map of waiting frames.
    static constexpr std::size_t frameOverhead = 192;

    explicit Backlog(std::size_t limitInBytes = maximum) : limit(limitInBytes) {}

    Backlog(const Backlog&) = delete;
    Backlog& operator=(const Backlog&) = delete;

    /// Is there room for as many bytes more?
    bool hasRoomFor(std::size_t bytes) const { return costOf(bytes) <= limit && total <= limit - costOf(bytes); }
    std::size_t size() const { return total; }

private:
    friend class ClientBacklog;

    static std::size_t costOf(std::size_t bytes);
    void hold(const std::string& frame);
    void release(const std::string& frame);
    void countInput(std::size_t before, std::size_t now);
    void makeRoom();
    void giveMemoryBack();

    std::size_t limit;
    std::size_t total = 0;
    /// Bytes released since memory was last given back to the system.
    std::size_t released = 0;
    /// Frames that wait, with the number of clients that they wait for.
    std::unordered_map<const std::string*, std::size_t> frames;
    /// In the order in which they connected.
    std::vector<ClientBacklog*> clients;
};

/// What waits for one client, and the back-pressure that follows from it: when no more of its frames are taken, and
/// when it is dropped. A client that is dropped has seen its frames without a gap up to an end. ListenerLimits.h has
/// the limits.
class ClientBacklog {
public:
    /// `dropClient` closes the connection; it is called while something is added to this or another client's backlog,
    /// which is empty then.
    ClientBacklog(std::shared_ptr<Backlog> backlogOfAll, std::function<void()> dropClient);
    ~ClientBacklog();

    ClientBacklog(const ClientBacklog&) = delete;
    ClientBacklog& operator=(const ClientBacklog&) = delete;

    bool empty() const { return frames.empty(); }
    std::size_t count() const { return frames.size(); }
    const std::shared_ptr<const std::string>& operator[](std::size_t place) const { return frames[place]; }
    /// Bytes of frames that wait to be read.
    std::size_t unread() const { return unreadBytes; }

    /// Drops the client instead when more than `maximumWaiting` waits behind the frame that is on its way, whose size
    /// says nothing about how fast the client reads.
    void push(const std::shared_ptr<const std::string>& frame);
    void pop();
    /// What the client sent takes as much memory.
    void setInput(std::size_t bytes);
    void clear();

    /// Returns: true when more than `maximumUnread` waits, with `more` bytes that are not in the backlog; the client's
    /// next frames wait then.
    bool pauseInput(std::size_t more = 0);
    /// Returns: true, once, when the client has read enough since its frames wait.
    bool resumeInput(std::size_t more = 0);

    /// The connection is to be closed when everything that waits is sent; nothing is added from now on.
    void finish() { finishing = true; }
    bool isFinishing() const { return finishing; }

    /// TOO_SLOW for a client that was dropped.
    DisconnectReason disconnectReason() const { return reason; }

private:
    friend class Backlog;

    void overflow();

    std::shared_ptr<Backlog> all;
    std::function<void()> drop;
    std::deque<std::shared_ptr<const std::string>> frames;
    std::size_t unreadBytes = 0;
    std::size_t inputBytes = 0;
    bool inputPaused = false;
    bool finishing = false;
    DisconnectReason reason = DisconnectReason::CLOSED;
};

}  // namespace SettingsHandlerKit
