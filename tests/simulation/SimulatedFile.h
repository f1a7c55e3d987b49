#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "simulation/Choices.h"

namespace SettingsSimulation {

/// A file or folder of the simulated disk, whatever its name.
struct SimulatedFile {
    struct Change {
        bool isTruncation;
        std::size_t offset;
        std::string bytes;

        void apply(std::string& content) const;
    };

    bool isFolder = false;
    /// In the system's cache.
    std::string content;
    /// On the disk, and the changes that are not there yet.
    std::string kept;
    std::vector<Change> pending;
    std::chrono::system_clock::time_point changed = std::chrono::system_clock::now();

    void change(Change change);
    void sync();
    /// All, nothing or some of the changes are kept, in any order, and a part of one.
    void losePower(Choices& choices);
};

}  // namespace SettingsSimulation
