#include "server/loop/Delays.h"

#include <algorithm>
#include <utility>

namespace SettingsHandlerKit {

using std::chrono::steady_clock;

Delays::Delays(EventLoop& loop) : deadline(loop, [this] { takeDue(); }) {}

void Delays::add(std::chrono::milliseconds delay, std::function<void()> action) {
    actions.emplace(steady_clock::now() + delay, std::move(action));
    setDeadline();
}

void Delays::takeDue() {
    const auto now = steady_clock::now();
    while (!actions.empty() && actions.begin()->first <= now) {
        // It may add others.
        const auto action = actions.extract(actions.begin());
        action.mapped()();
    }
    if (!actions.empty()) {
        setDeadline();
    }
}

void Delays::setDeadline() {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(actions.begin()->first - steady_clock::now());
    deadline.set(std::max(left, milliseconds(0)));
}

}  // namespace SettingsHandlerKit
