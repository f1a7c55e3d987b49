#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

#include <uv.h>

namespace SettingsHandlerKit {

/// A libuv handle as a member of an object that lives, shared, until libuv has let go of the handle.
///
///     class Thing : public UvHandle<uv_timer_t, Thing> { … };
///     auto thing = std::make_shared<Thing>();
///     uv_timer_init(loop, thing->get()); thing->opened(thing);
template <typename Handle, typename Owner>
class UvHandle {
public:
    UvHandle() = default;
    UvHandle(const UvHandle&) = delete;
    UvHandle& operator=(const UvHandle&) = delete;

    Handle* get() { return &rawHandle; }
    uv_handle_t* generic() { return reinterpret_cast<uv_handle_t*>(&rawHandle); }
    uv_stream_t* stream() { return reinterpret_cast<uv_stream_t*>(&rawHandle); }

    /// To be called once, after the handle was initialised.
    void opened(std::shared_ptr<Owner> self) {
        owner = std::move(self);
        rawHandle.data = owner.get();
    }

    bool isOpen() { return owner != nullptr && uv_is_closing(generic()) == 0; }

    /// Closes the handle; repeated calls do nothing. `Owner::closed` is called when libuv has let go of it.
    void closeHandle() {
        if (isOpen()) {
            uv_close(generic(), [](uv_handle_t* gone) {
                // Held to the end of this block, because the handle goes with its owner.
                const std::shared_ptr<Owner> last = std::move(ownerOf(gone).owner);
                last->closed();
            });
        }
    }

    template <typename AnyHandle>
    static Owner& ownerOf(AnyHandle* any) {
        return *static_cast<Owner*>(any->data);
    }

protected:
    ~UvHandle() = default;

    /// The owner, until the handle is closed.
    std::shared_ptr<Owner> shared() const { return owner; }
    void closed() {}

private:
    friend Owner;

    Handle rawHandle{};
    std::shared_ptr<Owner> owner;
};

/// Calls `callback` when `first` is over and, unless `every` is 0, again and again. The timer does not keep the loop
/// open. Its time begins now: libuv's own begins with the turn of the loop, which a slow disk makes long.
inline void startTimer(uv_timer_t* timer, uv_timer_cb callback, std::chrono::milliseconds first,
                       std::chrono::milliseconds every = std::chrono::milliseconds(0)) {
    uv_update_time(timer->loop);
    uv_timer_start(timer, callback, static_cast<std::uint64_t>(first.count()),
                   static_cast<std::uint64_t>(every.count()));
    uv_unref(reinterpret_cast<uv_handle_t*>(timer));
}

}  // namespace SettingsHandlerKit
