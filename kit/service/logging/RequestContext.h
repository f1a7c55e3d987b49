#pragma once

#include <optional>
#include <string>
#include <utility>

namespace SettingsHost {

/// A request that is being handled.
struct CurrentRequest {
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

}  // namespace SettingsHost
