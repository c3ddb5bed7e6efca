#pragma once

#include "shared/VlcPointers.h"

#include <QByteArray>

#include <memory>

namespace tavlo {

/// A coded picture or block of sound on its way to the targets, which share it.
struct CodedPacket
{
    CodedPacket(BlockPtr ownedBlock, bool isVideo)
        : block(std::move(ownedBlock)), video(isVideo), key(isVideo && (block->i_flags & BLOCK_FLAG_TYPE_I) != 0)
    {}

    qint64 pts() const { return block->i_pts; } ///< microseconds
    qint64 dts() const { return block->i_dts; } ///< microseconds

    const BlockPtr block;
    const bool video;
    const bool key; ///< a picture with which decoding can begin
};

using CodedPacketPtr = std::shared_ptr<const CodedPacket>;

/// What the packets of an output are.
struct StreamFormat
{
    bool hevc = false; ///< else H.264
    int width = 0, height = 0;
    int fpsNum = 25, fpsDen = 1;
    qint64 videoBitrate = 0;   ///< bits a second
    QByteArray videoExtraData; ///< empty: no pictures
    int channels = 2;
    int sampleRate = 48000;
    QByteArray audioExtraData; ///< AudioSpecificConfig of AAC; empty: no sound

    bool hasVideo() const { return !videoExtraData.isEmpty(); }
    bool hasAudio() const { return !audioExtraData.isEmpty(); }

    /// Whether a file or stream may begin with the packet.
    bool canBegin(const CodedPacket& packet) const { return hasVideo() ? packet.key : true; }
};

} // namespace tavlo
