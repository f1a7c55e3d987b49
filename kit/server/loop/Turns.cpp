#include "server/loop/Turns.h"

#include <utility>

#include "server/loop/UvHandle.h"

namespace SettingsHandlerKit {

/// Runs once a round of the event loop while something waits.
class Turns::Idle : public UvHandle<uv_idle_t, Idle> {
public:
    explicit Idle(Turns& owningTurns) : turns(&owningTurns) {}

    void start() {
        uv_idle_start(get(), [](uv_idle_t* handle) { ownerOf(handle).turns->take(); });
    }

private:
    Turns* turns;
};

Turns::Turns(EventLoop& loop) : idle(std::make_shared<Idle>(*this)) {
    uv_idle_init(loop.handle(), idle->get());
    idle->opened(idle);
}

Turns::~Turns() {
    close();
}

void Turns::later(std::function<void()> turn) {
    if (!idle->isOpen()) {
        return;
    }
    if (waiting.empty()) {
        idle->start();
    }
    waiting.push_back(std::move(turn));
}

void Turns::take() {
    const auto now = std::exchange(waiting, {});
    uv_idle_stop(idle->get());
    for (const auto& turn : now) {
        turn();
    }
}

void Turns::close() {
    idle->closeHandle();
    waiting.clear();
}

}  // namespace SettingsHandlerKit
