#include <sys/resource.h>

#include "WebHostFixture.h"
#include "support/Sanitizers.h"

namespace SystemTests {

using TestSupport::httpGet;
using WireTests::HostWebSocket;

TEST_F(HostWeb, ServesThePageAndTheSameMessagesAsTheSocket) {
    startWeb();
    EXPECT_EQ(httpGet(port, "/?key=" + key).body, "<p>page</p>");
    const auto socket = page();
    client();
    socket->sendText(getRequest(R"(["deviceName"])", "g1"));
    EXPECT_EQ(socket->receiveText(), R"({"type":7,"messageId":"g1","payload":{"settings":{"deviceName":"TV"}}})");
    socket->sendText(setRequest("deviceName", "\"Den\""));
    socket->sendText(getRequest(R"(["deviceName"])", "g2"));
    const auto event = next(*socket);
    EXPECT_STREQ(event["origin"].GetString(), "page");
    EXPECT_STREQ(event["payload"]["to"].GetString(), "Den");
    EXPECT_EQ(next(*socket)["messageId"], "g2");
    EXPECT_STREQ(parsed(client().receiveLine().value())["payload"]["to"].GetString(), "Den");
    // Events of the socket, and of the device.
    client().sendLine(setRequest("deviceName", "\"Attic\"", 2));
    EXPECT_STREQ(next(*socket)["origin"].GetString(), "socket");
    device(R"({"command":"captions","enabled":true})");
    EXPECT_EQ(socket->receiveText(), R"({"notice":{"reread":["captionsEnabled"]}})");
    socket->sendText("x");
    EXPECT_STREQ(next(*socket)["error"]["code"].GetString(), "not-json");
}

TEST_F(HostWeb, TheDevicePageDrivesTheDeviceAndWatchesAllMessages) {
    startWeb();
    const auto devicePage = page("/device", "device.v1");
    devicePage->sendText(R"({"command":"trace","enabled":true})");
    EXPECT_EQ(devicePage->receiveText(), R"({"ok":true})");
    const auto settingsPage = page();
    const std::string request = getRequest(R"(["timezone"])");
    settingsPage->sendText(request);
    const auto asked = next(*devicePage);
    EXPECT_STREQ(asked["trace"]["text"].GetString(), request.c_str());
    EXPECT_STREQ(asked["trace"]["door"].GetString(), "page");
    EXPECT_STREQ(next(*devicePage)["trace"]["direction"].GetString(), "out");
    devicePage->sendText(R"({"command":"timezone","value":"Europe/Paris"})");
    EXPECT_STREQ(next(*devicePage)["trace"]["direction"].GetString(), "in");
    EXPECT_STREQ(next(*devicePage)["trace"]["text"].GetString(), R"({"notice":{"reread":["timezone"]}})");
    EXPECT_EQ(devicePage->receiveText(), R"({"ok":true})");
    EXPECT_STREQ(next(*devicePage)["trace"]["text"].GetString(), R"({"ok":true})");
}

TEST_F(HostWeb, MakesANewKeyAtEachStartButAcceptsItsCookiesAgain) {
    startWeb();
    const auto first = httpGet(port, "/?key=" + key);
    const std::string cookie = cookieOf(first);
    const std::string oldKey = key;
    kill();
    startWeb({}, port);
    EXPECT_NE(key, oldKey);
    EXPECT_EQ(httpGet(port, "/?key=" + oldKey).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 200);
    EXPECT_EQ(HostWebSocket(port, "/settings", "settings.v1", {"Cookie: " + cookie}).status(), 101);
    // An empty secret in the database authenticates nobody.
    kill();
    sql("UPDATE web SET value = ''");
    startWeb({}, port);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie.substr(0, cookie.find('=') + 1)}).status, 403);
    // The cookie is not the key.
    EXPECT_EQ(httpGet(port, "/?key=" + cookie.substr(cookie.find('=') + 1)).status, 403);
}

TEST_F(HostWeb, ReportsItsAddressOnTheDeviceSocket) {
    startWeb();
    const std::string address = "http://127.0.0.1:" + std::to_string(port) + "/?key=" + key;
    EXPECT_EQ(device(R"({"command":"page"})"), R"({"page":{"address":")" + address + R"("}})");
    webArguments = {"--no-web"};
    stop();
    start();
    EXPECT_TRUE(contains(device(R"({"command":"page"})"), "no-pages"));
}

TEST_F(HostWeb, ANewKeyRevokesTheOldKeyAndItsCookies) {
    startWeb();
    const std::string cookie = cookieOf(httpGet(port, "/?key=" + key));
    const auto withKey = page();
    HostWebSocket withCookie(port, "/device", "device.v1", {"Cookie: " + cookie});
    EXPECT_EQ(withCookie.status(), 101);
    const std::string answer = device(R"({"command":"page","newKey":true})");
    EXPECT_EQ(withKey->receive().value_or(HostWebSocket::Message()).closeStatus(), 4401);
    EXPECT_EQ(withCookie.receive().value_or(HostWebSocket::Message()).closeStatus(), 4401);
    const std::string newAddress = parsed(answer)["page"]["address"].GetString();
    const std::string newKey = newAddress.substr(newAddress.find('=') + 1);
    EXPECT_NE(newKey, key);
    EXPECT_EQ(device(R"({"command":"page"})"), answer);
    EXPECT_EQ(httpGet(port, "/?key=" + key).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 403);
    const std::string newCookie = cookieOf(httpGet(port, "/?key=" + newKey));
    kill();
    startWeb({}, port);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + newCookie}).status, 200);
}

TEST_F(HostWeb, ANewKeyThatCannotBeStoredIsRefusedAndTheOldOneStaysValid) {
    startWeb();
    const std::string cookie = cookieOf(httpGet(port, "/?key=" + key));
    const auto openPage = page();
    const rlimit full{1, RLIM_INFINITY};
    ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, &full, nullptr), 0);
    EXPECT_EQ(device(R"({"command":"page","newKey":true})"),
              R"({"error":{"code":"not-written","message":)"
              R"("the new key could not be stored: the old key and its cookies stay valid"}})");
    EXPECT_EQ(httpGet(port, "/?key=" + key).status, 200);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 200);
    openPage->sendText(getRequest(R"(["deviceName"])"));
    EXPECT_TRUE(openPage->receiveText());
}

TEST_F(HostWeb, ThePagesCannotReadTheKey) {
    startWeb();
    const auto devicePage = page("/device", "device.v1");
    for (const auto* command : {R"({"command":"page"})", R"({"command":"page","newKey":true})"}) {
        devicePage->sendText(command);
        EXPECT_STREQ(next(*devicePage)["error"]["code"].GetString(), "not-here");
    }
    EXPECT_EQ(httpGet(port, "/?key=" + key).status, 200) << "the key is unchanged";
}

TEST_F(HostWeb, CookiesOfOlderVersionsAndOfRestoredBackupsAreInvalid) {
    startWeb();
    const std::string cookie = cookieOf(httpGet(port, "/?key=" + key));
    stop();
    const std::string secret = sql("SELECT value FROM web WHERE key = 'cookieSecret'");
    EXPECT_EQ(secret.size(), 64U);
    // Older versions sent the secret itself to browsers.
    const std::string old(64, 'a');
    sql("INSERT INTO web (key, value) VALUES ('browserSecret', '" + old + "')");
    startWeb({}, port);
    const std::string name = cookie.substr(0, cookie.find('=') + 1);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + name + old}).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + name + secret}).status, 403);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 200);
    stop();
    // A backup may hold a secret that was replaced since.
    std::filesystem::copy_file(database(), database() + ".backup.1");
    std::ofstream(database()) << "this is not a database";
    startWeb({}, port);
    EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 403);
}

TEST_F(HostWeb, WithoutPagesTheAddressSaysHowToGetThem) {
    std::filesystem::remove_all(folder / "pages");
    webArguments = {"--listen", "127.0.0.1:0"};
    startWeb();
    for (const auto* path : {"/", "/device"}) {
        EXPECT_EQ(httpGet(port, path).status, 403);
        const auto answer = httpGet(port, std::string(path) + "?key=" + key);
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.headers.at("content-type"), "text/html; charset=utf-8");
        EXPECT_TRUE(contains(answer.body, "settings-host --pages")) << answer.body;
        EXPECT_EQ(httpGet(port, path, {"Cookie: " + cookieOf(answer)}).status, 200);
    }
    EXPECT_EQ(httpGet(port, "/main.js?key=" + key).status, 404);
    EXPECT_EQ(page()->status(), 101);
}

TEST_F(HostWeb, ReportsItsHealth) {
    startWeb();
    const auto health = WireTests::healthOf(port);
    EXPECT_EQ(health.status, 200);
    EXPECT_EQ(health.headers.at("content-type"), "application/json");
    const auto report = parsed(health.body);
    EXPECT_STREQ(report["status"].GetString(), "ok");
    EXPECT_GE(report["uptimeSeconds"].GetInt(), 0);
    const std::string beginning = "settings-host " + std::string(report["version"].GetString()) + " (";
    EXPECT_EQ(TestSupport::run({SETTINGS_HOST, "--version"}).output.substr(0, beginning.size()), beginning);
}

TEST_F(HostWeb, ServesMetricsWithoutUserValues) {
    startWeb();
    const auto socket = page();
    socket->sendText(setRequest("deviceName", "\"Kitchen\""));
    next(*socket);
    client().sendLine(setRequest("captionsFontSize", "\"FONT_LARGE\""));
    EXPECT_TRUE(client().receiveLine());
    client().sendLine(setRequest("captionsEnabled", "\"true\""));
    client().sendLine("x");
    EXPECT_TRUE(client().receiveLine());
    const auto metrics = httpGet(port, "/metrics");
    EXPECT_EQ(metrics.status, 200);
    EXPECT_EQ(metrics.headers.at("content-type"), "text/plain; version=0.0.4; charset=utf-8");
    for (const auto* line :
         {R"(settings_host_changes_total{setting="deviceName",value="other"} 1)",
          R"(settings_host_changes_total{setting="captionsFontSize",value="FONT_LARGE"} 1)",
          R"(settings_host_requests_total{outcome="changed",type="set_settings"} 2)",
          R"(settings_host_requests_total{outcome="silent",type="set_settings"} 1)",
          R"(settings_host_refusals_total{code="not-json"} 1)", R"(settings_host_clients{door="socket"} 1)",
          R"(settings_host_clients{door="page"} 1)", R"(settings_host_storage_failures_total{operation="write"} 0)"}) {
        EXPECT_TRUE(contains(metrics.body, std::string("\n") + line + "\n")) << line;
    }
    EXPECT_FALSE(contains(metrics.body, "Kitchen"));
}

TEST_F(HostWeb, RefusesATakenPortAndAMissingPagesFolder) {
    startWeb();
    const auto expectCannotStart = [&](const Lines& web, const std::string& message, int status) {
        const auto end = TestSupport::run([&] {
            Lines arguments{SETTINGS_HOST,       "--storage",       folder / "other.db", "--socket",
                            folder / "o/s.sock", "--device-socket", folder / "o/d.sock"};
            arguments.insert(arguments.end(), web.begin(), web.end());
            return arguments;
        }());
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.status, status) << end.errors;
        EXPECT_TRUE(contains(end.errors, message)) << end.errors;
    };
    expectCannotStart({"--listen", "127.0.0.1:" + std::to_string(port)},
                      "cannot listen at 127.0.0.1 port " + std::to_string(port) + ": Address already in use", 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "other.db")) << "the database was created";
    expectCannotStart({"--listen", "127.0.0.1:0", "--pages", folder / "none"}, "cannot read the pages' folder", 1);
    expectCannotStart({"--listen", "0.0.0.0:0"}, "'0.0.0.0' is not a loopback address", 2);
    EXPECT_EQ(WireTests::healthOf(port).status, 200);
}

TEST_F(HostWeb, AllowsOneMoreOrigin) {
    startWeb({"--allow-origin", "http://LocalHost:5173"});
    EXPECT_EQ(HostWebSocket(port, "/settings?key=" + key, "settings.v1", {"Origin: http://localhost:5173"}).status(),
              101);
    EXPECT_EQ(HostWebSocket(port, "/settings?key=" + key, "settings.v1", {"Origin: http://localhost:5174"}).status(),
              403);
}

TEST_F(HostWeb, StopsWithPagesOpen) {
    startWeb();
    const auto first = page();
    const auto second = page("/device", "device.v1");
    first->sendText(setRequest("deviceName", "\"Den\""));
    next(*first);
    stop();
    EXPECT_EQ(first->receive().value_or(HostWebSocket::Message()).closeStatus(), 1001);
    EXPECT_EQ(second->receive().value_or(HostWebSocket::Message()).closeStatus(), 1001);
}

TEST_F(HostWeb, AtTheDescriptorLimitOpenWebSocketsAreServed) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    startWeb();
    const auto openPage = page();
    // Enough for a few more connections, none of which becomes a WebSocket.
    const rlimit tight{40, 40};
    ASSERT_EQ(::prlimit(host->pid(), RLIMIT_NOFILE, &tight, nullptr), 0);
    std::vector<std::unique_ptr<TestSupport::TcpConnection>> connections;
    for (int number = 0; number < 60; ++number) {
        connections.push_back(std::make_unique<TestSupport::TcpConnection>(port));
        connections.back()->send("GET ");
    }
    EXPECT_EQ(connections.back()->receiveAll(), "");
    EXPECT_TRUE(connections.back()->closedByPeer()) << "the limit was not reached";
    for (long number = 0; number < 20; ++number) {
        openPage->sendText(setRequest("deviceName", "\"" + std::to_string(number) + "\"", number));
        EXPECT_EQ(std::to_string(number), next(*openPage)["payload"]["to"].GetString());
    }
    connections.clear();
    waitFor([&] { return WireTests::healthOf(port).status == 200; });
}

TEST_F(HostWeb, IsHealthyAgainOnceAChangeReachesTheDisk) {
    startWeb();
    rlimit unlimited{};
    ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, nullptr, &unlimited), 0);
    const rlimit full{1, unlimited.rlim_max};
    ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, &full, nullptr), 0);
    set("deviceName", "\"Nursery\"");
    const auto degraded = WireTests::healthOf(port);
    EXPECT_EQ(degraded.status, 200);
    const auto report = parsed(degraded.body);
    EXPECT_STREQ(report["status"].GetString(), "degraded");
    EXPECT_FALSE(report["storage"]["writable"].GetBool());
    EXPECT_EQ(report["storage"]["failures"].GetInt(), 1);
    const std::string reason = report["storage"]["lastFailure"].GetString();
    EXPECT_FALSE(contains(degraded.body, "Nursery"));
    EXPECT_TRUE(
        contains(httpGet(port, "/metrics").body, "settings_host_storage_failures_total{operation=\"write\"} 1\n"));
    ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, &unlimited, nullptr), 0);
    set("deviceName", "\"Den\"", 2);
    const std::string recovered = WireTests::healthOf(port).body;
    EXPECT_TRUE(contains(recovered, R"({"status":"ok")")) << recovered;
    EXPECT_TRUE(contains(recovered, R"("storage":{"writable":true,"keys":1,"failures":1,"lastFailure":")" + reason))
        << recovered;
}

}  // namespace SystemTests
