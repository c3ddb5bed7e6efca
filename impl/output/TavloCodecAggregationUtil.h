#pragma once

#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"

#include <tavlo/InterfacePtr.h>

/// The video encoders of the module, which is loaded at the first call. Any thread.
class TavloCodecAggregationUtil
{
public:
    /// Null when the module is missing or knows no such value.
    static tavlo::InterfacePtr<ITavloGraphicsContext> createGraphicsContext(TavloVideoEncodeImpl impl);
    static tavlo::InterfacePtr<ITavloVideoEncoder> createEncoder(TavloVideoEncodeImpl impl);

    /// Has another maker answer from now on, for programs that bring encoders of their own; null: the module again.
    /// \param aggregation  lent
    static void replace(ITavloCodecAggregation* aggregation);
};
