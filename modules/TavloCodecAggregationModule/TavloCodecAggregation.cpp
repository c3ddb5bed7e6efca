#include "TavloCodecAggregationModule/EncoderSettings.h"
#include "TavloCodecAggregationModule/FfmpegVideoEncoder.h"

#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

namespace {

using namespace tavlo;

bool isKnown(TavloVideoEncodeImpl impl) { return impl <= TavloVideoEncodeImplVAAPI; }

/// The encoders of today take pictures from memory, so there is nothing that they would share.
class GraphicsContext final : public Implements<GraphicsContext, ITavloGraphicsContext>
{
public:
    bool create(quint32, void*, quint32, int) override { return true; }
    void makeCurrent() override {}
    void* device() override { return nullptr; }
};

class CodecAggregation final : public Implements<CodecAggregation, ITavloCodecAggregation>
{
public:
    ITavloGraphicsContext* createGraphicsContext(TavloVideoEncodeImpl impl) override
    {
        return isKnown(impl) ? new GraphicsContext : nullptr;
    }

    ITavloVideoEncoder* createEncoder(TavloVideoEncodeImpl impl) override
    {
        return isKnown(impl) ? new FfmpegVideoEncoder(impl) : nullptr;
    }
};

} // namespace

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloCodecAggregation(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<CodecAggregation>(id, version);
}
