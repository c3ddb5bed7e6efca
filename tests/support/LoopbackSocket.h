#pragma once

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <thread>

namespace tavlo::test {

inline sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    return address;
}

/// Whether this machine's loopback has an address of IPv6.
inline bool hasIpv6()
{
    const int handle = socket(AF_INET6, SOCK_STREAM, 0);
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    const bool bound = bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(handle);
    return bound;
}

/// A TCP socket that listens on that port of the loopback, or on a free one for 0. The caller closes it.
inline int listenOnLoopback(int& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(port);
    const int again = 1; // whoever had it before may have left guests
    EXPECT_EQ(setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &again, sizeof(again)), 0);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(listener, generic, size), 0);
    EXPECT_EQ(listen(listener, 16), 0);
    EXPECT_EQ(getsockname(listener, generic, &size), 0);
    port = ntohs(address.sin_port);
    return listener;
}

/// Serves on a port of the loopback, one guest after the other, on a thread of its own.
class LoopbackServer
{
public:
    explicit LoopbackServer(std::function<void(int guest)> serve, int port = 0)
        : _port(port), _socket(listenOnLoopback(_port)), _serve(std::move(serve)), _thread([this] { run(); })
    {}

    ~LoopbackServer()
    {
        shutdown(_socket, SHUT_RDWR); // accept returns
        _thread.join();
        close(_socket);
    }

    int port() const { return _port; }

private:
    void run()
    {
        for (int guest = -1; (guest = accept(_socket, nullptr, nullptr)) >= 0; close(guest))
            _serve(guest);
    }

    int _port;
    const int _socket; ///< behind the port, which it sets
    const std::function<void(int)> _serve;
    std::thread _thread;
};

} // namespace tavlo::test
