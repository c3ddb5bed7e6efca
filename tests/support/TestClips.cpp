#include "support/TestClips.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavlo::test {
namespace {

constexpr int bits = 12;
constexpr int tones = 8;

double toneOf(int second) { return 400.0 + 200.0 * second; }

QTemporaryDir& folder()
{
    static QTemporaryDir directory;
    return directory;
}

/// A white box for each bit that is set in the picture's number.
QString counterFilter(const ClipForm& form)
{
    QStringList filters;
    for (int bit = 0; bit < bits; ++bit) {
        filters << QStringLiteral("drawbox=x=%1:y=0:w=%2:h=%3:t=fill:c=white:enable='mod(floor((n+%4)/%5),2)'")
                       .arg(form.width * bit / bits)
                       .arg(form.width / bits)
                       .arg(form.height / 2)
                       .arg(form.firstNumber)
                       .arg(1 << (bits - 1 - bit));
    }
    return filters.join(u',');
}

QString pictureSource(const ClipForm& form, const QString& duration)
{
    return QStringLiteral("testsrc=size=%1x%2:rate=%3%4,format=yuv420p,drawbox=x=0:y=0:w=iw:h=ih/2:t=fill:c=black,%5")
        .arg(form.width)
        .arg(form.height)
        .arg(form.fps)
        .arg(duration, counterFilter(form));
}

QString soundSource(const ClipForm& form, const QString& duration)
{
    const double shift = static_cast<double>(form.firstNumber) / form.fps;
    return QStringLiteral("aevalsrc='0.5*sin(2*PI*(400+200*mod(floor(t+%1),%2))*t)':s=48000:c=stereo%3")
        .arg(shift)
        .arg(tones)
        .arg(duration);
}

} // namespace

QStringList optionsOf(const QString& text) { return text.split(u' '); }

ClipForm codedClip(const char* suffix, const QString& options, int frames)
{
    ClipForm form;
    form.frames = frames;
    form.suffix = QString::fromLatin1(suffix);
    form.options = optionsOf(options);
    return form;
}

QStringList clipArguments(const ClipForm& form, bool endless, bool inRealTime)
{
    const QString duration =
        endless ? QString() : QStringLiteral(":d=%1").arg(static_cast<double>(form.frames) / form.fps);
    QStringList arguments;
    const auto addInput = [&](const QString& source) {
        if (inRealTime)
            arguments << QStringLiteral("-re");
        arguments << QStringLiteral("-f") << QStringLiteral("lavfi") << QStringLiteral("-i") << source;
    };
    if (form.pictures)
        addInput(pictureSource(form, duration));
    if (form.sound)
        addInput(soundSource(form, duration));
    return arguments + form.options;
}

QString clipFile(const ClipForm& form)
{
    const QStringList arguments = clipArguments(form, false, false);
    const QByteArray key =
        QCryptographicHash::hash((arguments.join(u' ') + form.suffix).toUtf8(), QCryptographicHash::Md5);
    const QString path = clipFolderFile(QString::fromLatin1(key.toHex()) + u'.' + form.suffix);
    if (!QFile::exists(path) && !runFfmpeg(arguments + QStringList{path})) {
        ADD_FAILURE() << "ffmpeg cannot make a clip: " << arguments.join(u' ').toStdString();
        QFile::remove(path);
        return {};
    }
    return path;
}

Command::Command(const QString& program, const QStringList& arguments)
{
    std::vector<std::string> words{program.toStdString()};
    for (const QString& argument : arguments)
        words.push_back(argument.toStdString());
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (posix_spawnp(&_process, pointers.front(), nullptr, nullptr, pointers.data(), environ) != 0)
        _process = -1;
}

bool Command::finish()
{
    int status = -1;
    const pid_t process = std::exchange(_process, -1);
    return process > 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void Command::kill(int signal)
{
    if (_process > 0)
        ::kill(_process, signal);
    finish();
}

QStringList quietFfmpeg(const QStringList& arguments)
{
    return optionsOf(QStringLiteral("-v error -nostdin -y")) + arguments;
}

bool runFfmpeg(const QStringList& arguments)
{
    return Command(QStringLiteral("ffmpeg"), quietFfmpeg(arguments)).finish();
}

QString clipFolderFile(const QString& name) { return folder().filePath(name); }

int pictureNumber(const quint8* luma, int width, int height, int pitch, int stride)
{
    int number = 0;
    for (int bit = 0; bit < bits; ++bit) {
        const int x = (2 * bit + 1) * width / (2 * bits);
        const int level = luma[height / 4 * pitch + x * stride];
        if (level > 90 && level < 160)
            return -1;
        number = 2 * number + (level > 128 ? 1 : 0);
    }
    return number;
}

int toneSecond(const qint16* samples, int frames, int channels, int rate)
{
    double energy = 0.0;
    std::array<double, tones> share{};
    for (int second = 0; second < tones; ++second) {
        const double turn = 2 * std::cos(2 * std::numbers::pi * toneOf(second) / rate); // Goertzel's way to a power
        double last = 0.0, beforeLast = 0.0;
        energy = 0.0;
        for (int i = 0; i < frames; ++i) {
            const double sample = samples[i * channels] / 32768.0;
            beforeLast = std::exchange(last, sample + turn * last - beforeLast);
            energy += sample * sample;
        }
        const double power = last * last + beforeLast * beforeLast - turn * last * beforeLast;
        share[static_cast<size_t>(second)] = 2 * power / (std::max(energy, 1e-9) * frames);
    }
    const auto best = std::max_element(share.begin(), share.end());
    return energy / frames > 1e-3 && *best > 0.8 ? static_cast<int>(best - share.begin()) : -1;
}

} // namespace tavlo::test
