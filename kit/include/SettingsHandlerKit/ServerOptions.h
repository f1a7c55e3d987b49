#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/ClientListener.h"
#include "SettingsHandlerKit/Environment.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/PassedSockets.h"

namespace SettingsHandlerKit {

/// When the age of the backups is checked, and how many pages are copied in one turn of the event loop, so that clients
/// are served meanwhile.
struct BackupTimes {
    /// Soon after the start, since many devices run for an hour a day; not at once, since people wait for the start.
    std::chrono::milliseconds firstCheck = std::chrono::seconds(5);
    /// Between two checks.
    std::chrono::milliseconds checkInterval = std::chrono::hours(1);
    /// A backup is made when the newest one is older.
    std::chrono::seconds maximumAge = std::chrono::hours(24);
    /// 64 KiB with pages of the usual size.
    int pagesPerTurn = 16;
};

/// What a server serves, and where.
struct ServerOptions {
    /// The Unix socket for clients; its folder is made (0700) if it is missing. Not used when `sockets` has "settings".
    /// Nothing for no Unix socket; to be set otherwise, an empty path is a `ListenerError`.
    std::optional<std::string> socketPath = "";
    /// The loopback address and port of pages, health and metrics: "127.0.0.1:8097", "[::1]:8097" or "localhost:8097";
    /// port 0 picks a free one. Nothing for no web port. When `sockets` has "web", that socket is used instead.
    std::optional<std::string> listen = "127.0.0.1:8097";
    /// The folder of the settings pages; empty for none.
    std::string pagesFolder;
    /// One more origin whose pages may connect, such as "http://localhost:5173"; empty for none.
    std::string allowedOrigin;
    /// The version that health and metrics report; by default the kit's.
    std::string version;
    /// Sockets from the service manager. The server takes "settings" and "web", and endpoints those of their names.
    PassedSockets sockets;
    /// When the watched storage is backed up.
    BackupTimes backups;
    /// Holds the request that is being handled, for log lines.
    std::shared_ptr<RequestContext> context = std::make_shared<RequestContext>();
    /// Clock and randomness.
    Environment environment;
    /// An interceptor between the connections of the settings and the server, such as a delay: returns the listener
    /// that receives clients and frames in place of `server` and may pass them on. Empty for none.
    std::function<std::shared_ptr<ClientListener>(std::shared_ptr<ClientListener> server)> between;
};

/// One more place where clients connect, with frames of its own: a Unix socket and, with a web port, a WebSocket at
/// "/NAME" with the subprotocol "NAME.v1". Limits, backlog and access are those of the settings.
struct Endpoint {
    /// Lower-case letters, digits and "-".
    std::string name;
    /// The path of the Unix socket. Not used when the passed sockets have one named `name`. Nothing for none; to be set
    /// otherwise, an empty path is a `ListenerError`.
    std::optional<std::string> socketPath = "";
    /// The origin of its clients; of those of the WebSocket PAGE instead of SOCKET.
    Origin origin = Origin::DEVICE;
};

/// Checks an address for `ServerOptions::listen`. Errors: `std::invalid_argument` as a message for a person.
void checkListenAddress(const std::string& text);

/// Checks an origin for `ServerOptions::allowedOrigin`. Errors: `std::invalid_argument` as a message for a person.
void checkAllowedOrigin(const std::string& text);

}  // namespace SettingsHandlerKit
