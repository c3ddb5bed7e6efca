#pragma once

#include <QtGlobal>

#include <memory>

struct SwsContext;
struct picture_t;

namespace tavlo {

/// Turns pictures in memory from one chroma into another of the same size.
///
/// Red, green and blue become BT.709 of limited range: to NV12 by loops of ours, which take a quarter of libswscale's
/// time, to all else by libswscale; UYVY of fewer than 720 lines is BT.601, as those who receive it expect. One thread at a
/// time. Nothing is allocated by a conversion.
class PictureConverter
{
public:
    PictureConverter();
    ~PictureConverter();

    /// False, told in the log, where there is no way from the one to the other.
    bool open(quint32 sourceChroma, quint32 targetChroma, int width, int height);
    void close();
    bool isOpen() const { return _toNv12 || _context != nullptr; }

    /// Both pictures in the chroma and size of `open`. \param flip  turns the picture over
    void convert(const picture_t* source, picture_t* target, bool flip);

private:
    struct FreeContext
    {
        void operator()(SwsContext* context) const;
    };

    std::unique_ptr<SwsContext, FreeContext> _context;
    bool _toNv12 = false, _blueFirst = false;
    bool _swapSource = false, _swapTarget = false;
    int _width = 0, _height = 0;
};

} // namespace tavlo
