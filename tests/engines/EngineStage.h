#pragma once

#include "engines/TavloPresentEnginePrivate.h"
#include "support/LogCapture.h"
#include "support/TestSource.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tavlo::test {

/// What the sink heard.
struct Report
{
    qulonglong event = 0;
    QVariant result, a1, a2, a3;
};

/// A pixel of a picture, bytes.
struct Pixel
{
    int r = 0, g = 0, b = 0, a = 0;
    bool operator==(const Pixel&) const = default;
};

/// Pixels of a texture, its top row first.
class Shot
{
public:
    Shot(int width, std::vector<quint8> bytes) : _width(width), _bytes(std::move(bytes)) {}
    Pixel at(int x, int y) const;
    int width() const { return _width; }
    const std::vector<quint8>& bytes() const { return _bytes; }

private:
    int _width;
    std::vector<quint8> _bytes;
};

/// An engine off screen whose frames the test steps, with sources whose pictures are known.
class EngineStage : public testing::Test, public Implements<EngineStage, ITavloPresentThreadSink>
{
public:
    static constexpr int frameWidth = 320, frameHeight = 180;

    EngineStage();
    ~EngineStage() override;

    void destroy() override {}
    void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant a3, QVariant a4) override;

    /// What an engine of that many channels is created with: no sound devices, a cache for this test alone.
    tagTavloPresentEngineInfo engineInfo(int channels) const;
    static tagTavloWindowInfo windowInfo(int width = 640, int height = 400);

    /// Starts, creates, and opens a test source on the first so many channels.
    void create(int channels, int sourceCount) { create(engineInfo(channels), windowInfo(), sourceCount); }
    void create(const tagTavloPresentEngineInfo& info, const tagTavloWindowInfo& window, int sourceCount);

    /// Posts an event and has it handled. \return its report
    Report send(qulonglong event, QVariant a1 = {}, QVariant a2 = {}, QVariant a3 = {}, QVariant a4 = {});
    void step(int frames = 1);

    /// Gives back the references that came with the reports, as a host does, and forgets the reports.
    void releaseSources();

    Shot shot(int channelId);
    Shot shot(const graphics::TexturePtr& picture);
    TestSource& source(int index);
    std::vector<Report> reportsOf(qulonglong event) const;

    class Private;
    class Engine;

    QTemporaryDir cache;
    TestSource::Rule sources;
    Private* inside = nullptr; ///< the engine's
    std::unique_ptr<Engine> engine;
    std::vector<Report> reports;
    quint64 steps = 0; ///< since the start; the number of the last one is one less
};

class EngineStage::Private final : public TavloPresentEnginePrivate
{
public:
    using TavloPresentEnginePrivate::channels;
    using TavloPresentEnginePrivate::world;

    int failingStep = -1; ///< counts steps of creation from 0
    QStringList progress;

protected:
    bool beginStep(const QString& text) override;
};

class EngineStage::Engine final : public TavloPresentEngine
{
public:
    explicit Engine(std::unique_ptr<Private> inside) : TavloPresentEngine(std::move(inside)) {}
};

} // namespace tavlo::test
