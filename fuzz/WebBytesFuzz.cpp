// Any bytes at the web port, in any chunks: what follows a request does not change how it is read; WebSocket frames and
// the protocol's answers do not depend on the chunks, and messages are UTF-8 within the limit.

#include <algorithm>
#include <memory>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "Wire/Utf8.h"
#include "server/web/HttpRequest.h"
#include "server/web/WebSocketFraming.h"
#include "support/Check.h"

namespace {

using namespace SettingsHandlerFuzz;
using SettingsHandlerKit::HttpRequest;
using SettingsHandlerKit::readHttpRequest;
using State = HttpRequest::State;

constexpr std::size_t limit = 300;

/// Returns: how many bytes the request takes; 0 when nothing is read after it.
std::size_t checkRequest(const std::string& bytes) {
    const HttpRequest request = readHttpRequest(bytes);
    check(request.state != State::TOO_LONG || bytes.size() > SettingsHandlerKit::longestWebRequest,
          "a head may be long");
    if (request.state != State::COMPLETE) {
        return 0;
    }
    check(request.size > 0 && request.size <= bytes.size(), "a request takes what came");
    const HttpRequest alone = readHttpRequest(bytes.substr(0, request.size));
    check(alone.state == State::COMPLETE && alone.path == request.path && alone.visitor.key == request.visitor.key,
          "a request ends where the next one begins");
    check(readHttpRequest(bytes.substr(0, request.size - 1)).state == State::INCOMPLETE, "a head has one end");
    return request.keepsConnection ? request.size : 0;
}

Entries framed(const std::string& bytes, std::size_t chunk) {
    Entries entries;
    std::string answers;
    SettingsHandlerKit::WebSocketFraming framing(limit, std::make_shared<SettingsHandlerKit::WebSocketWriter>(), "");
    for (std::size_t start = 0; start < bytes.size(); start += chunk) {
        framing.append(bytes.data() + start, std::min(chunk, bytes.size() - start));
        while (const auto frame = framing.next()) {
            check(frame->text.size() <= limit && Wire::isValidUtf8(frame->text), "a message is UTF-8 within the limit");
            entries.push_back(frame->text);
        }
        // A Close frame is read when all of it is there.
        check(framing.size() <= 2 + 4 + 125 || framing.hasEnded(), "everything is read");
    }
    framing.encodeControl(answers);
    entries.push_back(answers);
    entries.emplace_back(framing.hasEnded() ? "ended" : "open");
    return entries;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto chunk = input.ConsumeIntegralInRange<std::size_t>(1, 20);
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t taken = checkRequest(bytes.substr(start));
        start = taken == 0 ? bytes.size() : start + taken;
    }
    checkSame(framed(bytes, chunk), framed(bytes, bytes.size() + 1), "the frames in chunks and at once");
    return 0;
}
