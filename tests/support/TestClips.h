#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <QtGlobal>

#include <csignal>

namespace tavlo::test {

/// `ffmpeg`'s options, separated by blanks.
QStringList optionsOf(const QString& text);

/// A clip of which each picture says which one it is, and each second of sound which one that is.
///
/// The number of a picture stands in its upper half as 12 blocks, black or white, highest bit first; the lower half
/// moves, so that no two pictures are alike. The sound of second n is a tone of 400 + 200 * (n % 8) Hz.
struct ClipForm
{
    int width = 192;
    int height = 108;
    int fps = 25;
    int frames = 50;
    int firstNumber = 0; ///< of the first picture
    bool pictures = true;
    bool sound = true;
    QStringList options = optionsOf("-c:v libx264 -preset ultrafast -g 12 -bf 2 -c:a aac");
    QString suffix = QStringLiteral("mp4");
};

/// A clip of that coding, otherwise as it is usual.
ClipForm codedClip(const char* suffix, const QString& options, int frames = 50);

/// The clip's file, made by the `ffmpeg` command the first time it is asked for and kept to the end of the program.
/// Empty, with a failure of the running test, when it cannot be made.
QString clipFile(const ClipForm& form);

/// The arguments that make `ffmpeg` send such a clip: sources and codecs, without the target.
QStringList clipArguments(const ClipForm& form, bool endless, bool inRealTime);

/// A program that runs beside the test, ended with the object. The thread sanitizer takes the way in which QProcess
/// starts a child for a fork, and stops looking at the thread that did it.
class Command
{
public:
    Command(const QString& program, const QStringList& arguments);
    ~Command() { kill(); }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    bool isRunning() const { return _process > 0; }

    /// Waits for its end. \return whether it was content
    bool finish();

    /// Asks it to end, or has it ended, and waits until it has.
    void kill(int signal = SIGKILL);

private:
    pid_t _process = -1;
};

/// What makes `ffmpeg` quiet, in front of its other arguments.
QStringList quietFfmpeg(const QStringList& arguments);

/// Runs `ffmpeg` to its end. \return whether it was content
bool runFfmpeg(const QStringList& arguments);

/// A file's path in the folder of the program's clips.
QString clipFolderFile(const QString& name);

/// The number that a picture shows, out of its brightness. -1 when the blocks are neither black nor white.
/// \param luma    bytes, `stride` from one to the next in a row, `pitch` from row to row
int pictureNumber(const quint8* luma, int width, int height, int pitch, int stride = 1);

/// The second that a tone belongs to, 0 to 7; -1 for silence and anything else.
/// \param samples  interleaved, of the left channel at each `channels`
int toneSecond(const qint16* samples, int frames, int channels, int rate);

} // namespace tavlo::test
