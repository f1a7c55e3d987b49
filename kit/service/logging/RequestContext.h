#pragma once

#include <optional>
#include <string>
#include <utility>

namespace SettingsHost {

/// A request that is being handled.
struct RequestInHand {
    int type = 0;
    /// Which setting it is about; empty when it is about none.
    std::string setting;
};

/// Says which request is being handled to those who write log lines meanwhile. One thread only.
class RequestContext {
public:
    /// The request is in hand while this lives.
    class Scope {
    public:
        Scope(RequestContext& requestContext, RequestInHand request)
            : context(requestContext), before(std::exchange(context.inHand, std::move(request))) {}
        ~Scope() { context.inHand = std::move(before); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RequestContext& context;
        std::optional<RequestInHand> before;
    };

    const std::optional<RequestInHand>& current() const { return inHand; }

private:
    std::optional<RequestInHand> inHand;
};

}  // namespace SettingsHost
