#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "Checks.h"
#include "SettingsClient/Client.h"
#include "Verbs.h"
#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

namespace {

void printFinding(const OutputStyle& style, const Finding& finding) {
    if (style.json) {
        Wire::ObjectWriter writer;
        writer.text("check", finding.check);
        writer.boolean("ok", finding.ok);
        writer.text("text", finding.text);
        printLine(style, writer.finish());
        return;
    }
    const std::string mark =
        finding.ok ? coloured(style, Colour::GREEN, "ok   ") : coloured(style, Colour::RED, "wrong");
    printLine(style, mark + " " + finding.check + ": " + escaped(finding.text));
}

void append(Findings& findings, const Findings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

/// What a connection tells. `path` becomes the socket's.
/// Errors: `InvalidSocketPath`.
Findings checkHost(const Context& context, std::string& path) {
    Findings findings;
    SettingsClient::Client client = context.client();
    try {
        client.connect();
        path = client.socketPath();
        findings.push_back({"host", true, "serving at " + path});
        append(findings, checkStatus(client.status()));
        findings.push_back(checkPages(client.pageAddress()));
    } catch (const SettingsClient::NotSupported& error) {
        findings.push_back({"versions", false, std::string(error.what()) + ": restart it after an update"});
    } catch (const SettingsClient::InvalidSocketPath&) {
        throw;
    } catch (const SettingsClient::UnexpectedResponse& error) {
        findings.push_back({"host", false, std::string(error.what()) + ": name the host's socket with --socket"});
    } catch (const std::runtime_error& error) {
        const bool wasReached = !client.socketPath().empty();
        findings.push_back({"host", false,
                            std::string(error.what()) +
                                (wasReached ? ": see its log" : ": start it, or name its socket with --socket")});
    }
    return findings;
}

/// The socket at `path`, and the device's beside it.
Findings checkSockets(const Context& context, const std::string& path) {
    Findings findings = checkSocket("socket", path);
    const auto folder = std::filesystem::path(path).parent_path();
    for (const auto& candidate : context.deviceSockets) {
        if (std::filesystem::path(candidate.path).parent_path() == folder) {
            auto device = checkSocket("device socket", candidate.path);
            device.resize(std::min<std::size_t>(device.size(), 1));
            append(findings, device);
        }
    }
    return findings;
}

std::string orEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

Findings checkBridges() {
    BridgePlaces places{orEmpty(std::getenv("PATH")), {"/run"}};
    const std::string own = orEmpty(std::getenv("XDG_RUNTIME_DIR"));
    if (!own.empty()) {
        places.runtimeFolders.insert(places.runtimeFolders.begin(), own);
    }
    return {checkBridge("settings-dbus", places), checkBridge("settings-mqtt", places)};
}

}  // namespace

ExitStatus doctor(const Context& context) {
    // Without a host the first candidate is the user's own.
    std::string path = context.settingsSockets.front().path;
    Findings findings = checkHost(context, path);
    append(findings, checkSockets(context, path));
    append(findings, checkBridges());
    for (const auto& finding : findings) {
        printFinding(context.style, finding);
    }
    const bool allOk = std::all_of(findings.begin(), findings.end(), [](const auto& finding) { return finding.ok; });
    return allOk ? DONE : REFUSED;
}

}  // namespace SettingsCtl
