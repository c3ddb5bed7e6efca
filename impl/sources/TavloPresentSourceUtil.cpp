#include "sources/TavloPresentSourceUtil.h"

#include "sources/PlayerSources.h"

#include <map>
#include <utility>

using namespace tavlo;

namespace {

template <class Source>
SourcePtr make(const SourceSite& site)
{
    return SourcePtr::adopt(new Source(site));
}

std::map<quint32, SourceMaker>& makers()
{
    static std::map<quint32, SourceMaker> rows{
        {TavloPresentSourceTypeMovieList, &make<TavloPresentSourceMediaVLCMovieList>},
        {TavloPresentSourceTypeDevice, &make<TavloPresentSourceMediaVLCDev>},
        {TavloPresentSourceTypeDecklink, &make<TavloPresentSourceMediaVLCDecklink>},
        {TavloPresentSourceTypeHikvision, &make<TavloPresentSourceMediaVLCHikvision>},
        {TavloPresentSourceTypeMW, &make<TavloPresentSourceMediaVLCMW>},
        {TavloPresentSourceTypeURL, &make<TavloPresentSourceMediaVLCURL>},
    };
    return rows;
}

} // namespace

QVariant tavlo::forHost(ITavloPresentEnginePrivate* engine, const SourcePtr& source)
{
    if (engine->hasSink())
        source->addRef();
    return QVariant(static_cast<qulonglong>(reinterpret_cast<quintptr>(query<ITavloPresentSource>(source.get()))));
}

SourcePtr TavloPresentSourceUtil::createSource(const tagTavloPresentSourceInfo& info, const SourceSite& site)
{
    const auto row = makers().find(info.type);
    return row != makers().end() && row->second ? row->second(site) : SourcePtr{};
}

SourceMaker TavloPresentSourceUtil::setSourceMaker(quint32 type, SourceMaker maker)
{
    return std::exchange(makers()[type], maker);
}
