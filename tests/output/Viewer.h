#pragma once

#include "OutputSupport.h"

#include <QProcess>
#include <QStringList>

#include <vector>

namespace tavlo::test {

/// The `ffmpeg` command, looking at a stream of the programme, and listening to it.
class Viewer
{
public:
    /// \param input  options of the input and its address
    explicit Viewer(const QStringList& input, bool hasSound = true);
    ~Viewer();

    /// Waits a moment for pictures and reads them. False when the command has given up; then it has told why.
    bool look();

    const std::vector<int>& numbers() const { return _numbers; } ///< what the pictures show
    int last() const { return _numbers.empty() ? -1 : _numbers.back(); }

private:
    QProcess _process;
    QByteArray _bytes;
    std::vector<int> _numbers;
};

/// Commits pictures from `number` on until the viewer has seen `count` of them that were committed when he saw already,
/// and never runs far ahead of him. Each of those has to be there, in order.
void expectToFollow(Stage& stage, Viewer& viewer, int& number, int count);

/// A port that nobody uses on the loopback address, the three behind it free for this process, too. It is even, and
/// below those that the kernel gives to connections.
int freePort();

/// Somebody who asks the server at a port of the loopback address for a path.
class HttpReader
{
public:
    /// \param receiveBuffer  bytes that may wait for him; 0: as usual
    HttpReader(int port, const QByteArray& path, int receiveBuffer = 0);
    ~HttpReader();

    /// All that comes from now on to the end of the connection, with HTTP's own lines.
    QByteArray readAll();

private:
    int _socket;
};

/// Returns when somebody listens on the port, with TCP or with UDP.
void awaitListener(int port);

} // namespace tavlo::test
