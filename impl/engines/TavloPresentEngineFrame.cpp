// One frame of the main engine.

#include "channels/NestedOutlines.h"
#include "engines/TavloPresentEnginePrivate.h"

using namespace tavlo;

bool TavloPresentEnginePrivate::onThreadStep(const quint64& time, const quint64& frameId,
                                             const quint64& clockMicroseconds)
{
    if (!_world.hasDirector() || !_world.view())
        return true;
    const FrameStamps stamps{time, frameId, clockMicroseconds};
    _world.view()->beginFrame(time, frameId, clockMicroseconds);
    if (_highlightDirty != 0)
        drawHighlight();

    // Who shows others comes after them: every picture goes into the program in the step that it came in.
    for (TavloPresentChannelSource* const source : _channels.sources()) {
        if (source->renderOrder() < CanvasOrderComposite)
            source->stepFrame(stamps);
    }
    for (TavloPresentChannelSource* const source : _channels.sources()) {
        if (source->renderOrder() >= CanvasOrderComposite)
            source->stepFrame(stamps);
    }
    if (_channels.preview())
        _channels.preview()->stepFrame(stamps);
    if (_channels.program())
        _channels.program()->stepFrame(stamps);

    _world.drawScene();
    _world.view()->endFrame();
    if (_channels.program())
        _channels.program()->commitFrame(clockMicroseconds);
    return true;
}

void TavloPresentEnginePrivate::drawHighlight()
{
    constexpr scene::Color4F previewColor{0.1F, 0.9F, 0.1F, 1.0F};
    constexpr scene::Color4F programColor{0.9F, 0.1F, 0.1F, 1.0F};
    _highlightDirty = 0;
    if (!_world.highlight() || !_channels.preview() || !_channels.program())
        return;
    _world.highlight()->clear();
    drawMark(_channels.preview()->shownChannel(), _gridLineWidth, previewColor);
    drawMark(_channels.program()->programChannel(), _gridLineWidth / 2, programColor);
}

void TavloPresentEnginePrivate::drawMark(int channelId, int width, const scene::Color4F& color)
{
    if (const TavloPresentChannelRich* const channel = _channels.find(channelId))
        drawNestedOutlines(*_world.highlight(), channel->viewRect(), width, color);
}
