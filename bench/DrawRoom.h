#pragma once

#include "drawing/TavloDrawDX11.h"
#include "drawing/TavloGraphicsRes.h"

#include <tavlo/InterfacePtr.h>

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>

/// What the benchmarks of drawing are run in: a device, its store, pictures, and the way to measure a draw.

namespace tavlo::bench {

/// Calls of operator new since the program began.
qint64 allocations();

/// A device and its effects and images, made once.
class Room
{
public:
    Room();

    std::unique_ptr<TavloDrawDX11> makeDraw(QSizeF size);

    /// Ends the work of a draw: its time is that of the device too.
    void finish() { context->flush().wait(std::chrono::seconds(10)); }

    const graphics::DevicePtr device;
    const graphics::ContextPtr context;
    const QTemporaryDir cache;
    const InterfacePtr<TavloGraphicsRes> store;
    double firstStartSeconds = 0; ///< what the effects took to be compiled, without any cache
};

Room& room();

/// A picture of a layout, as its source hands it on.
struct Source
{
    Source(quint32 fourcc, QSizeF pictureSize);

    quint32 chroma;
    QSizeF size;
    TavloDrawDX11::PlaneOffsets planes;
    graphics::TexturePtr texture;
};

/// A slope of colours from edge to edge, as a picture of a camera has few hard changes.
graphics::TexturePtr slope(QSize size, quint32 from);

/// Runs a draw as often as the benchmark asks, and counts what it allocates.
void measure(benchmark::State& state, const std::function<void()>& draw);

/// The same by turns with a plain copy of a picture of 1280 x 720. The counter "copies" tells how many copies the draw
/// costs, in the time of all threads of this process: what else the machine does is not in it.
void measureInCopies(benchmark::State& state, const std::function<void()>& draw);

} // namespace tavlo::bench
