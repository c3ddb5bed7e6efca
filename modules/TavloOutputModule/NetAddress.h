#pragma once

#include <QString>

#include <string>

namespace tavlo {

/// A host's name or address, as URLs write it: those of IPv6 in brackets.
inline std::string urlHost(const std::string& host)
{
    const bool isBare = host.find(':') != std::string::npos && !host.starts_with('[');
    return isBare ? '[' + host + ']' : host;
}

/// An address without brackets, and the port behind it; 0 where there is none.
struct HostPort
{
    QString host;
    quint16 port = 0;
};

/// Reads `host`, `host:port`, `[address]:port` and an address of IPv6 alone.
inline HostPort splitHostPort(const QString& text)
{
    const bool isBracketed = text.startsWith(QLatin1Char('['));
    const qsizetype end = isBracketed ? text.indexOf(QLatin1Char(']')) : text.indexOf(QLatin1Char(':'));
    if (end < 0 || (!isBracketed && text.count(QLatin1Char(':')) > 1))
        return {text, 0};
    const qsizetype first = isBracketed ? 1 : 0;
    const QString rest = text.mid(end + first);
    return {text.mid(first, end - first), rest.startsWith(QLatin1Char(':')) ? rest.mid(1).toUShort() : quint16{0}};
}

} // namespace tavlo
