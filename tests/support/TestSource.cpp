#include "support/TestSource.h"

#include "drawing/PictureChroma.h"

#include <tavlo/records/EngineRecords.h>

namespace tavlo::test {

TestSource::TestSource(const SourceSite& site)
    : TavloPresentSourceMedia(site), _channelId(site.channel->channelIndex()),
      _pixels(std::size_t{4} * pictureWidth * pictureHeight)
{}

bool TestSource::openSource(const tagTavloPresentSourceInfo& info)
{
    if (info.moviePathList.contains(QStringLiteral("refuse")))
        return false;
    _texture = _site.device->createTexture({pictureWidth, pictureHeight});
    return TavloPresentSourceMedia::openSource(info) && _texture;
}

void TestSource::drawFrame(TavloDrawDX11&, const FrameStamps& stamps)
{
    for (int y = 0; y < pictureHeight; ++y) {
        for (int x = 0; x < pictureWidth; ++x) {
            quint8* const pixel = &_pixels[static_cast<std::size_t>(4 * (y * pictureWidth + x))];
            const bool left = x < pictureWidth / 2;
            pixel[0] = left ? redOf(_channelId) : 0;
            pixel[1] = left ? 0 : greenOf(stamps.frameId);
            pixel[2] = y < pictureHeight / 2 ? 250 : 0;
            pixel[3] = 255;
        }
    }
    _site.context->updateSubresource(*_texture, {0, 0, pictureWidth, pictureHeight}, _pixels.data(), 4 * pictureWidth);
    drawPicture(chromaRgba, {pictureWidth, pictureHeight}, {}, _texture, false);
}

void TestSource::onWindowMessage(quint32 message, quint64, qint64 position)
{
    messages.push_back({message, static_cast<int>(position & 0xffff), static_cast<int>(position >> 16)});
}

const std::vector<qint16>& TestSource::pushTone(double hertz, double amplitude)
{
    tagTavloAudioInfo format;
    const int frames = format.sampleRate / 50;
    _samples.resize(static_cast<std::size_t>(frames * format.channels));
    for (std::size_t i = 0; i < _samples.size(); i += 2) {
        _samples[i] = _samples[i + 1] = static_cast<qint16>(32767 * amplitude * std::sin(_phase));
        _phase += 2 * std::numbers::pi * hertz / format.sampleRate;
    }
    block_t block{};
    block.p_buffer = reinterpret_cast<quint8*>(_samples.data());
    block.i_buffer = _samples.size() * sizeof(qint16);
    block.i_nb_samples = static_cast<unsigned>(frames);
    deliverAudio(0, &block, format);
    return _samples;
}

} // namespace tavlo::test
