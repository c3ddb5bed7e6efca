#pragma once

#include <tavlo/IUnknownEx.h>

#include <QVariant>

/// What a host implements to hear of an engine's events.
class ITavloPresentThreadSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x6d0c6f2e, 0x52b1, 0x4a0b, 0x9e, 0x1c, 0x5d,
                                                  0x3a,       0x0f,   0x77,   0x21, 0x01};

    /// An event is done. Frame thread; an engine also reports from here what nobody asked for.
    ///
    /// \param event   a code of TavloEngineEvents.h
    /// \param result  what the handler returned: -1 for an event that failed or is unknown
    /// \param a1..a4  the event's arguments as the handler left them
    virtual void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant a3, QVariant a4) = 0;

protected:
    ~ITavloPresentThreadSink() = default;
};
