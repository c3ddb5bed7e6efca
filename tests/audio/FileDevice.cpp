#include "audio/FileDevice.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

namespace tavlo::test {

bool becomesTrue(const std::function<bool()>& what)
{
    QElapsedTimer waited;
    for (waited.start(); !what(); QThread::msleep(5)) {
        if (waited.elapsed() > 30'000)
            return false;
    }
    return true;
}

FileDevice& FileDevice::instance()
{
    static FileDevice device;
    return device;
}

FileDevice::FileDevice()
{
    QFile configuration(_folder.filePath("alsoft.conf"));
    EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write("[general]\ndrivers = wave\nchannels = stereo\nsample-type = int16\nfrequency = 48000\n"
                        "dither = false\noutput-limiter = false\n[wave]\nfile = " +
                        path().toUtf8() + "\n");
    qputenv("ALSOFT_CONF", configuration.fileName().toUtf8());
    qputenv("ALSOFT_DRIVERS", "wave");
}

std::vector<qint16> FileDevice::played() const
{
    QFile file(path());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    const auto begin = content.indexOf("data") + 8;
    std::vector<qint16> samples(static_cast<size_t>(content.size() - begin) / 2);
    memcpy(samples.data(), content.constData() + begin, samples.size() * 2);
    return samples;
}

bool FileDevice::play(int milliseconds) const
{
    const qint64 enough = QFileInfo(path()).size() + qint64{48000} * 4 * milliseconds / 1000;
    return becomesTrue([&] { return QFileInfo(path()).size() >= enough; });
}

void FileDevice::unplug(bool unplugged)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = unplugged ? 1 : limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
}

void FileDevice::makeLate()
{
    QFile::remove(path());
    EXPECT_EQ(mkfifo(path().toUtf8().constData(), 0600), 0);
}

void FileDevice::makePrompt() { QFile::remove(path()); }

} // namespace tavlo::test
