#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"

#include <tavlo/records/MediaFormat.h>

#include <vector>

namespace tavlo {

/// Frames of any format in, interleaved signed 16 bit samples of one format out. A stream's thread.
class AudioConverter
{
public:
    AudioConverter(int channels, int rate);
    ~AudioConverter();
    AudioConverter(const AudioConverter&) = delete;
    AudioConverter& operator=(const AudioConverter&) = delete;

    /// Appends what a frame becomes. \return samples of one channel that were added
    int process(const AVFrame& frame, std::vector<qint16>& out);

    /// Appends what the filter holds back.
    int drain(std::vector<qint16>& out);

    /// Forgets what is held back.
    void reset() { _resampler.reset(); }

private:
    bool open(const AVFrame& frame);
    int convert(const AVFrame* frame, std::vector<qint16>& out);

    const int _channels;
    const int _rate;
    ResamplerPtr _resampler;
    AVChannelLayout _inLayout{};
    int _inRate = 0;
    int _inFormat = -1;
};

/// Plays sound faster or slower without changing its pitch. A stream's thread.
class TempoFilter
{
public:
    TempoFilter(int channels, int rate);

    /// What is held back is lost. \param tempo 0.25 to 4
    bool open(double tempo);
    void close() { _graph.reset(); }

    /// Exchanges samples for those that they become, which may be none.
    void process(std::vector<qint16>& samples);

    /// Replaces the samples with what is held back. Closes.
    void drain(std::vector<qint16>& samples);

private:
    void fetch(std::vector<qint16>& samples);

    const int _channels;
    const int _rate;
    GraphPtr _graph;
    AVFilterContext* _in = nullptr;
    AVFilterContext* _out = nullptr;
    FramePtr _frame;
};

} // namespace tavlo
