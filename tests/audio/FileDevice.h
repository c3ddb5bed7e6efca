#pragma once

#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <vector>

namespace tavlo::test {

/// Waits, for as long as it may take on a machine with other work, until something is so.
bool becomesTrue(const std::function<bool()>& what);

/// A machine whose one sound device writes a file, in real time as any device: 48 kHz, stereo, 16 bits. To be made before
/// the sound library looks at the machine.
class FileDevice
{
public:
    static FileDevice& instance();

    QString path() const { return _folder.filePath("played.wav"); }

    /// What has been played since the device was opened; stereo, after it was closed.
    std::vector<qint16> played() const;

    /// Waits until the device has played that much more.
    bool play(int milliseconds) const;

    /// What is played next fails, as if the device were pulled out; or it is back, for who opens it anew.
    void unplug(bool unplugged);

    /// From the next opening on the device takes as long to open as nobody reads the file.
    void makeLate();
    void makePrompt();

private:
    FileDevice();

    QTemporaryDir _folder;
};

} // namespace tavlo::test
