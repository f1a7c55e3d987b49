#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

/// What a maker may have besides the thing that it makes. A check that needs a hook which the maker lacks is skipped,
/// and says which.
namespace SettingsHandlerTesting {

/// Names the tests of an instantiation after nothing but their number; pass it as the last argument where the compiler
/// insists on one (-Wpedantic).
struct NumberedNames {
    /// The number, as text.
    template <typename Maker>
    static std::string GetName(int number) {
        return std::to_string(number);
    }
};

template <typename Nothing, template <typename> class Hook, typename Maker>
struct HookDetection : std::false_type {};

template <template <typename> class Hook, typename Maker>
struct HookDetection<std::void_t<Hook<Maker>>, Hook, Maker> : std::true_type {};

/// Has `Maker` this hook? `Hook`: the type of the expression that uses it.
template <template <typename> class Hook, typename Maker>
constexpr bool offers = HookDetection<void, Hook, Maker>::value;

/// `static constexpr bool anyThread = true;`: what is made may be called from every thread.
template <typename Maker>
using AnyThreadHook = std::enable_if_t<Maker::anyThread>;

}  // namespace SettingsHandlerTesting
