#include "server/loop/RepeatingTimer.h"

#include <utility>

#include "server/loop/UvHandle.h"

namespace SettingsHandlerKit {

class RepeatingTimer::Handle : public UvHandle<uv_timer_t, Handle> {
public:
    explicit Handle(std::function<void()> whatToDo) : action(std::move(whatToDo)) {}

    void start(std::chrono::milliseconds first, std::chrono::milliseconds every) {
        startTimer(
            get(), [](uv_timer_t* timer) { ownerOf(timer).action(); }, first, every);
    }

private:
    std::function<void()> action;
};

RepeatingTimer::RepeatingTimer(EventLoop& loop, std::chrono::milliseconds first, std::chrono::milliseconds every,
                               std::function<void()> action)
    : handle(std::make_shared<Handle>(std::move(action))) {
    uv_timer_init(loop.handle(), handle->get());
    handle->opened(handle);
    handle->start(first, every);
}

RepeatingTimer::~RepeatingTimer() {
    handle->closeHandle();
}

}  // namespace SettingsHandlerKit
