#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/PictureWriter.h"
#include "TavloCommonModule/player/Segment.h"

#include <vlc_picture_pool.h>

#include <memory>

namespace tavlo {

/// The way of pictures into the sink: announces their format, takes pictures out of the sink's pool, or out of its own
/// where the sink has none, and has frames written into them. A stream's thread.
class PictureOutput
{
public:
    PictureOutput(ITavloSourcePlayerSink& sink, const tagTavloVideoInfo& wanted) : _sink(sink), _wanted(wanted) {}
    ~PictureOutput() { close(); }
    PictureOutput(const PictureOutput&) = delete;
    PictureOutput& operator=(const PictureOutput&) = delete;

    /// What became of a frame.
    enum class Outcome
    {
        Shown,
        NoPicture, ///< all of the pool's are still held
        Unfit      ///< no picture can be made of it
    };

    /// Hands a frame on as a picture.
    /// \param frameRate  of the stream, for the announcement; 0/1 when unknown
    /// \param date       microseconds of the clock's time at which it is due
    Outcome show(const AVFrame& frame, AVRational frameRate, qint64 date);

    /// Whether the sink takes a frame that lies in graphics memory as it is; it is asked with the first of a format.
    bool takesFromGraphicsMemory(const AVFrame& frame, AVRational frameRate);

    void close();

private:
    static constexpr unsigned ownPictures = 4;

    struct ReleasePool
    {
        void operator()(picture_pool_t* pool) const { picture_pool_Release(pool); }
    };
    struct ReleasePicture
    {
        void operator()(picture_t* picture) const { picture_Release(picture); }
    };

    /// What makes a format another one.
    struct FrameFormat
    {
        int width = 0;
        int height = 0;
        int format = -1;
        AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
        friend bool operator==(const FrameFormat&, const FrameFormat&) = default;
    };

    void begin(const AVFrame& frame, AVRational frameRate);
    void open(const AVFrame& frame, AVRational frameRate);
    Outcome showInPlace(const AVFrame& frame, qint64 date);
    void handOver(const AVFrame& frame, picture_t& picture, qint64 date);
    tagTavloVideoInfo describe(const AVFrame& frame, AVRational frameRate) const;
    picture_pool_t* ownPool(const tagTavloVideoInfo& info) const;

    ITavloSourcePlayerSink& _sink;
    const tagTavloVideoInfo _wanted;
    FrameFormat _format;
    bool _announced = false;
    bool _inPlace = false;    ///< the sink takes this format out of graphics memory
    bool _fetchesAll = false; ///< it takes none
    std::unique_ptr<picture_pool_t, ReleasePool> _pool;
    PictureWriter _writer;
};

} // namespace tavlo
