#include "engines/EngineStage.h"

#include <QCoreApplication>

namespace tavlo::test {

Pixel Shot::at(int x, int y) const
{
    const quint8* const pixel = &_bytes.at(static_cast<std::size_t>(4 * (y * _width + x)));
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

bool EngineStage::Private::beginStep(const QString& text)
{
    progress.append(text);
    return progress.size() - 1 != failingStep && TavloPresentEnginePrivate::beginStep(text);
}

EngineStage::EngineStage()
{
    auto made = std::make_unique<Private>();
    inside = made.get();
    engine = std::make_unique<Engine>(std::move(made));
    engine->start(this, TavloPresentThreadModeStep);
    steps = 1;
}

EngineStage::~EngineStage()
{
    send(TavloEventDestroyEngine);
    engine->stop();
    releaseSources();
}

void EngineStage::releaseSources()
{
    for (const Report& report : reports) {
        const bool carriesSource = report.result == QVariant(0) &&
                                   (report.event == TavloEventSourceOpened || report.event == TavloEventSourceClosed);
        if (!carriesSource)
            continue;
        if (auto* const source = reinterpret_cast<ITavloPresentSource*>(report.a2.toULongLong()))
            source->release();
    }
    reports.clear();
}

void EngineStage::onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant a3, QVariant)
{
    reports.push_back({event, result, a1, a2, a3});
}

tagTavloPresentEngineInfo EngineStage::engineInfo(int channels) const
{
    tagTavloPresentEngineInfo info;
    info.videoInfo.width = info.videoInfo.sourceWidth = frameWidth;
    info.videoInfo.height = info.videoInfo.sourceHeight = frameHeight;
    info.channelCount = static_cast<quint32>(channels);
    info.pgmAudioDevName = info.pvmAudioDevName = QStringLiteral("None");
    info.dataCachePath = cache.path();
    return info;
}

tagTavloWindowInfo EngineStage::windowInfo(int width, int height)
{
    tagTavloWindowInfo info;
    info.rect = QRect(0, 0, width, height);
    return info;
}

void EngineStage::create(const tagTavloPresentEngineInfo& engineRecord, const tagTavloWindowInfo& window,
                         int sourceCount)
{
    const Report made = send(TavloEventCreateEngine, QVariant::fromValue(engineRecord), QVariant::fromValue(window));
    ASSERT_EQ(made.result.toInt(), 0);
    tagTavloPresentSourceInfo info;
    info.type = TavloPresentSourceTypeMovieList;
    for (int i = 0; i < sourceCount; ++i)
        EXPECT_NE(send(TavloEventOpenSource, i, QVariant::fromValue(info)).result.toULongLong(), 0U);
}

Report EngineStage::send(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4)
{
    engine->postEvent(event, a1, a2, a3, a4);
    QCoreApplication::sendPostedEvents(engine.get());
    const auto last = std::ranges::find(reports.rbegin(), reports.rend(), event, &Report::event);
    return last != reports.rend() ? *last : Report{};
}

void EngineStage::step(int frames)
{
    for (int i = 0; i < frames; ++i) {
        QCoreApplication::sendPostedEvents(engine.get());
        engine->doFrameStep();
        ++steps;
    }
}

Shot EngineStage::shot(int channelId) { return shot(inside->channels().find(channelId)->targetTexture()); }

Shot EngineStage::shot(const graphics::TexturePtr& picture)
{
    graphics::TextureDesc desc = picture->desc();
    desc.usage = graphics::Usage::Staging;
    desc.renderTarget = false;
    const graphics::TexturePtr staging = inside->world().device()->createTexture(desc);
    inside->world().context()->copyResource(*staging, picture);
    inside->world().context()->flush();
    const auto mapped = staging->mapRead();
    std::vector<quint8> bytes;
    const std::size_t row = std::size_t{4} * desc.width;
    for (std::size_t y = 0; mapped && y < desc.height; ++y) {
        const auto* const from = reinterpret_cast<const quint8*>(mapped->data) + y * mapped->rowPitch;
        bytes.insert(bytes.end(), from, from + row);
    }
    staging->unmapRead();
    return {static_cast<int>(desc.width), std::move(bytes)};
}

TestSource& EngineStage::source(int index)
{
    const auto opened = reportsOf(TavloEventSourceOpened);
    const auto found =
        std::ranges::find_if(opened, [index](const Report& report) { return report.a1.toInt() == index; });
    auto* const object = reinterpret_cast<ITavloPresentSource*>(found->a2.toULongLong());
    return *dynamic_cast<TestSource*>(object);
}

std::vector<Report> EngineStage::reportsOf(qulonglong event) const
{
    std::vector<Report> found;
    std::ranges::copy_if(reports, std::back_inserter(found),
                         [event](const Report& report) { return report.event == event; });
    return found;
}

} // namespace tavlo::test
