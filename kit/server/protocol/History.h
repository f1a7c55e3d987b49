#pragma once

#include <memory>
#include <set>
#include <string>

namespace SettingsHandlerKit {

/// An event or a notice, as it was sent.
struct Announcement {
    std::shared_ptr<const std::string> frame;
    /// The key of an event, the keys of a notice.
    std::set<std::string> keys;
    /// Of an event; 0 for a notice.
    unsigned long sequence = 0;
};

/// The newest events and notices of this run, in memory alone. One thread only.
class History {
public:
    /// Each event and each notice when it is sent; those of a batch after its commit.
    void add(Announcement announcement);
    /// A log-out leaves nothing.
    void clear();
};

}  // namespace SettingsHandlerKit
