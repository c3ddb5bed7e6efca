#include "channels/TavloFaceLandmarkProcessor.h"

#include "base/Log.h"
#include "drawing/PictureChroma.h"

#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

constexpr double analysedWidth = 320.0; ///< pixels; a face that fills a tenth of the frame still has 30

void logFailed(const char* what)
{
    logFailure({"impl\\TavloFaceLandmarkProcessor", "TavloFaceLandmarkProcessor::createProcessor"},
               QString::fromLatin1(what));
}

} // namespace

TavloFaceLandmarkProcessor::TavloFaceLandmarkProcessor() : _analyser("TavloFaceLandmark", "CreateTavloFaceLandmark") {}

TavloFaceLandmarkProcessor::~TavloFaceLandmarkProcessor() { TavloFaceLandmarkProcessor::destroy(); }

bool TavloFaceLandmarkProcessor::createProcessor(ITavloGraphicsRes* graphicsRes, DevicePtr device, ContextPtr context,
                                                 QSizeF frameSize, const QString& modelFolder)
{
    _frameSize = frameSize;
    _modelFolder = modelFolder;
    _scale = frameSize.width() / analysedWidth;
    const QSizeF size(analysedWidth, std::max(1.0, frameSize.height() / _scale));
    TextureDesc desc{static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height())};
    if (!TavloDrawDX11::create(graphicsRes, nullptr, device, std::move(context), desc, size)) {
        logFailed("failed to TavloDrawDX11::create ");
        return false;
    }
    desc.usage = Usage::Staging;
    _stagingTexture = device->createTexture(desc);
    if (!_stagingTexture) {
        logFailed("failed to CreateTexture2D ");
        return false;
    }
    return true;
}

void TavloFaceLandmarkProcessor::destroy()
{
    _analyser.destroy();
    _analyserAsked = false;
    _landmarks.clear();
    _copying = false;
    _stagingTexture.reset();
    TavloDrawDX11::destroy();
}

bool TavloFaceLandmarkProcessor::loadAnalyser()
{
    if (!std::exchange(_analyserAsked, true) && _analyser.create() && !_analyser->open(_modelFolder))
        _analyser.destroy();
    return _analyser.isReady();
}

void TavloFaceLandmarkProcessor::process(const TexturePtr& picture)
{
    if (!isMade() || !loadAnalyser())
        return;
    if (_copying && !_copied.passed())
        return;
    if (_copying)
        analyse();
    drawPicture(chromaRgba, picture, _frameSize, {}, nullptr, true, false, false);
    _copying = context()->copyResource(*_stagingTexture, targetResource());
    _copied = context()->flush();
}

void TavloFaceLandmarkProcessor::analyse()
{
    _landmarks.clear();
    const auto mapped = _stagingTexture->mapRead(std::chrono::milliseconds(0));
    if (!mapped)
        return;
    const TextureDesc& desc = _stagingTexture->desc();
    const int count = _analyser->analyse(static_cast<int>(desc.width), static_cast<int>(desc.height), mapped->data,
                                         static_cast<int>(mapped->rowPitch));
    for (int i = 0; i < count; ++i)
        _landmarks.push_back(_analyser->landmark(i) * _scale);
    _stagingTexture->unmapRead();
}

std::optional<QPointF> TavloFaceLandmarkProcessor::landmark(int index) const
{
    const auto at = static_cast<std::size_t>(index);
    return index >= 0 && at < _landmarks.size() ? std::optional(_landmarks[at]) : std::nullopt;
}
