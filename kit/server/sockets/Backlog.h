#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace SettingsHost {

class ClientBacklog;

/// The one budget for all that waits for clients, at all listeners together: frames that they have not read, and what
/// they sent that could not be handled yet. Over the limit the client with most waiting is dropped, then the next one,
/// until the rest fits. One thread only.
///
/// Everything counts with the memory that it takes: a frame for many clients once, and each with what keeps it.
class Backlog {
public:
    static constexpr std::size_t maximum = 32UL * 1024UL * 1024UL;

    explicit Backlog(std::size_t limitInBytes = maximum) : limit(limitInBytes) {}

    Backlog(const Backlog&) = delete;
    Backlog& operator=(const Backlog&) = delete;

    /// May as much wait besides what waits already?
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
    /// What was let go since memory went back to the system.
    std::size_t released = 0;
    /// Frames that wait, and for how many clients.
    std::unordered_map<const std::string*, std::size_t> frames;
    /// In the order in which they came.
    std::vector<ClientBacklog*> clients;
};

/// What waits for one client. What it drops it for has been seen by the client without a gap up to an end.
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
    /// The same, without the frame that is on its way: its size says nothing about how fast the client reads.
    std::size_t unreadBehindFirst() const { return empty() ? 0 : unreadBytes - frames.front()->size(); }

    void push(const std::shared_ptr<const std::string>& frame);
    void pop();
    /// What the client sent takes as much memory.
    void setInput(std::size_t bytes);
    void clear();

private:
    friend class Backlog;

    std::shared_ptr<Backlog> all;
    std::function<void()> drop;
    std::deque<std::shared_ptr<const std::string>> frames;
    std::size_t unreadBytes = 0;
    std::size_t inputBytes = 0;
};

}  // namespace SettingsHost
