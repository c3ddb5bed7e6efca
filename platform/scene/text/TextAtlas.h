#pragma once

#include "graphics/Device.h"

#include <QImage>
#include <QRect>

#include <vector>

namespace tavlo::scene {

class Director;

/// Textures that the small texts of a director share, so that many labels are drawn by one call. Frame thread.
class TextAtlas
{
public:
    /// A place in one of the textures, or none.
    struct Slot
    {
        graphics::TexturePtr page; ///< null: none
        QRect area;                ///< texels from the page's left top; more than what was asked for
    };

    explicit TextAtlas(Director& director) : _director(director) {}

    /// Whether a picture of that size is small enough.
    static bool takes(QSize size);

    /// Writes a picture that the atlas takes, from its left top: into the slot where it fits, else into another, which
    /// the slot then is. False, and the slot is none, when the device cannot.
    bool write(Slot& slot, const QImage& image, QRect part);

    /// Gives a place back; the slot is none afterwards.
    void release(Slot& slot);

    /// Lets go of all textures. Slots that are still held keep theirs, and are not taken back.
    void clear();

private:
    struct Shelf
    {
        graphics::TexturePtr page;
        int top, height, filled; ///< texels
    };

    bool allocate(Slot& slot, QSize size);
    bool takeFree(Slot& slot, QSize size);
    bool takeShelf(Slot& slot, QSize size);
    bool addShelf(int height);

    Director& _director;
    std::vector<Shelf> _shelves; ///< those of one page one below the other, the newest page last
    std::vector<Slot> _free;
    std::vector<std::byte> _scratch; ///< a slot's texels
};

} // namespace tavlo::scene
