#pragma once

#include <tavlo/IUnknownEx.h>

class IGLAudioDeviceContext;

/// One sound in a mix. Made by `CreateTavloGLAudioRenderer`.
///
/// Blocks come at the pace of their source's clock; the renderer follows that clock by resampling a little faster or
/// slower. Sound is late by 20 milliseconds and a block and a half, by more where blocks come irregularly. Any thread
/// between `create` and `release`, which belong to the owner's thread.
class IGLAudioRenderer : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x7f2ac81d, 0x4b35, 0x4e60, 0x8c, 0xd9, 0x13,
                                                  0x5a,       0x6f,   0xe2,   0x04, 0xb8};

    /// Joins a mix that is prepared; an earlier one is left first. False, with a log line, when there is none.
    /// \param context  made by the same module, lent until `release`
    virtual bool create(IGLAudioDeviceContext* context) = 0;

    /// Leaves the mix.
    virtual void release() = 0;

    /// Hands interleaved samples on and returns at once. Of what waits longer than a quarter of a second beyond the usual
    /// the oldest is dropped, which is logged once. Nothing is allocated as long as format and length stay.
    /// \param length    bytes; what is not a whole frame at the end is left out
    /// \param channels  1 to 8, laid out anew where the mix has others
    /// \param bits      8 (unsigned) or 16 (signed) a sample
    /// \param rate      Hz
    /// \return false outside a mix, or for a format that cannot be converted, which is logged once
    virtual bool write(const void* data, int length, int channels, int bits, int rate) = 0;

    /// The same in time, unheard.
    virtual void writeSilence(int length, int channels, int bits, int rate) = 0;

    /// Takes part from now on: until the first call a renderer is silent.
    virtual void listen() = 0;

    /// A factor, 1 at first; the change takes 10 milliseconds. A negative one leaves it as it is.
    virtual void setALSourceVolume(float volume) = 0;

    /// \param now  true: what waits is dropped, the sound ends within 5 milliseconds. False: what waits is played to its
    ///             end, and what follows is a sound of its own.
    virtual void flush(bool now) = 0;

    /// Microseconds of the source's sound that have gone into the mix (or were dropped) since `create`.
    /// \return 0; -1 and a time of 0 outside a mix
    virtual int getTime(qint64* time) = 0;

    /// Falls silent within 5 milliseconds; what waits stays. \param date not read
    virtual void pause(qint64 date) = 0;

    /// Goes on where it paused. \param date not read
    virtual void resume(qint64 date) = 0;

protected:
    ~IGLAudioRenderer() = default;
};
