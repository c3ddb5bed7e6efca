#include "channels/LevelBars.h"

#include "channels/ChannelSite.h"

namespace tavlo {

void LevelBars::create(scene::Director& director, scene::Node& parent)
{
    for (auto& bar : _bars) {
        bar = scene::LayerColor::create(director, {0, 240, 0, 255}, {1.0F, 1.0F});
        bar->setAnchorPoint({0.0F, 1.0F});
        parent.addChild(bar, CanvasOrderMarks);
    }
}

void LevelBars::destroy()
{
    for (auto& bar : _bars) {
        if (bar)
            bar->removeFromParent();
        bar.reset();
    }
}

void LevelBars::show(const scene::Rect& view, float lineWidth, Side side, Meter& meter, quint32& time)
{
    constexpr float gap = 2.0F;
    float x = side == Side::Right ? view.maxX() - lineWidth * 4 - gap : view.minX() + lineWidth + gap;
    for (std::size_t i = 0; i < _bars.size(); ++i) {
        if (!_bars[i])
            return;
        const float level = meterLevel(meter, i, time);
        _bars[i]->setPosition(x, view.minY() + lineWidth * 2);
        _bars[i]->setContentSize({lineWidth, level / 100.0F * (view.height - lineWidth * 4)});
        x += lineWidth + gap;
    }
}

void LevelBars::setColor(scene::Color3B color)
{
    for (auto& bar : _bars) {
        if (bar)
            bar->setColor(color);
    }
}

} // namespace tavlo
