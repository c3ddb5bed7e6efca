#pragma once

#include <QByteArray>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

struct MHD_Connection;
struct MHD_Daemon;

namespace tavlo {

/// The way to somebody who is being sent a stream.
class HttpConnection
{
public:
    explicit HttpConnection(MHD_Connection* connection) : _connection(connection) {}

    /// Stops asking for bytes. From within `HttpStream::read` alone.
    void sleep();

    /// Asks again. Any thread, once for each `sleep`.
    void wake();

private:
    MHD_Connection* const _connection;
};

/// What one viewer is sent, as long as it comes. Dies with his connection.
class HttpStream
{
public:
    virtual ~HttpStream() = default;

    /// Server's thread.
    /// \return bytes that were written to `to`; 0: there are none now, and the connection sleeps; -1: the end
    virtual qint64 read(char* to, size_t size, HttpConnection& connection) = 0;
};

struct HttpReply
{
    std::string type;                   ///< of the content, as HTTP names it; empty: there is no such thing
    QByteArray body;                    ///< where there is neither of the following
    std::string file;                   ///< path of a file that is sent
    std::unique_ptr<HttpStream> stream; ///< never ends of its own account
};

/// Answers for a path and for everything below it. Server's thread.
class HttpResource
{
public:
    virtual ~HttpResource() = default;

    /// \param step  what follows the resource's path; without its first slash
    virtual HttpReply get(const std::string& step) = 0;
};

/// Serves resources over HTTP/1.1 on one address, on a thread of its own. Only reading is allowed.
///
/// Any thread.
class HttpServer
{
public:
    /// The server of that address: all who ask for the same one share it, and it ends with the last of them. Waits for the
    /// end of one that nobody holds any more.
    /// \param address  of this machine, IPv4 or IPv6; `::` is all of both
    /// \return null, the reason in `error`, when it cannot listen
    static std::shared_ptr<HttpServer> at(const std::string& address, quint16 port, std::string& error);

    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// False when somebody else answers for the path.
    bool add(const std::string& path, std::shared_ptr<HttpResource> resource);
    void remove(const std::string& path);

private:
    struct Known;
    using Address = std::pair<std::string, quint16>;

    explicit HttpServer(Address address) : _address(std::move(address)) {}

    static std::shared_ptr<HttpServer> listen(const std::string& address, quint16 port, std::string& error);
    HttpReply reply(const std::string& url);
    static bool send(MHD_Connection* connection, HttpReply reply);

    // fixed from `at` to the end
    const Address _address;
    MHD_Daemon* _daemon = nullptr;

    // guarded by _lock
    std::mutex _lock;
    std::map<std::string, std::shared_ptr<HttpResource>> _resources; ///< by path
};

/// A resource at its place, which it leaves with this object's end. Owner's thread.
class HttpPlace
{
public:
    HttpPlace() = default;
    HttpPlace(HttpPlace&& other) = default;
    HttpPlace& operator=(HttpPlace&& other);
    ~HttpPlace() { leave(); }

    /// False, the reason in `error`, when the address or the path is taken.
    bool take(const std::string& address, quint16 port, const std::string& path, std::shared_ptr<HttpResource> resource,
              std::string& error);
    void leave();
    bool isTaken() const { return _server != nullptr; }

private:
    std::shared_ptr<HttpServer> _server;
    std::string _path;
};

} // namespace tavlo
