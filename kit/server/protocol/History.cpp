#include "server/protocol/History.h"

#include <algorithm>
#include <utility>

namespace SettingsHandlerKit {

namespace {

/// The counters that share a frame, beside the string.
constexpr std::size_t sharedOverhead = 2 * sizeof(void*);
/// Of the queue of entries: its first and last block, which may be almost empty, and its table of blocks.
constexpr std::size_t queueOverhead = 8UL * 1024UL;

/// A block of the heap: with its size before it, in steps of 16 bytes.
constexpr std::size_t blockOf(std::size_t content) {
    constexpr std::size_t step = 16;
    return (content + sizeof(std::size_t) + step - 1) / step * step;
}

std::size_t heapOf(const std::string& text) {
    // Short texts are kept within the string.
    const bool isInside = text.capacity() <= std::string().capacity();
    return isInside ? 0 : blockOf(text.capacity() + 1);
}

}  // namespace

std::size_t History::costOf(const Entry& entry) {
    std::size_t cost = sizeof(Entry) + blockOf(entry.keys.capacity() * sizeof(std::string));
    for (const auto& key : entry.keys) {
        cost += heapOf(key);
    }
    if (entry.frame) {
        cost += blockOf(sharedOverhead + sizeof(std::string)) + heapOf(*entry.frame);
    }
    return cost;
}

std::size_t History::size() const {
    return bytes + queueOverhead;
}

void History::add(Announcement announcement) {
    const bool isEvent = announcement.sequence != 0;
    if (isEvent) {
        newestSequence = announcement.sequence;
    } else if (newestSequence < completeAfter) {
        // After `clear`, nobody resumes from before the next event.
        return;
    }
    // The frame of a notice is not sent again.
    entries.push_back(
        {newestSequence, std::move(announcement.keys), isEvent ? std::move(announcement.frame) : nullptr});
    bytes += costOf(entries.back());
    while (entries.size() > maximumEntries || (!entries.empty() && size() > maximumBytes)) {
        forgetOldest();
    }
}

void History::forgetOldest() {
    const Entry& oldest = entries.front();
    completeAfter = std::max(completeAfter, oldest.frame ? oldest.sequence : oldest.sequence + 1);
    bytes -= costOf(oldest);
    entries.pop_front();
}

void History::clear() {
    std::deque<Entry>().swap(entries);
    bytes = 0;
    completeAfter = newestSequence + 1;
}

std::optional<History::Missed> History::since(unsigned long sequence) const {
    if (sequence < completeAfter || sequence > newestSequence) {
        return std::nullopt;
    }
    Missed missed;
    for (const auto& entry : entries) {
        if (!entry.frame && entry.sequence >= sequence) {
            missed.reread.insert(entry.keys.begin(), entry.keys.end());
        } else if (entry.frame && entry.sequence > sequence) {
            missed.events.push_back(entry.frame);
        }
    }
    return missed;
}

std::vector<SharedFrame> History::events(std::size_t limit, const std::optional<std::string>& settingDBId) const {
    std::vector<SharedFrame> found;
    for (auto entry = entries.rbegin(); entry != entries.rend() && found.size() < limit; ++entry) {
        if (entry->frame && (!settingDBId || entry->keys.front() == *settingDBId)) {
            found.push_back(entry->frame);
        }
    }
    std::reverse(found.begin(), found.end());
    return found;
}

}  // namespace SettingsHandlerKit
