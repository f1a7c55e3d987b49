#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "support/Check.h"

namespace SettingsHandlerFuzz {

/// Runs each input in a world of its own. A start takes longer than most inputs and leads to the same with the same
/// surroundings, so only the first one is run; later worlds copy what it led to, `World::Start`. That they are like
/// worlds that were really started is checked with the first inputs of a process, then now and then: what an input
/// finds does not depend on those before it.
template <typename World>
class Starts {
public:
    explicit Starts(std::size_t count) : known(count) {}

    /// Runs `input` in a world with the start number `index`. `make` makes it: it gets what the start led to, or null.
    template <typename Make, typename Input>
    void run(std::size_t index, const Make& make, const Input& input) {
        std::optional<typename World::Start>& start = known.at(index);
        const bool isProved = ++runs <= alwaysProved || runs % period == 0;
        Entries expected;
        if (!start || isProved) {
            const std::unique_ptr<World> world = make(nullptr);
            start = world->startOf();
            world->recordInto(expected);
            input(*world);
            if (!isProved) {
                return;
            }
        }
        const std::unique_ptr<World> world = make(&*start);
        Entries actual;
        if (isProved) {
            world->recordInto(actual);
        }
        input(*world);
        checkSame(actual, expected, "an input leads to the same after a copied start");
    }

private:
    static constexpr std::size_t alwaysProved = 1000;
    static constexpr std::size_t period = 100;

    std::vector<std::optional<typename World::Start>> known;
    std::size_t runs = 0;
};

}  // namespace SettingsHandlerFuzz
