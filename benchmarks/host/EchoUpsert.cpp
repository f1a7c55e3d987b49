#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include <libwebsockets.h>
#include <sqlite3.h>

/// The floor under the host: libwebsockets takes a frame at a Unix socket (raw) or a WebSocket, SQLite stores it as the
/// value of one key as durably as the host does, and the frame goes back.
namespace {

struct Closer {
    void operator()(sqlite3* open) const { sqlite3_close(open); }
    void operator()(sqlite3_stmt* prepared) const { sqlite3_finalize(prepared); }
    void operator()(lws_context* made) const { lws_context_destroy(made); }
};

/// One table of keys and values.
class Table {
public:
    explicit Table(const std::string& file) {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open(file.c_str(), &opened);
        connection.reset(opened);
        check(result);
        check(sqlite3_exec(opened,
                           "PRAGMA locking_mode=EXCLUSIVE; PRAGMA temp_store=MEMORY; PRAGMA journal_mode=WAL;"
                           "PRAGMA synchronous=FULL; PRAGMA wal_autocheckpoint=64;"
                           "CREATE TABLE settings (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL) WITHOUT ROWID",
                           nullptr, nullptr, nullptr));
        sqlite3_stmt* prepared = nullptr;
        check(sqlite3_prepare_v3(opened,
                                 "INSERT INTO settings (key, value) VALUES ('deviceName', ?1) ON CONFLICT (key) DO "
                                 "UPDATE SET value=excluded.value",
                                 -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr));
        upsert.reset(prepared);
    }

    void put(const std::string& value) {
        check(sqlite3_bind_text64(upsert.get(), 1, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
        const int result = sqlite3_step(upsert.get());
        check(result == SQLITE_DONE ? SQLITE_OK : result);
        check(sqlite3_reset(upsert.get()));
    }

private:
    void check(int result) const {
        if (result != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(connection.get()));
        }
    }

    std::unique_ptr<sqlite3, Closer> connection;
    std::unique_ptr<sqlite3_stmt, Closer> upsert;
};

class EchoServer {
public:
    EchoServer(const std::string& socketPath, const std::string& databaseFile) : table(databaseFile) {
        lws_set_log_level(LLL_ERR, nullptr);
        lws_context_creation_info info{};
        info.options = LWS_SERVER_OPTION_EXPLICIT_VHOSTS;
        info.port = CONTEXT_PORT_NO_LISTEN;
        info.user = this;
        context.reset(lws_create_context(&info));
        listenAtSocket(socketPath);
        listenAtPort();
    }

    int port() const { return lws_get_vhost_listen_port(webHost); }

    void run() {
        while (lws_service(context.get(), 0) >= 0) {
        }
    }

private:
    void listenAtSocket(const std::string& path) {
        static const std::array<lws_protocols, 2> protocols{
            {{"echo-raw", called, 0, 0, 0, nullptr, 0}, {nullptr, nullptr, 0, 0, 0, nullptr, 0}}};
        lws_context_creation_info info{};
        info.options = LWS_SERVER_OPTION_UNIX_SOCK | LWS_SERVER_OPTION_ADOPT_APPLY_LISTEN_ACCEPT_CONFIG;
        info.vhost_name = "socket";
        info.iface = path.c_str();
        info.protocols = protocols.data();
        info.listen_accept_role = "raw-skt";
        info.listen_accept_protocol = "echo-raw";
        if (context == nullptr || lws_create_vhost(context.get(), &info) == nullptr) {
            throw std::runtime_error("cannot listen at " + path);
        }
    }

    void listenAtPort() {
        static const std::array<lws_protocols, 2> protocols{
            {{"echo", called, 0, 0, 0, nullptr, 0}, {nullptr, nullptr, 0, 0, 0, nullptr, 0}}};
        lws_context_creation_info info{};
        info.vhost_name = "web";
        info.iface = "127.0.0.1";
        info.protocols = protocols.data();
        webHost = lws_create_vhost(context.get(), &info);
        if (webHost == nullptr) {
            throw std::runtime_error("cannot listen at a port");
        }
    }

    static int called(lws* connection, lws_callback_reasons reason, void* /*user*/, void* in, std::size_t size) {
        auto& server = *static_cast<EchoServer*>(lws_context_user(lws_get_context(connection)));
        switch (reason) {
            case LWS_CALLBACK_RAW_RX:
            case LWS_CALLBACK_RECEIVE:
                return server.received(connection, {static_cast<const char*>(in), size});
            case LWS_CALLBACK_RAW_WRITEABLE:
                return server.writable(connection, LWS_WRITE_RAW);
            case LWS_CALLBACK_SERVER_WRITEABLE:
                return server.writable(connection, LWS_WRITE_TEXT);
            case LWS_CALLBACK_RAW_CLOSE:
            case LWS_CALLBACK_CLOSED:
                server.waiting.erase(connection);
                return 0;
            default:
                return 0;
        }
    }

    int received(lws* connection, const std::string& frame) {
        try {
            table.put(frame);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            return -1;
        }
        waiting[connection].push_back(frame);
        lws_callback_on_writable(connection);
        return 0;
    }

    int writable(lws* connection, lws_write_protocol kind) {
        auto& frames = waiting[connection];
        if (frames.empty()) {
            return 0;
        }
        std::string bytes(LWS_PRE, '\0');
        bytes += frames.front();
        frames.pop_front();
        if (!frames.empty()) {
            lws_callback_on_writable(connection);
        }
        const std::size_t size = bytes.size() - LWS_PRE;
        auto* const start = reinterpret_cast<unsigned char*>(bytes.data()) + LWS_PRE;
        return lws_write(connection, start, size, kind) == static_cast<int>(size) ? 0 : -1;
    }

    Table table;
    std::unique_ptr<lws_context, Closer> context;
    lws_vhost* webHost = nullptr;
    std::unordered_map<lws*, std::deque<std::string>> waiting;
};

}  // namespace

/// Arguments: where to listen, and the database file, which must not be there yet. Prints the port of the WebSocket.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: echo-upsert SOCKET DATABASE\n");
        return 2;
    }
    try {
        EchoServer server(arguments[1], arguments[2]);
        std::printf("%d\n", server.port());
        std::fflush(stdout);
        server.run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
