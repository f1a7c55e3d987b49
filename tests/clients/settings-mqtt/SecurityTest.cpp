#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

#include "ProgramFixture.h"
#include "SettingsClient/SocketCandidates.h"

namespace SettingsMqttTest {

/// A broker with TLS, client certificates, passwords and access lists.
class MqttSecurity : public testing::Test {
protected:
    MqttSecurity() {
        for (const std::string name : {"broker", "tv", "operator"}) {
            authority.issue(name);
        }
        write("passwords", "tv:secret\noperator:password\n");
        EXPECT_EQ(TestSupport::run({"mosquitto_passwd", "-U", authority / "passwords"}).status, 0);
        write("rights",
              "user tv\ntopic write settings/tv/#\ntopic read settings/tv/set/+\ntopic read settings/tv/desired/+\n"
              "topic read settings/all/set/+\nuser operator\ntopic readwrite settings/#\n");
        write("credentials", "tv\nsecret\n");
        ::chmod((authority / "credentials").c_str(), 0600);
        broker.emplace(
            std::vector<std::string>{"cafile " + authority / "ca.pem", "certfile " + authority / "broker.pem",
                                     "keyfile " + authority / "broker.key", "require_certificate true",
                                     "password_file " + authority / "passwords", "acl_file " + authority / "rights"});
    }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(authority / name) << content;
    }

    std::vector<std::string> bridgeOptions() const {
        return {"--ca",  authority / "ca.pem", "--certificate", authority / "tv.pem",
                "--key", authority / "tv.key", "--credentials", authority / "credentials"};
    }
    std::vector<std::string> operatorOptions() const {
        return {"--cafile", authority / "ca.pem",
                "--cert",   authority / "operator.pem",
                "--key",    authority / "operator.key",
                "-u",       "operator",
                "-P",       "password"};
    }

    SettingsCtlTests::RunningHost host;
    Authority authority;
    std::optional<RunningBroker> broker;
};

/// With each version of MQTT.
class MqttVersions : public MqttSecurity, public testing::WithParamInterface<std::string> {};

TEST_P(MqttVersions, ConnectsWithCertificateAndPassword) {
    auto options = bridgeOptions();
    options.insert(options.end(), {"--protocol", GetParam()});
    RunningBridge bridge(host, broker->address(), "tv", options);
    Subscriber subscriber(broker->port(), {"settings/tv/outcome", "settings/tv/availability"}, operatorOptions());
    subscriber.await("settings/tv/availability online");
    publish(broker->port(), "settings/tv/set/captionsFontSize", "FONT_LARGE", operatorOptions());
    subscriber.await(R"(settings/tv/outcome {"key":"captionsFontSize","outcome":"changed","value":"FONT_LARGE"})");
    EXPECT_NE(broker->log().find(GetParam() == "5" ? "as settings-tv (p5, c1, k5, u'tv')"
                                                   : "as settings-tv (p2, c1, k5, u'tv')"),
              std::string::npos)
        << broker->log();
}

INSTANTIATE_TEST_SUITE_P(Protocols, MqttVersions, testing::Values("5", "3.1.1"),
                         [](const auto& parameter) { return parameter.param == "5" ? "Version5" : "Version311"; });

TEST_F(MqttSecurity, SaysWhyItIsNotLetInAndTriesAgainWithWhatTheFilesHaveNow) {
    write("credentials", "tv\nwrong\n");
    RunningBridge bridge(host, broker->address(), "tv", bridgeOptions());
    EXPECT_NE(bridge.awaitLog("cannot reach the broker").find("Not authorized"), std::string::npos);
    write("credentials", "tv\nsecret\n");
    bridge.awaitLog("connected to the broker");
    const Authority stranger;
    auto options = bridgeOptions();
    options[1] = stranger / "ca.pem";
    RunningBridge other(host, broker->address(), "tv2", options);
    EXPECT_NE(other.awaitLog("cannot reach the broker").find("TLS"), std::string::npos);
    EXPECT_EQ(other.stop(), 0);
}

TEST_F(MqttSecurity, SaysWhenTheBrokerRefusesAMessage) {
    RunningBridge bridge(host, broker->address(), "other", bridgeOptions());
    bridge.awaitLog("the broker refused a message");
}

TEST_F(MqttSecurity, ConnectsWhenItsClockAndTheCertificateAgreeAtLast) {
    // As a device sees it whose clock is wrong.
    authority.issue("broker", -1);
    broker->kill();
    broker->start();
    RunningBridge bridge(host, broker->address(), "tv", bridgeOptions());
    bridge.awaitLog("cannot reach the broker");
    authority.issue("broker");
    broker->kill();
    broker->start();
    bridge.awaitLog("connected to the broker");
}

class MqttCommandLine : public testing::Test {
protected:
    TestSupport::Finished run(std::vector<std::string> options) const {
        options.insert(options.begin(),
                       {SETTINGS_MQTT_PROGRAM, "--socket", folder / "none", "--state", folder / "state"});
        return TestSupport::run(options);
    }

    TestSupport::TemporaryDirectory folder;
};

TEST_F(MqttCommandLine, RefusesWrongUsage) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> table{
        {{"--id", "all"}, "names several devices"},
        {{"--id", "a/b"}, "is not a name"},
        {{"--group", "#"}, "is not a name"},
        {{"--broker", ""}, "is not HOST or HOST:PORT"},
        {{"--broker", ":1883"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:0"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:65536"}, "is not HOST or HOST:PORT"},
        {{"--broker", "[::1]1883"}, "is not HOST or HOST:PORT"},
        {{"--broker", "[::1]:"}, "is not HOST or HOST:PORT"},
        {{"--broker", "[::1]:65536"}, "is not HOST or HOST:PORT"},
        {{"--broker", "::1"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:000001"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:+1"}, "is not HOST or HOST:PORT"},
        {{"--broker", "host:1:2"}, "is not HOST or HOST:PORT"},
        {{"--protocol", "4"}, "--protocol"},
        {{"--keepalive", "4"}, "--keepalive"},
        {{"--longest-pause", "0"}, "--longest-pause"},
        {{"--certificate", "c.pem"}, "--certificate requires --key"},
        {{"--certificate", "c.pem", "--key", "k.pem"}, "--key requires --ca"},
        {{"--ca", "ca.pem", "--key", "k.pem"}, "--key requires --certificate"},
        {{"--config", folder / "missing"}, "missing"},
        {{"extra"}, "extra"},
    };
    for (const auto& [options, message] : table) {
        const auto finished = run(options);
        EXPECT_EQ(finished.status, 2) << message;
        EXPECT_NE(finished.errors.find(message), std::string::npos) << message << ": " << finished.errors;
    }
}

TEST_F(MqttCommandLine, TakesEachFormOfTheBrokersAddress) {
    for (const std::string address : {"host", "host:1", "host:65535", "[::1]", "[::1]:1883", "192.0.2.1:00080"}) {
        // The start fails after the options were read.
        const auto finished = run({"--broker", address, "--credentials", folder / "missing"});
        EXPECT_EQ(finished.status, 1) << address << ": " << finished.errors;
    }
}

TEST_F(MqttCommandLine, SaysThatItCannotReachTheHost) {
    const std::string socket = folder / "none";
    TestSupport::ChildProcess bridge({SETTINGS_MQTT_PROGRAM, "--socket", socket, "--state", folder / "state"});
    bridge.errors().readLine();
    const auto line = bridge.errors().readLine();
    ASSERT_TRUE(line);
    EXPECT_NE(line->find(" warning cannot reach the host at " + socket + ": "), std::string::npos) << *line;
}

TEST_F(MqttCommandLine, KeepsItsStateInTheFirstFolderOfTheServiceManager) {
    TestSupport::ChildProcess bridge({SETTINGS_MQTT_PROGRAM, "--socket", folder / "none"},
                                     {{"STATE_DIRECTORY", folder / "first:" + std::string(folder / "second")}});
    ASSERT_TRUE(bridge.errors().readLine());
    EXPECT_TRUE(std::filesystem::is_directory(folder / "first"));
    const auto without =
        TestSupport::run({SETTINGS_MQTT_PROGRAM}, {{"STATE_DIRECTORY", ""}, {"XDG_STATE_HOME", ""}, {"HOME", ""}});
    EXPECT_EQ(without.status, 2);
    EXPECT_EQ(without.errors,
              "settings-mqtt: --state is required: none of STATE_DIRECTORY, XDG_STATE_HOME and HOME names a folder\n");
}

TEST_F(MqttCommandLine, SaysWhyItCannotStoreTheAppliedVersions) {
    SettingsCtlTests::RunningHost host;
    RunningBroker broker;
    Subscriber subscriber(broker.port(), {"settings/tv/availability"});
    const std::string state = folder / "state";
    std::filesystem::create_directory(state);
    // It can be written, but not opened to be flushed.
    ::chmod(state.c_str(), 0300);
    std::vector<std::string> command{SETTINGS_MQTT_PROGRAM,
                                     "--socket",
                                     host.socketPath(),
                                     "--broker",
                                     broker.address(),
                                     "--id",
                                     "tv",
                                     "--state",
                                     state};
    if (::geteuid() == 0) {
        command.insert(command.begin(), {"setpriv", "--bounding-set=-dac_override,-dac_read_search"});
    }
    TestSupport::ChildProcess bridge(command);
    subscriber.await("settings/tv/availability online");
    bridge.sendSignal(SIGTERM);
    EXPECT_EQ(bridge.wait(), 0);
    EXPECT_NE(bridge.errors().readAll().find("cannot store the applied versions in " + state +
                                             "/versions: Permission denied"),
              std::string::npos);
    // To be removed.
    ::chmod(state.c_str(), 0700);
}

TEST_F(MqttCommandLine, RefusesCredentialsThatOthersCanRead) {
    const std::string file = folder / "credentials";
    std::ofstream(file) << "user\npassword\n";
    for (const mode_t mode : {0644U, 0604U, 0660U, 0602U}) {
        ::chmod(file.c_str(), mode);
        const auto finished = run({"--credentials", file});
        EXPECT_EQ(finished.status, 1);
        EXPECT_NE(finished.errors.find("must belong to root or this user"), std::string::npos) << finished.errors;
    }
    EXPECT_EQ(run({"--credentials", folder / "missing"}).status, 1);
    ::chmod(file.c_str(), 0600);
    std::ofstream(file) << "\npassword\n";
    EXPECT_NE(run({"--credentials", file}).errors.find("has no user"), std::string::npos);
    EXPECT_EQ(run({"--credentials", "/dev/null"}).status, 1);
}

TEST_F(MqttCommandLine, ReadsItsOptionsFromAFile) {
    SettingsCtlTests::RunningHost host;
    RunningBroker broker;
    std::ofstream(folder / "config") << "broker=\"[127.0.0.1]:" << broker.port()
                                     << "\"\nid=\"tv\"\ngroup=[\"lobby\",\"bar\"]\nhome-assistant=true\n";
    TestSupport::ChildProcess bridge({SETTINGS_MQTT_PROGRAM, "--socket", host.socketPath(), "--state", folder / "state",
                                      "--config", folder / "config"});
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    const std::string discovery = "homeassistant/switch/settings-tv/handsFreeEnabled/config";
    EXPECT_EQ(Subscriber(broker.port(), {discovery}).next().rfind(discovery + " {", 0), 0U);
    publish(broker.port(), "settings/group/bar/set/timezone", "Asia/Tokyo");
    subscriber.await(R"(settings/tv/outcome {"key":"timezone","outcome":"changed")");
}

TEST_F(MqttCommandLine, NamesTheDeviceAfterTheMachineId) {
    TestSupport::ChildProcess bridge({SETTINGS_MQTT_PROGRAM, "--socket", folder / "none", "--state", folder / "state"});
    const auto id =
        TestSupport::run({"systemd-id128", "machine-id", "--app-specific=ad754e8bfab24579aeb2afc65126a649"});
    ASSERT_EQ(id.output.size(), 33U);
    const auto line = bridge.errors().readLine();
    ASSERT_TRUE(line);
    EXPECT_NE(line->find("topics of this device: settings/" + id.output.substr(0, 32) + "/#"), std::string::npos)
        << *line;
}

TEST_F(MqttCommandLine, PrintsHelpAndVersion) {
    const auto help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("--home-assistant"), std::string::npos);
    EXPECT_EQ(run({"--version"}).output.rfind("settings-mqtt " SETTINGS_HANDLER_VERSION, 0), 0U);
}

}  // namespace SettingsMqttTest
