#pragma once

#include <tavlo/records/MediaFormat.h>
#include <tavlo/records/OutputRecords.h>

#include <QString>

#include <memory>

struct picture_t;

/// A projection: shows a channel's pictures on a display of its own and plays their sound. Thread of its node.
class ITavloHDMIOutputObject
{
public:
    virtual ~ITavloHDMIOutputObject() = default;

    virtual bool create(int index, const QString& name, const tagTavloPresentHDMIOutputInfo& hdmiInfo,
                        const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo, quint32 value) = 0;
    virtual void stop() = 0;

    /// A picture as the composition gives it. \param stride, size  bytes \param pts, dts  microseconds
    virtual void writeVideo(const picture_t* picture, const quint8* data, int stride, int size, qint64 pts, qint64 dts,
                            bool flag, quint32 chroma) = 0;

    /// Interleaved samples. \param size  bytes
    virtual void writeAudio(const quint8* data, int size, qint64 pts, qint64 dts) = 0;
};

namespace tavlo {

/// Makes projections; null as long as none can be made. Set once, before the first target.
using HdmiOutputFactory = std::unique_ptr<ITavloHDMIOutputObject> (*)();
void setHdmiOutputFactory(HdmiOutputFactory factory);
std::unique_ptr<ITavloHDMIOutputObject> makeHdmiOutput();

} // namespace tavlo
