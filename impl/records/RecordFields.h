#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QLatin1StringView>
#include <QList>

#include <array>

// The one description of a record's fields. `RecordFields<T>::visit` calls the visitor once for each field, in the
// order of the record, and everything that handles records is such a visitor: reader, writer, comparison, strict
// check, and the random values of the tests.
//
//   field(key, member)             a value, a string list or a record: one element
//   readOnly(key, member)          the same, but never written
//   numbered(prefix, member)       an array: one element an entry, the key ends in the index
//   list(key, member)              a list of records: one element that holds an element for each entry
//   repeated(key, member)          a list of records without that element around it
//   valued(key, number, record)    one element with a number in its `value` and a record in its children
//   unsaved(member)                has no XML form; counts in comparisons

namespace tavlo {

template <TavloRecord T>
struct RecordFields;

/// Whether a child's tag is one of an array's: the prefix may stand anywhere in it.
inline bool isNumberedKey(const QString& tag, QLatin1StringView prefix) { return tag.indexOf(prefix) >= 0; }

/// The number in such a tag: what is left without the prefix. 0 when that is no number.
inline int numberOfKey(QString tag, QLatin1StringView prefix, bool* ok = nullptr)
{
    return tag.remove(prefix).toInt(ok);
}

} // namespace tavlo
