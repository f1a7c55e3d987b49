#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/TrafficObservers.h"

namespace SettingsHandlerKit {

TEST(TrafficObservers, PassEveryNotificationOnToEachObserver) {
    const auto first = std::make_shared<TrafficRecording>();
    const auto second = std::make_shared<TrafficRecording>();
    TrafficObservers observers;
    observers.add(first);
    observers.add(second);
    const SettingsHandlerTesting::FakeClient client;
    observers.clientConnected(client);
    observers.clientRefused(Origin::PAGE);
    observers.frameReceived(client, "{}");
    observers.frameSent(nullptr, "event");
    observers.frameSent(&client, "reply");
    observers.frameRefused("not-json");
    observers.requestHandled(24, RequestOutcome::CHANGED);
    observers.clientDisconnected(client, DisconnectReason::TOO_SLOW);
    const std::vector<std::string> expected{
        "connected socket",  "no room page",     "received {}",        "sent to all event",
        "sent to one reply", "refused not-json", "handled 24 CHANGED", "disconnected socket TOO_SLOW"};
    EXPECT_EQ(first->take(), expected);
    EXPECT_EQ(second->take(), expected);
}

}  // namespace SettingsHandlerKit
