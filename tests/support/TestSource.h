#pragma once

#include "sources/TavloPresentSourceMedia.h"
#include "sources/TavloPresentSourceUtil.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace tavlo::test {

/// A source whose picture is known: the left half red as the number of its channel says, the right half green as the
/// number of the step says, both blue on top and not below; and whose sound is a tone that the test asks for.
class TestSource final : public TavloPresentSourceMedia
{
public:
    /// Takes the place of every source of type movie list, as long as it lives.
    class Rule
    {
    public:
        Rule() : _before(TavloPresentSourceUtil::setSourceMaker(TavloPresentSourceTypeMovieList, &make)) {}
        ~Rule() { TavloPresentSourceUtil::setSourceMaker(TavloPresentSourceTypeMovieList, _before); }
        Rule(const Rule&) = delete;
        Rule& operator=(const Rule&) = delete;

    private:
        SourceMaker _before;
    };

    static constexpr int pictureWidth = 64, pictureHeight = 36;

    explicit TestSource(const SourceSite& site);

    /// The colours of a picture, as bytes: what a channel shows of it at these places.
    static quint8 redOf(int channelId) { return static_cast<quint8>(20 + 20 * channelId); }
    static quint8 greenOf(quint64 frameId) { return static_cast<quint8>(40 + frameId % 200); }

    bool openSource(const tagTavloPresentSourceInfo& info) override;
    void drawFrame(TavloDrawDX11& draw, const FrameStamps& stamps) override;
    bool usesChannel(int channelId) override { return channelId == shownChannel; }
    void onWindowMessage(quint32 message, quint64 flags, qint64 position) override;
    void play() override { ++plays; }

    /// 20 ms of a sine, the phase going on from the block before; the engine's format. Any one thread.
    /// \return the block, until the next call
    const std::vector<qint16>& pushTone(double hertz, double amplitude = 0.5);

    struct Message
    {
        quint32 message;
        int x, y;
    };
    std::vector<Message> messages;
    int plays = 0;
    int shownChannel = -1;

private:
    static SourcePtr make(const SourceSite& site) { return SourcePtr::adopt(new TestSource(site)); }

    int _channelId;
    graphics::TexturePtr _texture;
    std::vector<quint8> _pixels;
    double _phase = 0.0;
    std::vector<qint16> _samples;
};

} // namespace tavlo::test
