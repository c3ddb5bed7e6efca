#pragma once

#include "records/RecordFields.h"
#include "records/ValueText.h"

#include <QStringList>

#include <limits>
#include <random>

namespace tavlo::test {

/// Values that are likely to break a form of text: the ends of every range, and texts that XML has to escape.
class RandomValues
{
public:
    explicit RandomValues(unsigned seed) : _engine(seed) {}

    size_t below(size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(_engine); }

    void fill(bool& value) { value = below(2) == 1; }
    void fill(QString& value) { value = texts()[static_cast<qsizetype>(below(static_cast<size_t>(texts().size())))]; }
    void fill(QUuid& value) { value = below(4) ? QUuid::createUuid() : QUuid(); }
    void fill(QPoint& value) { value = {any<int>(), any<int>()}; }
    void fill(QPointF& value) { value = {any<double>(), any<double>()}; }
    void fill(QRect& value) { value.setCoords(any<int>(), any<int>(), any<int>(), any<int>()); }
    void fill(QRectF& value) { value = {any<double>(), any<double>(), any<double>(), any<double>()}; }

    void fill(QByteArray& value)
    {
        value.resize(static_cast<qsizetype>(below(9)));
        for (char& byte : value)
            byte = static_cast<char>(below(256));
    }

    void fill(QStringList& value)
    {
        value.clear();
        for (size_t i = below(4); i > 0; --i)
            fill(value.emplaceBack());
    }

    void fill(QVariant& value)
    {
        QString text;
        QByteArray bytes;
        fill(text);
        fill(bytes);
        const QVariantList all{QVariant(),       any<int>(), any<quint32>(), any<qint64>(), any<quint64>(),
                               finite<double>(), true,       text,           bytes,         finite<float>()};
        value = all[static_cast<qsizetype>(below(static_cast<size_t>(all.size())))];
    }

    template <class T>
    requires std::is_arithmetic_v<T>
    void fill(T& value) { value = any<T>(); }

    template <class T>
    requires std::is_enum_v<T>
    void fill(T& value) { value = static_cast<T>(any<std::underlying_type_t<T>>()); }

private:
    template <class T>
    T any()
    {
        using Limits = std::numeric_limits<T>;
        if constexpr (std::is_floating_point_v<T>) {
            const T odd[]{T(0),
                          T(-0.0),
                          Limits::max(),
                          Limits::lowest(),
                          Limits::denorm_min(),
                          Limits::epsilon(),
                          Limits::infinity(),
                          -Limits::infinity(),
                          Limits::quiet_NaN(),
                          T(0.1),
                          T(1) / T(3)};
            return below(2) ? odd[below(std::size(odd))] : finite<T>();
        } else {
            const T odd[]{T(0), T(1), Limits::max(), Limits::min()};
            return below(2) ? odd[below(std::size(odd))] : static_cast<T>(_engine());
        }
    }

    template <class T>
    T finite()
    {
        return std::ldexp(std::uniform_real_distribution<T>(-1, 1)(_engine), static_cast<int>(below(80)) - 40);
    }

    static const QStringList& texts()
    {
        static const QStringList list{QString(),
                                      QStringLiteral("plain"),
                                      QStringLiteral("<&>\"'%1;]]>"),
                                      QStringLiteral("  blanks around  "),
                                      QStringLiteral("tab\tnew\nline\r\nend\n"),
                                      QStringLiteral("日本語 עברית العربية Ünïcödé"),
                                      QString::fromUtf8("\xF0\x9F\x8E\xA5 camera \xF0\x9F\x94\xB4"),
                                      QStringLiteral("0"),
                                      QString(5000, QLatin1Char('x'))};
        return list;
    }

    std::mt19937_64 _engine;
};

/// Visits the fields of a record and fills each with a random value.
template <TavloRecord T>
class RandomFields
{
public:
    RandomFields(T& record, RandomValues& values) : _record(record), _values(values) {}

    template <class M>
    void field(QLatin1StringView, M T::*member)
    {
        fill(_record.*member);
    }

    template <class M>
    void readOnly(QLatin1StringView, M T::*)
    {
        // is not written: a record that is to come back equal holds the default
    }

    template <class M, size_t size>
    void numbered(QLatin1StringView, std::array<M, size> T::*member)
    {
        for (M& entry : _record.*member)
            fill(entry);
    }

    template <TavloRecord M>
    void list(QLatin1StringView, QList<M> T::*member)
    {
        (_record.*member).clear();
        for (size_t i = _values.below(4); i > 0; --i)
            fill((_record.*member).emplaceBack());
    }

    template <TavloRecord M>
    void repeated(QLatin1StringView key, QList<M> T::*member)
    {
        list(key, member);
    }

    template <class N, TavloRecord M>
    void valued(QLatin1StringView, N T::*number, M T::*nested)
    {
        fill(_record.*number);
        fill(_record.*nested);
    }

    template <class M>
    void unsaved(M T::*)
    {}

private:
    template <class M>
    void fill(M& value)
    {
        if constexpr (TavloRecord<M>) {
            RandomFields<M> fields(value, _values);
            RecordFields<M>::visit(fields);
        } else {
            _values.fill(value);
        }
    }

    T& _record;
    RandomValues& _values;
};

template <TavloRecord T>
T randomRecord(RandomValues& values)
{
    T record;
    RandomFields<T> fields(record, values);
    RecordFields<T>::visit(fields);
    return record;
}

} // namespace tavlo::test
