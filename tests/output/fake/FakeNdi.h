#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

/// What the fake library was given, in words.
struct FakeNdi
{
    struct Picture
    {
        int width = 0, height = 0, fpsNum = 0, fpsDen = 0;
        std::string chroma;
        int64_t timecode = 0;
        std::vector<uint8_t> lastRow; ///< of the picture
    };
    struct Sound
    {
        int rate = 0, channels = 0;
        int64_t timecode = 0;
        std::vector<int16_t> samples;
    };

    std::string name;
    std::vector<Picture> pictures;
    std::vector<Sound> sounds;
    int created = 0, destroyed = 0;
};

/// What the fake library's finders and receivers see. Any thread.
class FakeNdiNetwork
{
public:
    struct Source
    {
        std::string name, address;
    };
    struct Frame
    {
        bool video = true;
        int64_t timestamp = 0; ///< steps of 100 ns
        std::vector<uint8_t> bytes;
        int stride = 0; ///< from row to row, from channel to channel
        std::string chroma;
        int width = 0, height = 0;
        int rate = 0, channels = 0, samples = 0;
    };

    void announce(std::vector<Source> all)
    {
        const std::lock_guard guard(lock);
        sources = std::move(all);
        if (sources.empty())
            connected = 0;
        changed.notify_all();
    }

    /// For whoever is connected.
    void send(Frame frame)
    {
        const std::lock_guard guard(lock);
        if (connected > 0)
            frames.push_back(std::move(frame));
        changed.notify_all();
    }

    std::mutex lock;
    std::condition_variable changed;

    // guarded by lock
    std::vector<Source> sources;
    std::deque<Frame> frames; ///< on their way
    std::string connectedTo;  ///< the address
    std::string asked;        ///< addresses beside those that announce themselves
    int bandwidth = 0, connected = 0, finders = 0, receivers = 0, lentFrames = 0;
};

extern "C" FakeNdi* fakeNdi();
extern "C" FakeNdiNetwork* fakeNdiNetwork();
