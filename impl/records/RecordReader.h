#pragma once

#include "records/RecordFields.h"
#include "records/ValueText.h"

#include <QDomElement>

namespace tavlo {

template <TavloRecord T>
void readRecord(const QDomElement& element, T& record);
template <TavloRecord T>
void readList(const QDomElement& element, QList<T>& list);
void readStrings(const QDomElement& element, QStringList& list);

/// Visits the fields of one record for one child element: those that the child's tag names take what it carries.
template <TavloRecord T>
class RecordReader
{
public:
    RecordReader(const QDomElement& child, T& record) : _child(child), _tag(child.tagName()), _record(record) {}

    template <class M>
    void field(QLatin1StringView key, M T::*member)
    {
        if (_tag == key)
            read(_record.*member);
    }

    template <class M>
    void readOnly(QLatin1StringView key, M T::*member)
    {
        field(key, member);
    }

    template <class M, size_t size>
    void numbered(QLatin1StringView prefix, std::array<M, size> T::*member)
    {
        if (!isNumberedKey(_tag, prefix))
            return;
        const int index = numberOfKey(_tag, prefix);
        if (index >= 0 && index < static_cast<int>(size))
            read((_record.*member)[static_cast<size_t>(index)]);
    }

    template <TavloListRecord M>
    void list(QLatin1StringView key, QList<M> T::*member)
    {
        if (_tag == key)
            readList(_child, _record.*member);
    }

    template <TavloRecord M>
    void repeated(QLatin1StringView key, QList<M> T::*member)
    {
        if (_tag == key)
            readRecord(_child, (_record.*member).emplaceBack());
    }

    template <class N, TavloRecord M>
    void valued(QLatin1StringView key, N T::*number, M T::*nested)
    {
        if (_tag != key)
            return;
        read(_record.*number);
        readRecord(_child, _record.*nested);
    }

    template <class M>
    void unsaved(M T::*)
    {}

private:
    template <class M>
    void read(M& value)
    {
        if constexpr (TavloRecord<M>)
            readRecord(_child, value);
        else if constexpr (std::is_same_v<M, QStringList>)
            readStrings(_child, value);
        else if constexpr (std::is_same_v<M, QVariant>)
            value = readVariant(_child.attribute(QStringLiteral("type")), _child.attribute(QStringLiteral("value")));
        else
            readValue(_child.attribute(QStringLiteral("value")), value);
    }

    const QDomElement& _child;
    const QString _tag;
    T& _record;
};

/// Calls the function with each child that is an element.
template <class Function>
void forEachChild(const QDomElement& element, Function function)
{
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isElement())
            function(node.toElement());
    }
}

template <TavloRecord T>
void readRecord(const QDomElement& element, T& record)
{
    forEachChild(element, [&record](const QDomElement& child) {
        RecordReader<T> reader(child, record);
        RecordFields<T>::visit(reader);
    });
}

template <TavloRecord T>
void readList(const QDomElement& element, QList<T>& list)
{
    forEachChild(element, [&list](const QDomElement& child) {
        T& entry = list.emplaceBack();
        if (child.tagName() == QLatin1StringView(listEntryTag<T>))
            readRecord(child, entry);
    });
}

} // namespace tavlo
