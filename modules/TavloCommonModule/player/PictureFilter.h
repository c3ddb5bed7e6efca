#pragma once

#include "TavloCommonModule/player/Segment.h"

#include <functional>

namespace tavlo {

/// Makes progressive pictures out of fields and turns what was filmed on its side. Where neither is needed, frames pass
/// untouched. A stream's thread.
class PictureFilter
{
public:
    using Take = std::function<bool(AVFrame&, qint64 stamp)>;

    /// \param deinterlaceMode  0 off, 1 frames that are flagged, 2 all
    explicit PictureFilter(int deinterlaceMode) : _mode(deinterlaceMode) {}

    /// Begins with a stream; what is held back is lost.
    void begin(const StreamInfo& stream);

    /// \param stamp  microseconds. \return what `take` returned last
    bool process(AVFrame& frame, qint64 stamp, const Take& take);

    /// Whether a frame would become another one.
    bool changes(const AVFrame& frame) const;

    /// What is held back comes out.
    bool drain(const Take& take);

private:
    bool needsGraph(const AVFrame& frame);
    void forget();
    bool build(const AVFrame& frame);
    bool fetch(const Take& take);

    const int _mode;
    int _quarterTurns = 0;
    bool _mirrored = false;
    bool _deinterlaces = false; ///< once it is needed, for the rest of the stream
    GraphPtr _graph;
    bool _unfit = false; ///< there is no graph for such frames
    AVFilterContext* _in = nullptr;
    AVFilterContext* _out = nullptr;
    int _width = 0;
    int _height = 0;
    int _format = -1;
    FramePtr _filtered;
};

} // namespace tavlo
