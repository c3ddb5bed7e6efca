#pragma once

#include <tavlo/IUnknownEx.h>

#include <QString>

struct tagTavloShowLogoInfo;
struct tagTavloShowTextInfo;

/// What shows items on a channel: events, and sources that bring items along. Frame thread.
///
/// Items are found by the `uuid` of their record. A layer is one of the channel's eight, 0 on top.
class ITavloPresentChannelRich : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x94f06c1d, 0x73a5, 0x4d2e, 0xb8, 0x5f, 0x20,
                                                  0xe6,       0x41,   0xd7,   0x3c, 0x01};

    virtual void addLogo(const tagTavloShowLogoInfo& info, int layer) = 0;
    virtual void removeLogo(const QString& id) = 0;
    virtual void updateLogo(const tagTavloShowLogoInfo& info) = 0;

    virtual void addOverlay(const tagTavloShowLogoInfo& info, int layer) = 0;
    virtual void removeOverlay(const QString& id) = 0;
    virtual void updateOverlay(const tagTavloShowLogoInfo& info) = 0;

    virtual void addText(const tagTavloShowTextInfo& info, int layer) = 0;
    virtual void removeText(const QString& id) = 0;
    virtual void updateText(const tagTavloShowTextInfo& info) = 0;

protected:
    ~ITavloPresentChannelRich() = default;
};
