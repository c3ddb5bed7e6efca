#pragma once

#include <QtGlobal>

#include <memory>

struct SwsContext;
struct picture_t;

namespace tavlo {

/// Turns pictures in memory from one chroma into another of the same size.
///
/// Red, green and blue become BT.709 of limited range. One thread at a time. Nothing is allocated by a conversion.
class PictureConverter
{
public:
    PictureConverter();
    ~PictureConverter();

    /// False, told in the log, where there is no way from the one to the other.
    bool open(quint32 sourceChroma, quint32 targetChroma, int width, int height);
    void close();
    bool isOpen() const { return _context != nullptr; }

    /// Both pictures in the chroma and size of `open`.
    void convert(const picture_t* source, picture_t* target);

    /// The same into one plane of bytes. \param pitch  bytes from row to row
    void convert(const picture_t* source, quint8* target, int pitch);

private:
    struct FreeContext
    {
        void operator()(SwsContext* context) const;
    };

    std::unique_ptr<SwsContext, FreeContext> _context;
    bool _swapSource = false, _swapTarget = false;
    int _height = 0;
};

} // namespace tavlo
