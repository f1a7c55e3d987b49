#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace SettingsHandlerKit {

/// A frame that clients and the history share.
using SharedFrame = std::shared_ptr<const std::string>;

/// An event or a notice, as it is sent to all clients.
struct Announcement {
    SharedFrame frame;
    /// The key of an event, the keys of a notice.
    std::vector<std::string> keys;
    /// The number of an event; 0 for a notice.
    unsigned long sequence = 0;
};

/// The newest events and notices of this run, in memory alone. One thread only.
///
/// A notice belongs to the event before it: whoever has seen that event may not have seen the notice.
class History {
public:
    /// The most events and notices.
    static constexpr std::size_t maximumEntries = 1024;
    /// The most memory of all, bookkeeping included. The oldest are forgotten first.
    static constexpr std::size_t maximumBytes = 512UL * 1024UL;

    /// What a client missed.
    struct Missed {
        /// In order, as they were sent.
        std::vector<SharedFrame> events;
        /// The keys of notices.
        std::set<std::string> reread;
    };

    /// The number of an event is the one after the newest.
    void add(Announcement announcement);
    /// Forgets everything. A client that has seen all until now cannot resume either.
    void clear();

    /// The number of the newest event; 0 when there was none.
    unsigned long newest() const { return newestSequence; }
    /// What came after the event `sequence`; nothing when that is not known, or not all of it.
    std::optional<Missed> since(unsigned long sequence) const;
    /// The newest events, at most `limit`, oldest first; of the setting `settingDBId` or of all.
    std::vector<SharedFrame> events(std::size_t limit, const std::optional<std::string>& settingDBId) const;

    /// The memory that it takes.
    std::size_t size() const;

private:
    struct Entry {
        /// Of the event; of a notice, the one before it.
        unsigned long sequence;
        /// Of an event one, of a notice all of its own.
        std::vector<std::string> keys;
        /// Of an event; null for a notice.
        SharedFrame frame;
    };

    static std::size_t costOf(const Entry& entry);
    void forgetOldest();

    std::deque<Entry> entries;
    std::size_t bytes = 0;
    unsigned long newestSequence = 0;
    /// Everything is known for who has seen this event.
    unsigned long completeAfter = 0;
};

}  // namespace SettingsHandlerKit
