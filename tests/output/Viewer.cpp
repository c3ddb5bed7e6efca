#include "Viewer.h"

#include "support/LoopbackSocket.h"
#include "support/TestClips.h"

#include <QFile>

#include <algorithm>
#include <csignal>
#include <thread>

namespace tavlo::test {

namespace {

constexpr int pictureBytes = Programme::width * Programme::height;

bool isFree(int kind, int port)
{
    const int handle = socket(AF_INET, kind, 0);
    const sockaddr_in address = loopback(port);
    const bool bound = bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(handle);
    return bound;
}

constexpr int ahead = 60; // pictures; fewer than any target lets wait, more than any container holds back

} // namespace

Viewer::Viewer(const QStringList& input, bool hasSound)
{
    const QString pictures = QStringLiteral("-map 0:v -fps_mode passthrough -s %1x%2 -f rawvideo -pix_fmt gray -");
    QStringList arguments =
        quietFfmpeg({"-threads", "1"}) + input + optionsOf(pictures.arg(Programme::width).arg(Programme::height));
    if (hasSound)
        arguments += optionsOf("-map 0:a -f null -"); // fails where there is none
    _process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    _process.start(QStringLiteral("ffmpeg"), arguments, QIODevice::ReadOnly);
}

Viewer::~Viewer()
{
    _process.kill();
    _process.waitForFinished();
}

bool Viewer::look(int milliseconds)
{
    _process.waitForReadyRead(milliseconds);
    _bytes += _process.readAllStandardOutput();
    for (; _bytes.size() >= pictureBytes; _bytes.remove(0, pictureBytes))
        _numbers.push_back(pictureNumber(reinterpret_cast<const quint8*>(_bytes.constData()), Programme::width,
                                         Programme::height, Programme::width));
    return _process.state() != QProcess::NotRunning;
}

void Viewer::halt() { kill(static_cast<pid_t>(_process.processId()), SIGSTOP); }

void Viewer::goOn() { kill(static_cast<pid_t>(_process.processId()), SIGCONT); }

void expectToFollow(Stage& stage, Viewer& viewer, int& number, int count, int pause, const std::function<void()>& also)
{
    while (viewer.numbers().empty()) {
        stage.commit(number++, 1);
        also();
        ASSERT_TRUE(viewer.look(pause));
    }
    const int first = number;
    while (viewer.last() < first + count - 1) {
        if (number < viewer.last() + ahead)
            stage.commit(number++, 1);
        also();
        ASSERT_TRUE(viewer.look());
    }
    const auto begin = std::ranges::find_if(viewer.numbers(), [first](int seen) { return seen >= first; });
    const auto seen = static_cast<int>(viewer.numbers().end() - begin);
    EXPECT_EQ(std::vector(begin, viewer.numbers().end()), numbersFrom(first, seen));
}

QByteArray httpGet(int port, const QByteArray& path)
{
    const int handle = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(connect(handle, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    const QByteArray request = "GET " + path + " HTTP/1.0\r\n\r\n"; // no chunks: what comes is the content
    EXPECT_EQ(send(handle, request.constData(), static_cast<size_t>(request.size()), 0), request.size());
    QByteArray bytes;
    std::array<char, 65'536> part{};
    for (ssize_t count = 0; (count = recv(handle, part.data(), part.size(), 0)) > 0;)
        bytes.append(part.data(), count);
    close(handle);
    return bytes;
}

Listener::Listener(int port, int kind) : _socket(socket(AF_INET, kind, 0))
{
    const int shared = 1;
    setsockopt(_socket, SOL_SOCKET, SO_REUSEPORT, &shared, sizeof(shared));
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(bind(_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_TRUE(kind != SOCK_STREAM || listen(_socket, 8) == 0);
}

Listener::~Listener()
{
    close(_connection);
    close(_socket);
}

void Listener::await()
{
    close(_connection);
    _connection = accept(_socket, nullptr, nullptr);
}

int freePort()
{
    static int next = 10'000 + static_cast<int>(getpid()) * 40 % 20'000;
    for (;; next += 4) {
        if (isFree(SOCK_STREAM, next) && isFree(SOCK_DGRAM, next)) {
            next += 4;
            return next - 4;
        }
    }
}

void awaitListener(int port)
{
    const QByteArray wanted = QByteArray(":") + QByteArray::number(port, 16).rightJustified(4, '0').toUpper();
    const auto isListed = [&](const char* path, const char* state) {
        QFile table(QString::fromLatin1(path));
        return table.open(QIODevice::ReadOnly) &&
               std::ranges::any_of(table.readAll().split('\n'), [&](const QByteArray& line) {
                   const QByteArrayList words = line.simplified().split(' ');
                   return words.size() > 3 && words[1].endsWith(wanted) && words[3] == state;
               });
    };
    while (!isListed("/proc/net/tcp", "0A") && !isListed("/proc/net/udp", "07") && !isListed("/proc/net/tcp6", "0A") &&
           !isListed("/proc/net/udp6", "07"))
        std::this_thread::yield();
}

} // namespace tavlo::test
