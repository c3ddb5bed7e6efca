#pragma once

#include <tavlo/IUnknownEx.h>

/// What a movable camera is told. The numbers are fixed.
enum TavloCloudTourOperation : qint32
{
    TavloCloudTourLeft = 0,
    TavloCloudTourRight = 1,
    TavloCloudTourUp = 2,
    TavloCloudTourDown = 3,
    TavloCloudTourZoomIn = 4,
    TavloCloudTourZoomOut = 5,
    TavloCloudTourFocusNear = 6,
    TavloCloudTourFocusFar = 7,
    TavloCloudTourStop = 8,
    TavloCloudTourLeftUp = 9,
    TavloCloudTourRightUp = 10,
    TavloCloudTourLeftDown = 11,
    TavloCloudTourRightDown = 12,
    TavloCloudTourSetPreset = 13,  ///< the value is the preset's number
    TavloCloudTourGotoPreset = 14, ///< the same
};

/// Moves a camera, or a stage as if by one. A movement goes on until it is told another one or to stop. Any thread.
class ICloudTourControl : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x2d5f9be1, 0x06c4, 0x4f0e, 0x93, 0x5b, 0x71,
                                                  0xa8,       0xe4,   0x2c,   0x18, 0x01};

    /// Before the first operation. 0, or -1 when it cannot be controlled.
    virtual qint32 start() = 0;

    /// Returns at once; what the camera makes of it is told in the log.
    /// \param operation  a TavloCloudTourOperation
    /// \param value      the speed, 1 to 100, or a preset's number; null or 0 is half the speed
    /// \return 0, or -1 when there is no such operation or too many wait for the camera
    virtual qint32 control(qint32 operation, const qint32* value) = 0;

protected:
    ~ICloudTourControl() = default;
};
