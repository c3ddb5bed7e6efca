#pragma once

#include <QtGlobal>

struct picture_t;

/// Planes of pictures.
namespace TavloUtil {

/// Points the planes of a picture at memory in which they lie one behind the other, as its chroma orders them.
/// \param pitch  bytes from one row of the first plane to the next; the others follow from it
/// \return false for a chroma that is unknown, and the picture stays as it was
bool picture_UpdatePlanes(picture_t* picture, quint8* pixels, int pitch);

/// Copies the visible pixels of a picture to one of the same chroma; of different sizes the part that both have.
/// \param flip  the last row becomes the first
void picture_CopyPixels(picture_t* target, const picture_t* source, bool flip);

} // namespace TavloUtil
