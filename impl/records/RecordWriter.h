#pragma once

#include "records/RecordFields.h"
#include "records/ValueText.h"

#include <QXmlStreamWriter>

namespace tavlo {

template <TavloRecord T>
void writeRecord(QXmlStreamWriter& writer, const QString& name, const T& record);
template <TavloRecord T>
void writeList(QXmlStreamWriter& writer, const QString& name, const QList<T>& list);
void writeStrings(QXmlStreamWriter& writer, const QString& name, const QStringList& list);

/// Visits the fields of one record and writes an element for each.
template <TavloRecord T>
class RecordWriter
{
public:
    RecordWriter(QXmlStreamWriter& writer, const T& record) : _writer(writer), _record(record) {}

    template <class M>
    void field(QLatin1StringView key, M T::*member)
    {
        write(key, _record.*member);
    }

    template <class M>
    void readOnly(QLatin1StringView, M T::*)
    {}

    template <class M, size_t size>
    void numbered(QLatin1StringView prefix, std::array<M, size> T::*member)
    {
        for (size_t i = 0; i < size; ++i)
            write(prefix + QString::number(i), (_record.*member)[i]);
    }

    template <TavloListRecord M>
    void list(QLatin1StringView key, QList<M> T::*member)
    {
        writeList(_writer, key, _record.*member);
    }

    template <TavloRecord M>
    void repeated(QLatin1StringView key, QList<M> T::*member)
    {
        for (const M& entry : _record.*member)
            writeRecord(_writer, key, entry);
    }

    template <class N, TavloRecord M>
    void valued(QLatin1StringView key, N T::*number, M T::*nested)
    {
        _writer.writeStartElement(key);
        _writer.writeAttribute(QStringLiteral("value"), writeValue(_record.*number));
        RecordWriter<M> children(_writer, _record.*nested);
        RecordFields<M>::visit(children);
        _writer.writeEndElement();
    }

    template <class M>
    void unsaved(M T::*)
    {}

private:
    template <class M>
    void write(const QString& key, const M& value)
    {
        if constexpr (TavloRecord<M>) {
            writeRecord(_writer, key, value);
        } else if constexpr (std::is_same_v<M, QStringList>) {
            writeStrings(_writer, key, value);
        } else if constexpr (std::is_same_v<M, QVariant>) {
            _writer.writeStartElement(key);
            _writer.writeAttribute(QStringLiteral("type"), writeVariantType(value));
            _writer.writeAttribute(QStringLiteral("value"), writeVariantText(value));
            _writer.writeEndElement();
        } else {
            _writer.writeStartElement(key);
            _writer.writeAttribute(QStringLiteral("value"), writeValue(value));
            _writer.writeEndElement();
        }
    }

    QXmlStreamWriter& _writer;
    const T& _record;
};

template <TavloRecord T>
void writeRecord(QXmlStreamWriter& writer, const QString& name, const T& record)
{
    writer.writeStartElement(name);
    RecordWriter<T> fields(writer, record);
    RecordFields<T>::visit(fields);
    writer.writeEndElement();
}

template <TavloRecord T>
void writeList(QXmlStreamWriter& writer, const QString& name, const QList<T>& list)
{
    writer.writeStartElement(name);
    for (const T& entry : list)
        writeRecord(writer, QString::fromLatin1(listEntryTag<T>), entry);
    writer.writeEndElement();
}

} // namespace tavlo
