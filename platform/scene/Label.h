#pragma once

#include "scene/Node.h"
#include "scene/text/TextStyle.h"

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace tavlo::scene {

class TextPicture;

/// Text, in any script that a font of the machine has; lines break at "\n". The content size is that of the text
/// itself: shadow and outline reach beyond it. The anchor is the middle.
///
/// The words are drawn once, into textures, and again when they or their look have changed: setting what is set already
/// costs a comparison. Text that stands still stands on whole pixels. Needs an application object of Qt Gui; without
/// one the label stays empty and the log says so. Frame thread.
class Label : public Node
{
public:
    /// \param font  a family, empty for the system's own
    /// \param size  pixels
    static RefPtr<Label> createWithSystemFont(Director& director, std::string_view text, std::string_view font,
                                              float size, Size dimensions = {});
    explicit Label(Director& director);
    ~Label() override;
    std::string_view className() const override { return "Label"; }

    void setString(std::string_view utf8);
    const std::string& string() const { return _string; }

    void setSystemFontName(std::string_view family);
    void setSystemFontSize(float pixels);
    void enableBold();
    void setTextColor(Color4B color); ///< the fill
    void setAlignment(TextHAlignment horizontal, TextVAlignment vertical);
    void setDimensions(Size pixels); ///< 0 is as large as the text; sizes are held within `TextBounds.h`

    const TextStyle& textStyle() const { return _style; }

    /// Measures the text where that has not been done since it changed.
    Size contentSize() const override;

    /// The same, for who wants it done now.
    void updateLayout() { contentSize(); }

    /// How often the words were drawn so far.
    std::uint64_t rasterCount() const { return _rasterCount; }

protected:
    /// Sets a part of the style; the text is drawn anew if that changed something.
    template <class T>
    void setStyle(T TextStyle::*part, const std::type_identity_t<T>& value)
    {
        if (_style.*part == value)
            return;
        _style.*part = value;
        markTextDirty();
    }

    void draw(Renderer& renderer, const Affine& transform) override;

private:
    void markTextDirty();
    void raster(std::uint64_t frame);

    /// Where it is drawn now; whether it was drawn there before, or not at all.
    bool takePlace(const Affine& transform);

    std::string _string;
    TextStyle _style;
    const std::unique_ptr<TextPicture> _picture;
    mutable Size _measured;
    mutable bool _measureDirty = true;
    bool _rasterDirty = true;
    std::uint64_t _nextTry = 0; ///< the frame from which on the device is asked again
    Affine _lastPlace;          ///< of the anchor, in the last frame that drew it
    bool _drawn = false;
    std::uint64_t _rasterCount = 0;
};

} // namespace tavlo::scene
