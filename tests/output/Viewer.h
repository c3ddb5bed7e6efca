#pragma once

#include "OutputSupport.h"

#include <QProcess>
#include <QStringList>

#include <functional>
#include <sys/socket.h>
#include <vector>

namespace tavlo::test {

/// The `ffmpeg` command, looking at a stream of the programme, and listening to it.
class Viewer
{
public:
    /// \param input  options of the input and its address
    explicit Viewer(const QStringList& input, bool hasSound = true);
    ~Viewer();

    /// Waits for pictures, so many milliseconds at most, and reads them. False when the command has given up; then it has told why.
    bool look(int milliseconds = 10);

    /// Takes nothing more, until he goes on.
    void halt();
    void goOn();

    const std::vector<int>& numbers() const { return _numbers; } ///< what the pictures show
    int last() const { return _numbers.empty() ? -1 : _numbers.back(); }

private:
    QProcess _process;
    QByteArray _bytes;
    std::vector<int> _numbers;
};

/// Commits pictures from `number` on until the viewer has seen `count` of them that were committed when he saw already,
/// and never runs far ahead of him. Each of those has to be there, in order.
/// \param pause  milliseconds between those he may miss: the programme's own step for one who is served at its pace
/// \param also   comes behind each picture
void expectToFollow(
    Stage& stage, Viewer& viewer, int& number, int count, int pause = 10, const std::function<void()>& also = [] {});

/// A port that nobody uses on the loopback address, the three behind it free for this process, too. It is even, and
/// below those that the kernel gives to connections.
int freePort();

/// What a server at a port of the loopback address answers to who asks for a path, to the end of the connection and with
/// HTTP's own lines.
QByteArray httpGet(int port, const QByteArray& path);

/// Another program at a port of the loopback address, which it would share. It says nothing to those who come.
class Listener
{
public:
    /// \param kind  of socket; with SOCK_STREAM it listens
    explicit Listener(int port, int kind = SOCK_STREAM);
    ~Listener();

    /// Returns when somebody has come.
    void await();

private:
    int _socket;
    int _connection = -1;
};

/// Returns when somebody listens on the port, with TCP or with UDP.
void awaitListener(int port);

} // namespace tavlo::test
