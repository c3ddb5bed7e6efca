#pragma once

#include <tavlo/IUnknownEx.h>

struct block_t;

/// Takes steady noise (hiss, hum, fans) out of sound and leaves voices. Made by `CreateTavloAudioNoiseSuppress`.
///
/// Owner's thread, one call at a time.
class ITavloAudioNoiseSuppress : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x5f0c8a1e, 0x7a43, 0x4c0d, 0x9b, 0x52, 0x1c,
                                                  0x6e,       0x30,   0xd4,   0x8f, 0x27};

    /// Begins anew with a stream. False, with a log line, for a format that it cannot process.
    /// \param level  strength: by how many dB noise goes down at most, 1 to 60, either sign; 0 leaves the sound alone
    /// \param bits   8 (unsigned) or 16 (signed) a sample
    /// \param rate   Hz, 8000 to 192000
    virtual bool open(int level, int channels, int bits, int rate) = 0;

    /// Processes the block in place; what comes out is late by 20 milliseconds. The format is that of `open`: a block
    /// of another one stays as it is. Nothing is allocated.
    /// \param extra  not read
    /// \return the block
    virtual block_t* process(block_t* block, int channels, int bits, int rate, qint64 extra) = 0;

    /// Forgets the stream.
    virtual void close() = 0;

protected:
    ~ITavloAudioNoiseSuppress() = default;
};
