#pragma once

#include <QByteArray>
#include <QtEndian>

#include <optional>

// Boxes of the ISO base media file format, ISO/IEC 14496-12: a size and a type of four bytes each, then the content.

namespace tavlo {

/// Reads big-endian numbers; zero behind the end.
class Mp4Reader
{
public:
    explicit Mp4Reader(QByteArrayView data) : _data(data) {}

    quint32 u32() { return take<quint32>(); }
    quint64 u64() { return take<quint64>(); }
    quint64 sized(bool wide) { return wide ? u64() : u32(); }
    void skip(qsizetype bytes) { _at = qMin(_at + bytes, _data.size()); }
    qsizetype left() const { return _data.size() - _at; }

    /// The next box's content; nothing at the end or for a box that is too long.
    struct Box
    {
        QByteArrayView type, content, whole;
    };
    std::optional<Box> box()
    {
        const qsizetype start = _at;
        const auto size = static_cast<qsizetype>(left() >= 8 ? u32() : 0);
        if (size < 8 || size - 4 > left())
            return std::nullopt;
        Box found{_data.sliced(start + 4, 4), _data.sliced(start + 8, size - 8), _data.sliced(start, size)};
        _at = start + size;
        return found;
    }

private:
    template <class Number>
    Number take()
    {
        if (left() < qsizetype{sizeof(Number)}) {
            _at = _data.size();
            return 0;
        }
        const auto number = qFromBigEndian<Number>(_data.data() + _at);
        _at += qsizetype{sizeof(Number)};
        return number;
    }

    QByteArrayView _data;
    qsizetype _at = 0;
};

/// The first box of that type in a box's content; empty when there is none.
inline QByteArrayView findBox(QByteArrayView content, const char* type)
{
    Mp4Reader reader(content);
    while (const auto box = reader.box())
        if (box->type == type)
            return box->content;
    return {};
}

/// Writes boxes one in the other.
class Mp4Writer
{
public:
    QByteArray data;

    void u32(quint64 number) { put(static_cast<quint32>(number)); }
    void u64(quint64 number) { put(number); }
    void bytes(QByteArrayView view) { data.append(view); }

    /// `write` writes the content.
    template <class Write>
    void box(const char* type, Write write)
    {
        const qsizetype start = data.size();
        u32(0);
        bytes(type);
        write();
        qToBigEndian(static_cast<quint32>(data.size() - start), data.data() + start);
    }

    /// A box with a version and flags.
    template <class Write>
    void fullBox(const char* type, quint8 version, Write write)
    {
        box(type, [&] {
            u32(quint32{version} << 24);
            write();
        });
    }

private:
    template <class Number>
    void put(Number number)
    {
        const Number big = qToBigEndian(number);
        data.append(reinterpret_cast<const char*>(&big), qsizetype{sizeof(big)});
    }
};

} // namespace tavlo
