#include "simulation/Choices.h"

namespace SettingsSimulation {

/// SplitMix64.
std::size_t SeededChoices::pick(std::size_t count, const char* /*what*/) {
    state += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
    return static_cast<std::size_t>((mixed ^ (mixed >> 31U)) % count);
}

}  // namespace SettingsSimulation
