#include "TavloCodecAggregationModule/EncoderSettings.h"
#include "TavloCodecAggregationModule/FfmpegVideoEncoder.h"
#include "TavloCodecAggregationModule/HardwareDevice.h"

#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <utility>

namespace {

using namespace tavlo;

bool isKnown(TavloVideoEncodeImpl impl) { return impl <= TavloVideoEncodeImplVAAPI; }

/// The device of encoders that take pictures from its memory. Where any encoder will do, it is opened when it is asked
/// for.
class GraphicsContext final : public Implements<GraphicsContext, ITavloGraphicsContext>
{
public:
    explicit GraphicsContext(TavloVideoEncodeImpl impl) : _impl(impl) {}

    bool create(quint32, void*, quint32, int) override { return _impl != TavloVideoEncodeImplVAAPI || device(); }
    void makeCurrent() override {}

    void* device() override
    {
        const bool wanted = _impl == TavloVideoEncodeImplVAAPI || _impl == TavloVideoEncodeImplAutomatic;
        if (wanted && !std::exchange(_tried, true)) {
            std::string error;
            _device = openVaapi(error);
            if (!_device)
                qDebug().noquote() << "GraphicsContext::device: no VAAPI:" << error.c_str();
        }
        return _device.get();
    }

private:
    const TavloVideoEncodeImpl _impl;
    bool _tried = false;
    BufferRefPtr _device;
};

class CodecAggregation final : public Implements<CodecAggregation, ITavloCodecAggregation>
{
public:
    ITavloGraphicsContext* createGraphicsContext(TavloVideoEncodeImpl impl) override
    {
        return isKnown(impl) ? new GraphicsContext(impl) : nullptr;
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
