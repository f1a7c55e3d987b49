#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <boost/asio/buffers_iterator.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket.hpp>
#include <sqlite3.h>

/// The floor under the host: Boost.Asio takes a frame at a Unix socket (raw), Boost.Beast at a WebSocket; SQLite stores
/// it as the value of one key as durably as the host does, and the frame goes back.
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using boost::system::error_code;

struct Closer {
    void operator()(sqlite3* open) const { sqlite3_close(open); }
    void operator()(sqlite3_stmt* prepared) const { sqlite3_finalize(prepared); }
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

class SocketEcho : public std::enable_shared_from_this<SocketEcho> {
public:
    SocketEcho(asio::local::stream_protocol::socket connected, Table& tableToFill)
        : socket(std::move(connected)), table(tableToFill) {}

    void read() {
        socket.async_read_some(asio::buffer(bytes), [self = shared_from_this()](error_code error, std::size_t size) {
            if (!error) {
                self->echo(size);
            }
        });
    }

private:
    void echo(std::size_t size) {
        table.put({bytes.data(), size});
        asio::async_write(socket, asio::buffer(bytes.data(), size),
                          [self = shared_from_this()](error_code error, std::size_t /*size*/) {
                              if (!error) {
                                  self->read();
                              }
                          });
    }

    asio::local::stream_protocol::socket socket;
    Table& table;
    std::array<char, 65536> bytes{};
};

class WebSocketEcho : public std::enable_shared_from_this<WebSocketEcho> {
public:
    WebSocketEcho(asio::ip::tcp::socket connected, Table& tableToFill)
        : stream(std::move(connected)), table(tableToFill) {}

    void open() {
        stream.next_layer().set_option(asio::ip::tcp::no_delay(true));
        beast::http::async_read(stream.next_layer(), bytes, request,
                                [self = shared_from_this()](error_code error, std::size_t /*size*/) {
                                    if (!error) {
                                        self->accept();
                                    }
                                });
    }

private:
    void accept() {
        stream.set_option(beast::websocket::stream_base::decorator([this](beast::websocket::response_type& answer) {
            answer.set(beast::http::field::sec_websocket_protocol, request[beast::http::field::sec_websocket_protocol]);
        }));
        stream.async_accept(request, [self = shared_from_this()](error_code error) {
            if (!error) {
                self->read();
            }
        });
    }

    void read() {
        stream.async_read(bytes, [self = shared_from_this()](error_code error, std::size_t /*size*/) {
            if (!error) {
                self->echo();
            }
        });
    }

    void echo() {
        const auto frame = bytes.data();
        table.put({static_cast<const char*>(frame.data()), frame.size()});
        stream.text(true);
        stream.async_write(frame, [self = shared_from_this()](error_code error, std::size_t size) {
            self->bytes.consume(size);
            if (!error) {
                self->read();
            }
        });
    }

    beast::websocket::stream<asio::ip::tcp::socket> stream;
    Table& table;
    beast::flat_buffer bytes;
    beast::http::request<beast::http::string_body> request;
};

class EchoServer {
public:
    EchoServer(const std::string& socketPath, const std::string& databaseFile)
        : table(databaseFile),
          sockets(context, socketPath),
          webSockets(context, {asio::ip::address_v4::loopback(), 0}) {
        acceptSocket();
        acceptWebSocket();
    }

    int port() const { return webSockets.local_endpoint().port(); }
    void run() { context.run(); }

private:
    void acceptSocket() {
        sockets.async_accept([this](error_code error, asio::local::stream_protocol::socket socket) {
            if (!error) {
                std::make_shared<SocketEcho>(std::move(socket), table)->read();
            }
            acceptSocket();
        });
    }

    void acceptWebSocket() {
        webSockets.async_accept([this](error_code error, asio::ip::tcp::socket socket) {
            if (!error) {
                std::make_shared<WebSocketEcho>(std::move(socket), table)->open();
            }
            acceptWebSocket();
        });
    }

    Table table;
    /// With one thread no locks are needed.
    asio::io_context context{1};
    asio::local::stream_protocol::acceptor sockets;
    asio::ip::tcp::acceptor webSockets;
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
