#pragma once

#include "audio/TavloAudioFilter.h"
#include "base/CTempldateHelper.h"

#include "TavloAudioPortModule/ITavloAudioNoiseSuppress.h"

using CTavloAudioNoiseSuppressHelper = CTempldateHelper<ITavloAudioNoiseSuppress>;

/// Takes steady noise out of a channel, by the audio port module. Without the module every block passes as it is.
class TavloAudioFilterNoiseSuppress final : public TavloAudioFilter
{
public:
    TavloAudioFilterNoiseSuppress();

    void reset() override;
    block_t* processBlock(const tagTavloAudioEffectParam& param, block_t* block, int channels, int bits, int rate,
                          qint64 extra) override;
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    /// What the suppressor is opened with.
    struct Setting
    {
        int level = 0;
        int channels = 0;
        int bits = 0;
        int rate = 0; ///< Hz; 0 for none
        bool operator==(const Setting&) const = default;
    };

    CTavloAudioNoiseSuppressHelper _suppressor;
    Setting _setting;
    bool _isOpen = false; ///< false with a setting: it cannot be opened so, and is not tried again
};
