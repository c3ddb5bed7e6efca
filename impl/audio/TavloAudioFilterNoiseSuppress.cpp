#include "audio/TavloAudioFilterNoiseSuppress.h"

#include "audio/FilterMath.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>

TavloAudioFilterNoiseSuppress::TavloAudioFilterNoiseSuppress()
    : _suppressor("TavloAudioPortModule", "CreateTavloAudioNoiseSuppress")
{
    _suppressor.create();
}

void TavloAudioFilterNoiseSuppress::reset() { _setting = {}; }

bool TavloAudioFilterNoiseSuppress::isEnabled(const tagTavloAudioEffectParam& param, int, int, int) const
{
    return param.processNoiseSuppress.enable != 0;
}

block_t* TavloAudioFilterNoiseSuppress::processBlock(const tagTavloAudioEffectParam& param, block_t* block,
                                                     int channels, int bits, int rate, qint64 extra)
{
    if (!isEnabled(param, channels, bits, rate) || !_suppressor.isReady())
        return block;
    const double level = tavlo::finiteOr(param.processNoiseSuppress.level, 0.0);
    const Setting wanted{static_cast<int>(std::clamp(level, -1000.0, 1000.0)), channels, bits, rate};
    if (wanted != _setting) {
        _suppressor->close();
        _isOpen = _suppressor->open(wanted.level, channels, bits, rate);
        _setting = wanted;
    }
    return _isOpen ? _suppressor->process(block, channels, bits, rate, extra) : block;
}
