#pragma once

#include "sources/TavloPresentSource.h"

#include <tavlo/InterfacePtr.h>

namespace tavlo {

using SourcePtr = CountedPtr<TavloPresentSource>;

/// Makes a source of one kind at that place, or nothing.
using SourceMaker = SourcePtr (*)(const SourceSite& site);

/// The source's ITavloPresentSource as the number that reports carry, with a reference for the host that hears of it.
QVariant forHost(ITavloPresentEnginePrivate* engine, const SourcePtr& source);

} // namespace tavlo

/// The kinds of sources.
namespace TavloPresentSourceUtil {

/// A new source of the record's type, which the caller still has to open. Null, for types without a row. Frame thread.
tavlo::SourcePtr createSource(const tagTavloPresentSourceInfo& info, const tavlo::SourceSite& site);

/// Has that maker make the sources of a type; null: nothing makes them. Before engines run.
/// \return the maker that it takes the place of
tavlo::SourceMaker setSourceMaker(quint32 type, tavlo::SourceMaker maker);

} // namespace TavloPresentSourceUtil
