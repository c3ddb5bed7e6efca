#include "audio/SampleFormat.h"

#include <QtGlobal>

#include <cmath>
#include <cstring>

namespace tavlo {

namespace {

quint8 byteFromFloat(float f)
{
    const float x = f * 128.0F;
    if (x >= 127.0F)
        return 255;
    if (!(x > -128.0F)) // a NaN too
        return 0;
    return static_cast<quint8>(std::lround(x) + 128);
}

qint16 wordFromFloat(float f)
{
    const float x = f * 32768.0F;
    if (x >= 32767.0F)
        return 32767;
    if (!(x > -32768.0F)) // a NaN too
        return -32768;
    return static_cast<qint16>(std::lrint(x));
}

} // namespace

// A block's buffer need not be aligned to its samples: memcpy, which the compiler makes a plain load of.

void samplesToFloat(const void* samples, int bits, size_t count, float* out)
{
    const auto* bytes = static_cast<const quint8*>(samples);
    if (bits == 8) {
        for (size_t i = 0; i < count; ++i)
            out[i] = static_cast<float>(bytes[i] - 128) * 0.0078125F;
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        qint16 sample;
        std::memcpy(&sample, bytes + i * sizeof sample, sizeof sample);
        out[i] = static_cast<float>(sample) * (1.0F / 32768.0F);
    }
}

void samplesFromFloat(const float* in, size_t count, int bits, void* samples)
{
    auto* bytes = static_cast<quint8*>(samples);
    if (bits == 8) {
        for (size_t i = 0; i < count; ++i)
            bytes[i] = byteFromFloat(in[i]);
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        const qint16 sample = wordFromFloat(in[i]);
        std::memcpy(bytes + i * sizeof sample, &sample, sizeof sample);
    }
}

} // namespace tavlo
