#pragma once

#include <optional>
#include <string>
#include <utility>

namespace SettingsHandlerKit {

/// A request that is being handled.
struct CurrentRequest {
    int type = 0;
    /// The key that it names; empty when it names none.
    std::string setting;
};

/// The request that is being handled, for the log lines written meanwhile. Threads: one.
class RequestContext {
public:
    /// Sets the request for the lifetime of the object.
    class Scope {
    public:
        Scope(RequestContext& requestContext, CurrentRequest request)
            : context(requestContext), before(std::exchange(context.request, std::move(request))) {}
        ~Scope() { context.request = std::move(before); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RequestContext& context;
        std::optional<CurrentRequest> before;
    };

    const std::optional<CurrentRequest>& current() const { return request; }

private:
    std::optional<CurrentRequest> request;
};

}  // namespace SettingsHandlerKit
