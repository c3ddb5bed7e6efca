#include "base/BuildStamp.h"

#include <string_view>

namespace tavlo {

namespace {

constexpr std::string_view date = __DATE__; // "Nov  3 2026"
constexpr std::string_view time = __TIME__; // "09:05:01"

constexpr quint64 number(std::string_view digits)
{
    quint64 value = 0;
    for (const char digit : digits)
        value = value * 10 + (digit == ' ' ? 0 : static_cast<quint64>(digit - '0'));
    return value;
}

constexpr quint64 stamp()
{
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const quint64 month = months.find(date.substr(0, 3)) / 3 + 1;
    const quint64 day = (number(date.substr(7, 4)) * 100 + month) * 100 + number(date.substr(4, 2));
    return ((day * 100 + number(time.substr(0, 2))) * 100 + number(time.substr(3, 2))) * 100 +
           number(time.substr(6, 2));
}

} // namespace

quint64 buildStamp() { return stamp(); }

} // namespace tavlo
