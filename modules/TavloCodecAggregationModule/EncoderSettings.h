#pragma once

#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"

#include <tavlo/records/MediaFormat.h>

#include <span>

struct AVCodecContext;

namespace tavlo {

/// An encoder of libavcodec that answers for one way of coding and one codec.
struct EncoderChoice
{
    TavloVideoEncodeImpl impl;
    TavloVideoCodec codec;
    const char* name;
    bool onDevice;       ///< takes pictures from the memory of a VAAPI device
    const char* quality; ///< its option of constant quality; null: the encoder's global quality
};

/// Those that may answer, the best first; none for values that are unknown.
std::span<const EncoderChoice> encoderChoices();

/// What the settings of the record mean for an encoder. docs/outputs.md tells them to people.
///
/// | field                | meaning                                                                                |
/// |----------------------|----------------------------------------------------------------------------------------|
/// | `videoOption`        | profile: 0 the encoder's choice, 1 baseline, 2 main, 3 high                             |
/// | `videoSettings[2]`   | the quantizer of constant quantizers, 0 to 51                                           |
/// | `videoSettings[3]`   | pictures from one key picture to the next; 0: those of two seconds                      |
/// | `videoSettings[4]`   | the quality of constant quality, 0 (best) to 51                                         |
/// | `videoBitrate`       | mean rate, kilobits a second                                                            |
/// | `rateSettings[0]`    | smallest quantizer                                                                      |
/// | `rateSettings[1]`    | 0 constant quantizer, 1 mean rate with a limit, 2 constant quality with a limit         |
/// | `rateFactor`         | the limit as a multiple of the mean rate                                                |
/// | `bufferSetting`      | over what time the limit holds, tenths of a second                                      |
/// | `videoOption2`       | how far motion is searched, pixels                                                      |
/// | `videoOption3`       | 0 no tuning, 1 no delay, 2 film, 3 animation, 4 still picture; libx265 has no 2 and 4   |
/// | `encoderSettings[0]` | bidirectional pictures in a row, 0 to 16                                                |
/// | `encoderSettings[1]` | reference pictures, 1 to 16, libx265: to 6                                              |
/// | `encoderSettings[2]` | pictures that are looked ahead, 0 to 60                                                 |
/// | `encoderSettings[3]` | speed: 0 veryfast, 1 ultrafast, 2 superfast, 3 faster, 4 fast, 5 medium                 |
/// | `encoderSettings[4]` | threads, 0 to 64, libx265: to 16; 0: one for each core                                  |
///
/// `videoSettings[0]` and `[1]` belong to projections; `encoderSettings[5]` to `[8]` are free.
void applySettings(AVCodecContext& codec, const EncoderChoice& choice, const tagTavloVideoInfo& videoInfo,
                   const tagTavloPresentOutputParam& param);

} // namespace tavlo
