#include "TavloCodecAggregationModule/EncoderSettings.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cmath>
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
constexpr std::array tunings{"", "zerolatency", "film", "animation", "stillimage"};
constexpr std::array speeds{"veryfast", "ultrafast", "superfast", "faster", "fast", "medium"};

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
    if (control == RateControl::Quality)
        applyQuality(codec, choice, std::min(param.videoSettings[4], 51U));
    else
        codec.bit_rate = std::max<qint64>(param.videoBitrate, 16) * 1000;
    const double factor = std::isfinite(param.rateFactor) ? std::clamp(double{param.rateFactor}, 1.0, 10.0) : 1.0;
    codec.rc_max_rate = std::llround(std::max<qint64>(param.videoBitrate, 16) * 1000 * factor);
    codec.rc_buffer_size = static_cast<int>(codec.rc_max_rate * std::clamp(param.bufferSetting, 1U, 100U) / 10);
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
    codec.max_b_frames = static_cast<int>(std::min(settings[0], 16U));
    codec.refs = static_cast<int>(std::clamp(settings[1], 1U, 16U));
    codec.thread_count = static_cast<int>(std::min(settings[4], 64U));
    codec.me_range = static_cast<int>(std::clamp(param.videoOption2, 4U, 64U));
    codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    applyRate(codec, choice, param);
    if (isEncoder(codec, "libx264") || isEncoder(codec, "libx265")) {
        setOption(codec, "preset", chosen(speeds, settings[3]));
        setOption(codec, "tune", chosen(tunings, param.videoOption3));
    }
    if (codec.codec_id == AV_CODEC_ID_H264)
        setOption(codec, "profile", chosen(profiles, param.videoOption));
    const quint32 lookahead = std::min(settings[2], 60U);
    if (isEncoder(codec, "libx265")) // it has to look beyond the pictures that it turns round
        setOption(codec, "x265-params",
                  "log-level=none:open-gop=0:rc-lookahead=" +
                      std::to_string(std::max<quint32>(lookahead, static_cast<quint32>(codec.max_b_frames) + 1)));
    else
        setOption(codec, "rc-lookahead", std::to_string(lookahead));
}

} // namespace tavlo
