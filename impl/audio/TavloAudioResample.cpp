#include "audio/TavloAudioResample.h"

#include <QDebug>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>
#include <utility>

namespace {

bool sameFormat(const tagTavloAudioInfo& a, const tagTavloAudioInfo& b)
{
    return a.channels == b.channels && a.sampleRate == b.sampleRate && a.bitsPerSample == b.bitsPerSample &&
           a.audioFourcc == b.audioFourcc;
}

AVSampleFormat sampleFormat(quint32 fourcc)
{
    static constexpr std::array formats{
        std::pair{tavloFourcc("u8  "), AV_SAMPLE_FMT_U8},  std::pair{tavloFourcc("s16l"), AV_SAMPLE_FMT_S16},
        std::pair{tavloFourcc("s32l"), AV_SAMPLE_FMT_S32}, std::pair{tavloFourcc("f32l"), AV_SAMPLE_FMT_FLT},
        std::pair{tavloFourcc("f64l"), AV_SAMPLE_FMT_DBL},
    };
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const auto& f) { return f.first == fourcc; });
    return found != formats.end() ? found->second : AV_SAMPLE_FMT_S16;
}

/// The usual speakers for a count of channels; stereo for a count that has none.
AVChannelLayout channelLayout(int channels)
{
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, channels);
    if (layout.order == AV_CHANNEL_ORDER_UNSPEC || layout.nb_channels != channels)
        layout = AV_CHANNEL_LAYOUT_STEREO;
    return layout;
}

/// Bytes of a frame in the block. Where bits and format contradict each other the larger holds, so that nothing is
/// read behind the block's end.
size_t frameBytes(const tagTavloAudioInfo& format)
{
    const auto told = static_cast<size_t>(std::max(format.channels, 0)) * static_cast<size_t>(format.bitsPerSample) / 8;
    const auto read = static_cast<size_t>(channelLayout(format.channels).nb_channels) *
                      static_cast<size_t>(av_get_bytes_per_sample(sampleFormat(format.audioFourcc)));
    return std::max(told, read);
}

void keepBlock(block_t*) {}

} // namespace

void TavloAudioResample::FreeContext::operator()(SwrContext* context) const { swr_free(&context); }

void TavloAudioResample::FreeSamples::operator()(quint8* samples) const { av_free(samples); }

TavloAudioResample::TavloAudioResample(const tagTavloAudioInfo& output) : _output(output) {}

TavloAudioResample::~TavloAudioResample() = default;

void TavloAudioResample::setOutput(const tagTavloAudioInfo& output)
{
    if (!sameFormat(output, _output))
        close();
    _output = output;
}

block_t* TavloAudioResample::process(block_t* block, const tagTavloAudioInfo& source)
{
    if (!block || sameFormat(source, _output))
        return block;
    if (!sameFormat(source, _source))
        close();
    if (!_context && !open(source))
        return nullptr;

    const auto inFrames = static_cast<int>(block->i_buffer / frameBytes(source));
    const auto outFrames = static_cast<int>(av_rescale_rnd(swr_get_delay(_context.get(), source.sampleRate) + inFrames,
                                                           _output.sampleRate, source.sampleRate, AV_ROUND_UP));
    if (!reserve(outFrames))
        return nullptr;
    quint8* out = _samples.get();
    const quint8* in = block->p_buffer;
    const int frames = swr_convert(_context.get(), &out, outFrames, &in, inFrames);
    if (frames < 0)
        return nullptr;
    const int size = av_samples_get_buffer_size(nullptr, channelLayout(_output.channels).nb_channels, frames,
                                                sampleFormat(_output.audioFourcc), 1);
    if (size < 0)
        return nullptr;
    _block = {};
    _block.p_buffer = _block.p_start = out;
    _block.i_buffer = _block.i_size = static_cast<size_t>(size);
    _block.i_nb_samples = static_cast<unsigned>(frames);
    _block.i_pts = block->i_pts;
    _block.i_dts = block->i_dts;
    _block.i_length = vlc_tick_t{frames} * 1'000'000 / _output.sampleRate;
    _block.pf_release = keepBlock;
    return &_block;
}

bool TavloAudioResample::open(const tagTavloAudioInfo& source)
{
    _source = source;
    AVChannelLayout in = channelLayout(source.channels);
    AVChannelLayout out = channelLayout(_output.channels);
    SwrContext* context = nullptr;
    const int made = swr_alloc_set_opts2(&context, &out, sampleFormat(_output.audioFourcc), _output.sampleRate, &in,
                                         sampleFormat(source.audioFourcc), source.sampleRate, 0, nullptr);
    _context.reset(context);
    if (made >= 0 && source.channels > 0 && _output.channels > 0 && swr_init(context) >= 0)
        return true;
    _context.reset();
    qDebug() << "failed to create swr "
             << "TavloAudioResample::process";
    return false;
}

void TavloAudioResample::close()
{
    _context.reset();
    _samples.reset();
    _capacity = 0;
}

/// Room for that many frames; twice of it when it has to grow.
bool TavloAudioResample::reserve(int frames)
{
    if (frames <= _capacity)
        return true;
    _samples.reset();
    _capacity = 0;
    quint8* samples = nullptr;
    if (av_samples_alloc(&samples, nullptr, channelLayout(_output.channels).nb_channels, frames * 2,
                         sampleFormat(_output.audioFourcc), 1) < 0)
        return false;
    _samples.reset(samples);
    _capacity = frames * 2;
    return true;
}
