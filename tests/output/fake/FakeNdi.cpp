// Stands in for NDI's run-time library: the functions of its C interface that sending, finding and receiving take, with
// the layouts of its records. It keeps what it is given, and hands out what the network has.

#include "FakeNdi.h"

#include <cstring>
#include <utility>

namespace {

FakeNdi fake;
FakeNdiNetwork network;

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

struct NDIlib_source_t
{
    const char* p_ndi_name;
    const char* p_url_address;
};

struct NDIlib_find_create_t
{
    bool show_local_sources;
    const char* p_groups;
    const char* p_extra_ips;
};

struct NDIlib_recv_create_v3_t
{
    NDIlib_source_t source_to_connect_to;
    int color_format, bandwidth;
    bool allow_video_fields;
    const char* p_ndi_recv_name;
};

struct NDIlib_audio_frame_v2_t
{
    int sample_rate, no_channels, no_samples;
    int64_t timecode;
    float* p_data;
    int channel_stride_in_bytes;
    const char* p_metadata;
    int64_t timestamp;
};

constexpr int nothing = 0, video = 1, audio = 2;

/// A finder, and what it has told.
struct Finder
{
    std::vector<FakeNdiNetwork::Source> told;
    std::vector<NDIlib_source_t> list;
};

template <class Byte>
Byte* lend(const FakeNdiNetwork::Frame& frame)
{
    ++network.lentFrames;
    auto* const copy = new uint8_t[frame.bytes.size()];
    std::memcpy(copy, frame.bytes.data(), frame.bytes.size());
    return reinterpret_cast<Byte*>(copy);
}

void takeBack(void* data)
{
    const std::lock_guard guard(network.lock);
    --network.lentFrames;
    delete[] static_cast<uint8_t*>(data);
}

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

FAKE_EXPORT FakeNdiNetwork* fakeNdiNetwork() { return &network; }

FAKE_EXPORT void* NDIlib_find_create_v2(const NDIlib_find_create_t* settings)
{
    const std::lock_guard guard(network.lock);
    ++network.finders;
    network.asked = settings->p_extra_ips ? settings->p_extra_ips : "";
    return new Finder;
}

FAKE_EXPORT void NDIlib_find_destroy(void* finder)
{
    const std::lock_guard guard(network.lock);
    --network.finders;
    delete static_cast<Finder*>(finder);
}

FAKE_EXPORT bool NDIlib_find_wait_for_sources(void*, uint32_t milliseconds)
{
    std::unique_lock guard(network.lock);
    return network.changed.wait_for(guard, std::chrono::milliseconds(milliseconds)) == std::cv_status::no_timeout;
}

FAKE_EXPORT const NDIlib_source_t* NDIlib_find_get_current_sources(void* handle, uint32_t* count)
{
    const std::lock_guard guard(network.lock);
    Finder& finder = *static_cast<Finder*>(handle);
    finder.told = network.sources;
    finder.list.clear();
    for (const auto& source : finder.told)
        finder.list.push_back({source.name.c_str(), source.address.c_str()});
    *count = static_cast<uint32_t>(finder.list.size());
    return finder.list.data();
}

FAKE_EXPORT void* NDIlib_recv_create_v3(const NDIlib_recv_create_v3_t* settings)
{
    const std::lock_guard guard(network.lock);
    ++network.receivers;
    network.connected = 1;
    network.connectedTo = settings->source_to_connect_to.p_url_address;
    network.bandwidth = settings->bandwidth;
    network.frames.clear();
    network.changed.notify_all();
    return &network;
}

FAKE_EXPORT void NDIlib_recv_destroy(void*)
{
    const std::lock_guard guard(network.lock);
    --network.receivers;
    network.connected = 0;
}

FAKE_EXPORT int NDIlib_recv_get_no_connections(void*)
{
    const std::lock_guard guard(network.lock);
    return network.connected;
}

FAKE_EXPORT int NDIlib_recv_capture_v2(void*, NDIlib_video_frame_v2_t* picture, NDIlib_audio_frame_v2_t* sound, void*,
                                       uint32_t milliseconds)
{
    std::unique_lock guard(network.lock);
    if (!network.changed.wait_for(guard, std::chrono::milliseconds(milliseconds),
                                  [] { return !network.frames.empty(); }))
        return nothing;
    const FakeNdiNetwork::Frame frame = std::move(network.frames.front());
    network.frames.pop_front();
    if (frame.video) {
        uint32_t chroma = 0;
        std::memcpy(&chroma, frame.chroma.data(), 4);
        *picture = {frame.width,          frame.height, chroma,  frame.rate,     1, 0, 1, 0,
                    lend<uint8_t>(frame), frame.stride, nullptr, frame.timestamp};
        return video;
    }
    *sound = {frame.rate, frame.channels, frame.samples, 0, lend<float>(frame), frame.stride, nullptr, frame.timestamp};
    return audio;
}

FAKE_EXPORT void NDIlib_recv_free_video_v2(void*, const NDIlib_video_frame_v2_t* frame) { takeBack(frame->p_data); }

FAKE_EXPORT void NDIlib_recv_free_audio_v2(void*, const NDIlib_audio_frame_v2_t* frame) { takeBack(frame->p_data); }
