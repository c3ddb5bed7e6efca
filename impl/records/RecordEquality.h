#pragma once

#include "records/RecordFields.h"

#include <QPointF>
#include <QRectF>
#include <QStringList>

#include <algorithm>
#include <type_traits>

namespace tavlo {

/// Visits the fields of two records and ends with whether all were equal.
template <TavloRecord T>
class RecordEquality
{
public:
    RecordEquality(const T& a, const T& b) : _a(a), _b(b) {}

    bool result() const { return _equal; }

    template <class M>
    void field(QLatin1StringView, M T::*member)
    {
        unsaved(member);
    }

    template <class M>
    void readOnly(QLatin1StringView, M T::*member)
    {
        unsaved(member);
    }

    template <class M, size_t size>
    void numbered(QLatin1StringView, std::array<M, size> T::*member)
    {
        _equal = _equal && std::ranges::equal(_a.*member, _b.*member, &same<M>);
    }

    template <TavloRecord M>
    void list(QLatin1StringView, QList<M> T::*member)
    {
        unsaved(member);
    }

    template <TavloRecord M>
    void repeated(QLatin1StringView, QList<M> T::*member)
    {
        unsaved(member);
    }

    template <class N, TavloRecord M>
    void valued(QLatin1StringView, N T::*number, M T::*nested)
    {
        unsaved(number);
        unsaved(nested);
    }

    template <class M>
    void unsaved(M T::*member)
    {
        _equal = _equal && same(_a.*member, _b.*member);
    }

private:
    template <class M>
    static bool same(const M& a, const M& b)
    {
        if constexpr (std::is_floating_point_v<M>)
            return a == b || (a != a && b != b);       // a record with a NaN has not changed just by being compared
        else if constexpr (std::is_same_v<M, QPointF>) // Qt's own comparison lets small differences pass
            return same(a.x(), b.x()) && same(a.y(), b.y());
        else if constexpr (std::is_same_v<M, QRectF>)
            return same(a.x(), b.x()) && same(a.y(), b.y()) && same(a.width(), b.width()) &&
                   same(a.height(), b.height());
        else
            return a == b;
    }

    const T& _a;
    const T& _b;
    bool _equal = true;
};

} // namespace tavlo
