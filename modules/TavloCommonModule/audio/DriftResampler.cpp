#include "TavloCommonModule/audio/DriftResampler.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include <cmath>

namespace tavlo {

namespace {

constexpr int mostChannels = 8;
constexpr int lowestRate = 1000;
constexpr int highestRate = 768'000;

/// The speakers of a mix, as the sound library orders them; the usual ones for counts that it does not have.
AVChannelLayout layoutOf(int channels)
{
    AVChannelLayout layout = AV_CHANNEL_LAYOUT_QUAD;
    if (channels != 4)
        av_channel_layout_default(&layout, channels);
    return layout;
}

AVSampleFormat sampleFormat(int bits)
{
    switch (bits) {
    case 8:
        return AV_SAMPLE_FMT_U8;
    case 16:
        return AV_SAMPLE_FMT_S16;
    case 32:
        return AV_SAMPLE_FMT_FLT;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

bool isConvertible(const SoundFormat& format)
{
    return format.channels >= 1 && format.channels <= mostChannels && format.rate >= lowestRate &&
           format.rate <= highestRate && sampleFormat(format.bits) != AV_SAMPLE_FMT_NONE;
}

} // namespace

void DriftResampler::FreeContext::operator()(SwrContext* context) const { swr_free(&context); }

DriftResampler::DriftResampler(int channels, int rate) : _channels(channels), _rate(rate) {}

DriftResampler::~DriftResampler() = default;

bool DriftResampler::setSource(const SoundFormat& format)
{
    if (format == _source)
        return _context != nullptr;
    _source = format;
    _context.reset();
    if (!isConvertible(format))
        return false;
    AVChannelLayout in = layoutOf(format.channels);
    AVChannelLayout out = layoutOf(_channels);
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &out, AV_SAMPLE_FMT_FLT, _rate, &in, sampleFormat(format.bits), format.rate, 0,
                        nullptr);
    _context.reset(context);
    if (!context)
        return false;
    // Always through the filter, equal rates too: switching it on later would be heard. Its bank is made once for all
    // speeds (1024 phases, and between two of them linear).
    av_opt_set_sample_fmt(context, "internal_sample_fmt", AV_SAMPLE_FMT_FLTP, 0);
    av_opt_set_int(context, "flags", SWR_FLAG_RESAMPLE, 0);
    av_opt_set_int(context, "exact_rational", 0, 0);
    av_opt_set_int(context, "linear_interp", 1, 0);
    if (swr_init(context) < 0)
        _context.reset();
    return _context != nullptr;
}

int DriftResampler::convert(const void* data, int frames, double trim)
{
    if (!_context)
        return -1;
    constexpr int span = 1 << 24; // of frames, which the trim holds for; no block is as long
    swr_set_compensation(_context.get(), static_cast<int>(std::lround(-trim * span)), span);
    const int room = swr_get_out_samples(_context.get(), frames);
    if (room < 0)
        return -1;
    const size_t needed = static_cast<size_t>(room) * static_cast<size_t>(_channels);
    if (_samples.size() < needed)
        _samples.resize(needed * 2);
    auto* out = reinterpret_cast<uint8_t*>(_samples.data());
    const auto* in = static_cast<const uint8_t*>(data);
    return swr_convert(_context.get(), &out, room, &in, frames);
}

} // namespace tavlo
