// Stands in for NDI's run-time library: the functions of its C interface that sending takes, with the layouts of its
// records. It keeps what it is given.

#include "FakeNdi.h"

#include <cstring>
#include <utility>

namespace {

FakeNdi fake;

struct NDIlib_send_create_t
{
    const char* p_ndi_name;
    const char* p_groups;
    bool clock_video, clock_audio;
};

struct NDIlib_video_frame_v2_t
{
    int xres, yres;
    uint32_t FourCC;
    int frame_rate_N, frame_rate_D;
    float picture_aspect_ratio;
    int frame_format_type;
    int64_t timecode;
    uint8_t* p_data;
    int line_stride_in_bytes;
    const char* p_metadata;
    int64_t timestamp;
};

struct NDIlib_audio_frame_interleaved_16s_t
{
    int sample_rate, no_channels, no_samples;
    int64_t timecode;
    int reference_level;
    int16_t* p_data;
};

} // namespace

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

FAKE_EXPORT FakeNdi* fakeNdi() { return &fake; }

FAKE_EXPORT bool NDIlib_initialize() { return true; }

FAKE_EXPORT void* NDIlib_send_create(const NDIlib_send_create_t* settings)
{
    fake.name = settings->p_ndi_name;
    ++fake.created;
    return &fake;
}

FAKE_EXPORT void NDIlib_send_destroy(void*) { ++fake.destroyed; }

FAKE_EXPORT void NDIlib_send_send_video_v2(void*, const NDIlib_video_frame_v2_t* frame)
{
    FakeNdi::Picture picture{
        frame->xres, frame->yres, frame->frame_rate_N, frame->frame_rate_D, std::string(4, ' '), frame->timecode, {}};
    std::memcpy(picture.chroma.data(), &frame->FourCC, 4);
    const uint8_t* const last = frame->p_data + (frame->yres - 1) * frame->line_stride_in_bytes;
    picture.lastRow.assign(last, last + 2 * frame->xres);
    fake.pictures.push_back(std::move(picture));
}

FAKE_EXPORT void NDIlib_util_send_send_audio_interleaved_16s(void*, const NDIlib_audio_frame_interleaved_16s_t* frame)
{
    const int count = frame->no_samples * frame->no_channels;
    fake.sounds.push_back({frame->sample_rate, frame->no_channels, frame->timecode,
                           std::vector<int16_t>(frame->p_data, frame->p_data + count)});
}
