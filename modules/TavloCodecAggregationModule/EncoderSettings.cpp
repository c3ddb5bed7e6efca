#include "TavloCodecAggregationModule/EncoderSettings.h"

#include "TavloCodecAggregationModule/EncoderLimits.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace tavlo {

namespace {

constexpr std::array choices{
    EncoderChoice{TavloVideoEncodeImplNVENC, TavloVideoCodecH264, "h264_nvenc", false, "cq"},
    EncoderChoice{TavloVideoEncodeImplNVENC, TavloVideoCodecHEVC, "hevc_nvenc", false, "cq"},
    EncoderChoice{TavloVideoEncodeImplVAAPI, TavloVideoCodecH264, "h264_vaapi", true, nullptr},
    EncoderChoice{TavloVideoEncodeImplVAAPI, TavloVideoCodecHEVC, "hevc_vaapi", true, nullptr},
    EncoderChoice{TavloVideoEncodeImplSoftware, TavloVideoCodecH264, "libx264", false, "crf"},
    EncoderChoice{TavloVideoEncodeImplSoftware, TavloVideoCodecHEVC, "libx265", false, "crf"},
};

constexpr std::array profiles{"", "baseline", "main", "high"};
constexpr std::array x264Tunings{"", "zerolatency", "film", "animation", "stillimage"};
constexpr std::array x265Tunings{"", "zerolatency", "", "animation", ""};
constexpr std::array speeds{"veryfast", "ultrafast", "superfast", "faster", "fast", "medium"};

constexpr quint32 x265Threads = 16;                          // pictures that it codes at a time
constexpr quint32 x265References = 6;                        // beyond, it refuses
constexpr qint64 mostBits = std::numeric_limits<int>::max(); // a second; encoders reckon with no more

enum class RateControl : quint32
{
    Quantizer = 0,
    MeanRate = 1,
    Quality = 2,
};

template <size_t count>
const char* chosen(const std::array<const char*, count>& names, quint32 value)
{
    return names[value < count ? value : 0];
}

/// An encoder that knows no such option goes on without it.
void setOption(AVCodecContext& codec, const char* name, const std::string& value)
{
    if (!value.empty())
        av_opt_set(codec.priv_data, name, value.c_str(), 0);
}

bool isEncoder(const AVCodecContext& codec, const char* name) { return std::string(codec.codec->name) == name; }

void applyFormat(AVCodecContext& codec, const tagTavloVideoInfo& videoInfo)
{
    codec.width = videoInfo.width;
    codec.height = videoInfo.height;
    codec.framerate = {videoInfo.fpsNum, videoInfo.fpsDen};
    codec.time_base = {videoInfo.fpsDen, videoInfo.fpsNum};
    codec.sample_aspect_ratio = {1, 1};
    codec.color_range = AVCOL_RANGE_MPEG;
    codec.colorspace = AVCOL_SPC_BT709;
    codec.color_primaries = AVCOL_PRI_BT709;
    codec.color_trc = AVCOL_TRC_BT709;
    codec.chroma_sample_location = AVCHROMA_LOC_CENTER;
}

void applyQuality(AVCodecContext& codec, const EncoderChoice& choice, quint32 quality)
{
    if (choice.quality)
        setOption(codec, choice.quality, std::to_string(quality));
    else
        codec.global_quality = static_cast<int>(std::max(quality, 1U)); // 0 would be none
}

void applyRate(AVCodecContext& codec, const EncoderChoice& choice, const tagTavloPresentOutputParam& param)
{
    const auto control = static_cast<RateControl>(param.rateSettings[1]);
    if (control == RateControl::Quantizer) {
        setOption(codec, "qp", std::to_string(std::min(param.videoSettings[2], 51U)));
        return;
    }
    const qint64 mean = std::clamp<qint64>(qint64{param.videoBitrate} * 1000, 16'000, mostBits);
    if (control == RateControl::Quality)
        applyQuality(codec, choice, std::min(param.videoSettings[4], 51U));
    else
        codec.bit_rate = mean;
    const double factor = std::isfinite(param.rateFactor) ? std::clamp(double{param.rateFactor}, 1.0, 10.0) : 1.0;
    codec.rc_max_rate = std::min<qint64>(std::llround(static_cast<double>(mean) * factor), mostBits);
    const qint64 buffer = codec.rc_max_rate * std::clamp(param.bufferSetting, 1U, 100U) / 10;
    codec.rc_buffer_size = static_cast<int>(std::min(buffer, mostBits));
    codec.qmin = static_cast<int>(std::min(param.rateSettings[0], 51U));
}

} // namespace

std::span<const EncoderChoice> encoderChoices() { return choices; }

void applySettings(AVCodecContext& codec, const EncoderChoice& choice, const tagTavloVideoInfo& videoInfo,
                   const tagTavloPresentOutputParam& param)
{
    applyFormat(codec, videoInfo);
    const auto& settings = param.encoderSettings;
    const auto twoSeconds = static_cast<quint32>(2 * videoInfo.fpsNum / std::max(videoInfo.fpsDen, 1));
    codec.gop_size =
        static_cast<int>(std::clamp(param.videoSettings[3] ? param.videoSettings[3] : twoSeconds, 1U, 3000U));
    codec.max_b_frames = static_cast<int>(std::min(settings[0], mostBidirectional));
    const bool isX265 = isEncoder(codec, "libx265");
    codec.refs = static_cast<int>(std::clamp(settings[1], 1U, isX265 ? x265References : 16U));
    codec.thread_count = static_cast<int>(std::min(settings[4], isX265 ? x265Threads : mostThreads));
    codec.me_range = static_cast<int>(std::clamp(param.videoOption2, 4U, 64U));
    codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    applyRate(codec, choice, param);
    if (isX265 || isEncoder(codec, "libx264")) {
        setOption(codec, "preset", chosen(speeds, settings[3]));
        setOption(codec, "tune", chosen(isX265 ? x265Tunings : x264Tunings, param.videoOption3));
    }
    if (codec.codec_id == AV_CODEC_ID_H264)
        setOption(codec, "profile", chosen(profiles, param.videoOption));
    const quint32 lookahead = std::min(settings[2], mostLookahead);
    if (isX265) // it has to look beyond the pictures that it turns round
        setOption(codec, "x265-params",
                  "log-level=none:open-gop=0:rc-lookahead=" +
                      std::to_string(std::max<quint32>(lookahead, static_cast<quint32>(codec.max_b_frames) + 1)));
    else
        setOption(codec, "rc-lookahead", std::to_string(lookahead));
}

} // namespace tavlo
