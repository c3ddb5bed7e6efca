#include "TavloOutputModule/HttpServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <microhttpd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace tavlo {

namespace {

constexpr unsigned patience = 30;           // seconds that a viewer may take nothing
constexpr unsigned mostConnections = 1'000; // at a time
constexpr int kernelBuffer = 262'144;       // bytes of each connection
constexpr size_t blockSize = 32'768;        // bytes that a stream is asked for at a time

struct FreeResponse
{
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, FreeResponse>;

/// A stream with the connection that it goes to.
struct Viewing
{
    std::unique_ptr<HttpStream> stream;
    HttpConnection connection;
};

ssize_t readStream(void* self, uint64_t, char* to, size_t size)
{
    auto& viewing = *static_cast<Viewing*>(self);
    const qint64 read = viewing.stream->read(to, size, viewing.connection);
    return read < 0 ? ssize_t{MHD_CONTENT_READER_END_OF_STREAM} : static_cast<ssize_t>(read);
}

Response streamResponse(MHD_Connection* connection, std::unique_ptr<HttpStream> stream)
{
    auto viewing = std::make_unique<Viewing>(Viewing{std::move(stream), HttpConnection(connection)});
    Response response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, blockSize, &readStream, viewing.get(),
                                                        [](void* self) { delete static_cast<Viewing*>(self); }));
    if (response)
        (void)viewing.release(); // the response's
    return response;
}

Response fileResponse(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    struct stat facts
    {};
    if (file < 0)
        return nullptr;
    if (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        ::close(file);
        return nullptr;
    }
    return Response(MHD_create_response_from_fd(static_cast<size_t>(facts.st_size), file));
}

Response bytesResponse(const QByteArray& bytes)
{
    return Response(MHD_create_response_from_buffer(static_cast<size_t>(bytes.size()),
                                                    const_cast<char*>(bytes.constData()), // it is copied
                                                    MHD_RESPMEM_MUST_COPY));
}

/// Where to listen.
struct Listening
{
    sockaddr_storage address{};
    unsigned flags = 0; ///< the server's for such an address
};

std::optional<Listening> listeningAt(const std::string& address, quint16 port)
{
    Listening place;
    auto& four = reinterpret_cast<sockaddr_in&>(place.address);
    auto& six = reinterpret_cast<sockaddr_in6&>(place.address);
    if (inet_pton(AF_INET, address.c_str(), &four.sin_addr) == 1) {
        four.sin_family = AF_INET;
        four.sin_port = htons(port);
    } else if (inet_pton(AF_INET6, address.c_str(), &six.sin6_addr) == 1) {
        six.sin6_family = AF_INET6;
        six.sin6_port = htons(port);
        place.flags = IN6_IS_ADDR_UNSPECIFIED(&six.sin6_addr) ? MHD_USE_DUAL_STACK : MHD_USE_IPv6;
    } else {
        return std::nullopt;
    }
    return place;
}

} // namespace

void HttpConnection::sleep() { MHD_suspend_connection(_connection); }

void HttpConnection::wake() { MHD_resume_connection(_connection); }

/// All servers of this process.
struct HttpServer::Known
{
    // guarded by lock
    std::mutex lock;
    std::condition_variable ended;
    std::map<Address, std::weak_ptr<HttpServer>> servers; ///< those that listen; expired where one is about to end

    static Known& instance()
    {
        static auto& known = *new Known; // as long as any server
        return known;
    }
};

std::shared_ptr<HttpServer> HttpServer::at(const std::string& address, quint16 port, std::string& error)
{
    Known& known = Known::instance();
    const Address key(address, port);
    std::unique_lock guard(known.lock);
    std::shared_ptr<HttpServer> server;
    known.ended.wait(guard, [&] { // one that is about to end still has the port
        const auto found = known.servers.find(key);
        return found == known.servers.end() || (server = found->second.lock());
    });
    if (!server && (server = listen(address, port, error)))
        known.servers.emplace(key, server);
    return server;
}

std::shared_ptr<HttpServer> HttpServer::listen(const std::string& address, quint16 port, std::string& error)
{
    const std::optional<Listening> place = listeningAt(address, port);
    if (!place) {
        error = address + " is no address";
        return nullptr;
    }
    std::shared_ptr<HttpServer> server(new HttpServer({address, port}));
    const auto handle = [](void* self, MHD_Connection* connection, const char* url, const char* method, const char*,
                           const char*, size_t*, void**) {
        const std::string_view verb = method;
        const bool reads = verb == MHD_HTTP_METHOD_GET || verb == MHD_HTTP_METHOD_HEAD;
        const bool sent = send(connection, reads ? static_cast<HttpServer*>(self)->reply(url) : HttpReply());
        return sent ? MHD_YES : MHD_NO;
    };
    errno = 0;
    server->_daemon =
        MHD_start_daemon(MHD_USE_AUTO_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | place->flags, port, nullptr, nullptr,
                         +handle, server.get(), MHD_OPTION_SOCK_ADDR, &place->address, MHD_OPTION_CONNECTION_TIMEOUT,
                         patience, MHD_OPTION_CONNECTION_LIMIT, mostConnections, MHD_OPTION_END);
    if (!server->_daemon) {
        error = std::string("cannot listen: ") + std::strerror(errno);
        return nullptr;
    }
    // Those who are accepted have it from the listener. What waits for a slow viewer waits in his queue, which knows
    // what to leave out.
    const int listener = MHD_get_daemon_info(server->_daemon, MHD_DAEMON_INFO_LISTEN_FD)->listen_fd;
    setsockopt(listener, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    return server;
}

HttpServer::~HttpServer()
{
    if (!_daemon)
        return;
    MHD_stop_daemon(_daemon);
    Known& known = Known::instance();
    {
        const std::lock_guard guard(known.lock);
        known.servers.erase(_address);
    }
    known.ended.notify_all();
}

bool HttpServer::add(const std::string& path, std::shared_ptr<HttpResource> resource)
{
    const std::lock_guard guard(_lock);
    return _resources.emplace(path, std::move(resource)).second;
}

void HttpServer::remove(const std::string& path)
{
    const std::lock_guard guard(_lock);
    _resources.erase(path);
}

/// From the resource at the URL, or else at the part of it in front of its last slash.
HttpReply HttpServer::reply(const std::string& url)
{
    std::shared_ptr<HttpResource> resource;
    std::string step;
    {
        const std::lock_guard guard(_lock);
        auto found = _resources.find(url);
        if (const size_t slash = url.rfind('/'); found == _resources.end() && slash != std::string::npos) {
            step = url.substr(slash + 1);
            found = _resources.find(url.substr(0, slash));
        }
        if (found == _resources.end())
            return {};
        resource = found->second;
    }
    return resource->get(step);
}

bool HttpServer::send(MHD_Connection* connection, HttpReply reply)
{
    unsigned status = MHD_HTTP_OK;
    Response response;
    if (reply.stream)
        response = streamResponse(connection, std::move(reply.stream));
    else if (!reply.file.empty())
        response = fileResponse(reply.file);
    else if (!reply.type.empty())
        response = bytesResponse(reply.body);
    if (!response) {
        status = MHD_HTTP_NOT_FOUND;
        reply.type = "text/plain";
        response = bytesResponse("not here\n");
    }
    if (!response)
        return false;
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, reply.type.c_str());
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CACHE_CONTROL, "no-cache");
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ACCESS_CONTROL_ALLOW_ORIGIN, "*"); // players on web pages
    return MHD_queue_response(connection, status, response.get()) == MHD_YES;
}

HttpPlace& HttpPlace::operator=(HttpPlace&& other)
{
    leave();
    _server = std::move(other._server);
    _path = std::move(other._path);
    return *this;
}

bool HttpPlace::take(const std::string& address, quint16 port, const std::string& path,
                     std::shared_ptr<HttpResource> resource, std::string& error)
{
    leave();
    std::shared_ptr<HttpServer> server = HttpServer::at(address, port, error);
    if (!server)
        return false;
    if (!server->add(path, std::move(resource))) {
        error = path + " is served already";
        return false;
    }
    _server = std::move(server);
    _path = path;
    return true;
}

void HttpPlace::leave()
{
    if (_server)
        _server->remove(_path);
    _server.reset();
}

} // namespace tavlo
