#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <functional>
#include <memory>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace tavlo {

/// Makes small JPEG pictures of coded ones. One thread.
class SmallPictures
{
public:
    /// Null when the codecs are missing. \param width  pixels; the height follows
    static std::unique_ptr<SmallPictures> open(const StreamFormat& format, int width);

    /// Takes a coded picture, the first one a key picture, and hands on what comes of it.
    void decode(const CodedPacket& packet, const std::function<void(QByteArray jpeg, qint64 time)>& take);

private:
    struct FreeFfmpeg
    {
        void operator()(AVCodecContext* context) const;
        void operator()(AVFrame* frame) const;
        void operator()(AVPacket* packet) const;
        void operator()(SwsContext* context) const;
    };
    template <class Object>
    using Owned = std::unique_ptr<Object, FreeFfmpeg>;

    SmallPictures() = default;

    bool openDecoder(const StreamFormat& format);
    bool openEncoder(int width, int height);
    QByteArray encode(const AVFrame& picture);

    Owned<AVCodecContext> _decoder, _encoder;
    Owned<SwsContext> _scaler; ///< made for the first picture
    Owned<AVFrame> _decoded, _small;
    Owned<AVPacket> _packet;
};

} // namespace tavlo
