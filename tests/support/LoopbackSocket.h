#pragma once

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tavlo::test {

/// A TCP socket that listens on that port of the loopback, or on a free one for 0. The caller closes it.
inline int listenOnLoopback(int& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
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

} // namespace tavlo::test
