#include "drawing/TransitionTable.h"

#include <tavlo/TavloPresentUtil.h>

using namespace tavlo;

TavloPresentEffectKindCatalog TavloPresentUtil::getEffectCatalog(unsigned kind) { return transitionFamily(kind); }

QList<quint32> TavloPresentUtil::transitionKinds()
{
    QList<quint32> kinds;
    kinds.reserve(static_cast<qsizetype>(transitionRows().size()));
    for (const TransitionRow& row : transitionRows())
        kinds.append(row.kind);
    return kinds;
}

QString TavloPresentUtil::transitionName(quint32 kind)
{
    const TransitionRow* row = findTransition(kind);
    return row ? QString::fromLatin1(row->name) : QString();
}

quint32 TavloPresentUtil::transitionKind(const QString& name)
{
    const TransitionRow* row = findTransition(std::string_view(name.toUtf8()));
    return row ? row->kind : 0;
}
