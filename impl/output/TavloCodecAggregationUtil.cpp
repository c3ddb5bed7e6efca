#include "output/TavloCodecAggregationUtil.h"

#include "base/CTempldateHelper.h"

#include <mutex>

namespace {

struct Maker
{
    std::mutex lock;
    CTempldateHelper<ITavloCodecAggregation> module{"TavloCodecAggregationModule", "CreateTavloCodecAggregation"};
    ITavloCodecAggregation* replacement = nullptr;

    ITavloCodecAggregation* current()
    {
        if (replacement)
            return replacement;
        return module.isReady() || module.create() ? module.get() : nullptr;
    }
};

/// Kept to the end of the process, as the module is.
Maker& maker()
{
    static auto& one = *new Maker;
    return one;
}

} // namespace

tavlo::InterfacePtr<ITavloGraphicsContext> TavloCodecAggregationUtil::createGraphicsContext(TavloVideoEncodeImpl impl)
{
    const std::lock_guard guard(maker().lock);
    ITavloCodecAggregation* const current = maker().current();
    return tavlo::InterfacePtr<ITavloGraphicsContext>(current ? current->createGraphicsContext(impl) : nullptr);
}

tavlo::InterfacePtr<ITavloVideoEncoder> TavloCodecAggregationUtil::createEncoder(TavloVideoEncodeImpl impl)
{
    const std::lock_guard guard(maker().lock);
    ITavloCodecAggregation* const current = maker().current();
    return tavlo::InterfacePtr<ITavloVideoEncoder>(current ? current->createEncoder(impl) : nullptr);
}

void TavloCodecAggregationUtil::replace(ITavloCodecAggregation* aggregation)
{
    const std::lock_guard guard(maker().lock);
    maker().replacement = aggregation;
}
