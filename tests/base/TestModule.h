#pragma once

#include <tavlo/InterfacePtr.h>

class ITestCounter : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x11111111, 0x2222, 0x3333, 1, 2, 3, 4, 5, 6, 7, 8};

    /// How many objects of the module live.
    virtual int living() = 0;

protected:
    ~ITestCounter() = default;
};
