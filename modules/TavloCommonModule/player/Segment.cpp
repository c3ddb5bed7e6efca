#include "TavloCommonModule/player/Segment.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/error.h>
}

#include <array>
#include <cmath>

namespace tavlo {

QString ffmpegError(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

StreamInfo::StreamInfo(const AVStream& stream, AVRational guessedFrameRate)
    : parameters(avcodec_parameters_alloc()), timeBase(stream.time_base), frameRate(guessedFrameRate),
      isPicture((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0)
{
    if (!parameters || avcodec_parameters_copy(parameters, stream.codecpar) < 0)
        throw std::bad_alloc();
    size_t size = 0;
    const uint8_t* const data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    std::array<int32_t, 9> matrix{};
    if (!data || size < sizeof(matrix))
        return;
    std::memcpy(matrix.data(), data, sizeof(matrix));
    const auto product = [&](size_t a, size_t b) { return double(matrix[a]) * double(matrix[b]); };
    mirrored = product(0, 4) - product(1, 3) < 0;
    if (mirrored)
        av_display_matrix_flip(matrix.data(), 1, 0);
    const double degrees = av_display_rotation_get(matrix.data()); // counterclockwise
    if (!std::isnan(degrees))
        quarterTurns = static_cast<int>(std::lround(-degrees / 90.0) + 8) % 4;
}

StreamInfo::StreamInfo(AVMediaType type, AVRational rate) : parameters(avcodec_parameters_alloc()), frameRate(rate)
{
    if (!parameters)
        throw std::bad_alloc();
    parameters->codec_type = type;
    parameters->codec_id = AV_CODEC_ID_WRAPPED_AVFRAME;
}

} // namespace tavlo
