#pragma once

#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

/// Hooks: optional members of a maker. A check that needs a hook which the maker lacks is skipped with a message that
/// names the hook.
namespace SettingsHandlerTesting {

/// Names the tests of an instantiation by their number. Pass it as the last argument where the compiler requires one
/// (-Wpedantic).
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

/// Whether `Maker` has this hook. `Hook`: the type of the expression that uses it.
template <template <typename> class Hook, typename Maker>
constexpr bool offers = HookDetection<void, Hook, Maker>::value;

/// `static constexpr bool anyThread = true;`: the implementation may be called from any thread.
template <typename Maker>
using AnyThreadHook = std::enable_if_t<Maker::anyThread>;

}  // namespace SettingsHandlerTesting
