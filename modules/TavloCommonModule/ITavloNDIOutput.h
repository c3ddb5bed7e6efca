#pragma once

#include <tavlo/IUnknownEx.h>

#include <QString>

struct tagTavloMediaFormatInfo;

/// Sends pictures and sound to the network as an NDI source. Made by `CreateTavloNDIOutput`. Owner's thread.
class ITavloNDIOutput : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xc06e8d33, 0x917b, 0x4fa0, 0xb2, 0x4e, 0x15,
                                                  0x6a,       0xf9,   0x38,   0x7c, 0xd2};

    /// False when the run-time library is missing or refuses.
    virtual bool open(const QString& sourceName, const tagTavloMediaFormatInfo& formatInfo) = 0;

    /// A picture in UYVY. \param stride, size  bytes \param pts, dts  microseconds
    virtual void writeVideo(const quint8* data, int stride, int size, qint64 pts, qint64 dts) = 0;

    /// Interleaved samples. \param size  bytes \param pts, dts  microseconds
    virtual void writeAudio(const quint8* data, int size, qint64 pts, qint64 dts) = 0;

    virtual void close() = 0;

protected:
    ~ITavloNDIOutput() = default;
};
