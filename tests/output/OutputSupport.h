#pragma once

#include "output/TavloPresentOutputTarget.h"

#include <tavlo/records/OutputRecords.h>

#include <QTemporaryDir>

#include <array>
#include <optional>
#include <vector>

namespace tavlo::test {

/// A programme that can be known again: each picture shows its number in its upper half as a test clip's does, and fields of colour in the lower one. Every tenth second part of the sound is a tone, from the
/// moment on at which a picture's number is a multiple of `beepEvery`.
struct Programme
{
    static constexpr int width = 192, height = 108, fps = 25, rate = 48000;
    static constexpr int beepEvery = 20;            ///< pictures
    static constexpr qint64 step = 1'000'000 / fps; ///< microseconds
    static constexpr qint64 begin = 7'000'000'000;  ///< time of picture 0, microseconds

    static std::array<quint8, 3> fieldColor(int field); ///< 0 to 5, from left to right
    static std::vector<quint8> picture(int number);     ///< red, green, blue, alpha; top row first
    static std::vector<qint16> sound(int number);       ///< two channels, the time of that picture
};

/// Committed pictures that are neither coded nor counted as lost; never fewer than there are.
qint64 openPictures(const tagTavloOutputStatistics& statistics);

/// A target in one of three ways, into which a programme is committed no faster than it is coded.
class Stage
{
public:
    enum class Way
    {
        Graphics,   ///< textures, made NV12 on the device
        Memory,     ///< textures, converted by libswscale
        Pictures,   ///< pictures in memory, no device
        BottomFirst ///< textures that keep their last row first, as Memory
    };

    explicit Stage(Way way);
    ~Stage();

    bool isUp() const { return _up; }
    static tagTavloPresentOutputParam param(const QString& folder);
    void start(int type, const tagTavloPresentOutputParam& param, int index = 0);
    void stop(int type, int index = 0) { target.stopOutput(index, type, true); }

    /// Pictures and sound of those numbers, each behind `awaitCoded`. For one output at a time.
    /// \param awaits  false: commits and looks at nothing
    void commit(int first, int count, bool awaits = true);

    /// Returns when all that output 0 wanted but so many are coded or counted as lost.
    void awaitCoded(int but = inFlight);

    tagTavloOutputStatistics statistics(int index = 0);

    /// Returns when the stream's target has written or lost all but what waits for its sound.
    void awaitWritten();

    void commitPicture(int number); ///< with no sound, and looks at nothing

    TavloPresentOutputTarget target;

private:
    static constexpr int inFlight = 5; ///< fits into the encoder's queue, whatever it holds itself

    void await(int index, int type);

    const Way _way;
    bool _up = false;
    tavlo::graphics::DevicePtr _device;
    tavlo::graphics::ContextPtr _context;
    tavlo::graphics::TexturePtr _texture;
    int _type = 0; ///< of the output that was started last
};

/// What a file or stream holds.
struct Decoded
{
    std::vector<int> numbers;                  ///< of the pictures in the order of their times
    std::vector<double> times;                 ///< theirs, seconds
    std::vector<std::array<double, 3>> colors; ///< of the first picture's six fields: red, green, blue
    std::vector<double> beeps;                 ///< when a tone sets in, seconds
    qint64 samples = 0;                        ///< of one channel
    bool plainIndex = false;                   ///< an MP4 without fragments
    QString error;

    bool beepsAt(double time) const; ///< within half a picture
};

Decoded decode(const QString& path);

/// first, first + 1, ...
std::vector<int> numbersFrom(int first, int count);

} // namespace tavlo::test
