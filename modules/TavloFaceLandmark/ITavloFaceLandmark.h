#pragma once

#include <tavlo/IUnknownEx.h>

#include <QPointF>
#include <QString>

#include <array>

/// Finds the landmarks of a face in a picture. Made by `CreateTavloFaceLandmark`. Owner's thread.
class ITavloFaceLandmark : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xc2d57a90, 0x6b14, 0x4be3, 0x93, 0x0f, 0x7d,
                                                  0x58,       0x1a,   0x26,   0xee, 0x01};

    /// Turn around three axes, place, scale and the quality of the fit, as the model gives them.
    using Pose = std::array<float, 12>;

    /// Loads the model. False, with a log line that names the file, when it cannot.
    /// \param modelFolder  with its separator
    virtual bool open(const QString& modelFolder) = 0;

    /// Looks for a face. \param pixels  rows of red, green, blue, alpha, top first \param pitch  bytes a row
    /// \return the number of landmarks found, 0 for no face
    virtual int analyse(int width, int height, const void* pixels, int pitch) = 0;

    /// A landmark of the last picture, pixels of it, y down. \param index  below what `analyse` gave
    virtual QPointF landmark(int index) const = 0;

    virtual Pose pose() const = 0;

protected:
    ~ITavloFaceLandmark() = default;
};
