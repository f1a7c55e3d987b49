#include "simulation/SimulatedFile.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace SettingsSimulation {

namespace {

void reorderAndTear(std::vector<SimulatedFile::Change>& changes, Choices& choices) {
    if (changes.empty()) {
        return;
    }
    if (choices.pick(2, "are changes written in another order") == 1) {
        for (std::size_t place = changes.size() - 1; place > 0; --place) {
            std::swap(changes[place], changes[choices.pick(place + 1, "which change comes here")]);
        }
    }
    if (choices.pick(2, "is a change torn") == 1) {
        // Disks write whole sectors; flash may stop anywhere.
        constexpr std::size_t sector = 512;
        const std::size_t unit = choices.pick(3, "does it end at a sector") != 2 ? sector : 1;
        std::string& bytes = changes[choices.pick(changes.size(), "which change is torn")].bytes;
        bytes.resize(choices.pick(bytes.size() / unit + 1, "how much of it is left") * unit);
    }
}

}  // namespace

void SimulatedFile::Change::apply(std::string& content) const {
    if (isTruncation) {
        content.resize(std::min(content.size(), offset));
        return;
    }
    content.resize(std::max(content.size(), offset + bytes.size()));
    std::memcpy(content.data() + offset, bytes.data(), bytes.size());
}

void SimulatedFile::change(Change change) {
    change.apply(content);
    pending.push_back(std::move(change));
    changed = std::chrono::system_clock::now();
}

void SimulatedFile::sync() {
    for (const auto& change : pending) {
        change.apply(kept);
    }
    pending.clear();
}

void SimulatedFile::losePower(Choices& choices) {
    std::vector<Change> left;
    switch (pending.empty() ? 0 : choices.pick(4, "what a power cut leaves of a file's changes")) {
        case 0:
            left = std::move(pending);
            break;
        case 1:
            break;
        default:
            for (auto& change : pending) {
                if (choices.pick(2, "does a change survive") == 0) {
                    left.push_back(std::move(change));
                }
            }
            reorderAndTear(left, choices);
    }
    pending = std::move(left);
    sync();
    content = kept;
}

}  // namespace SettingsSimulation
