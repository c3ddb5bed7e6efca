#pragma once

#include "drawing/TavloDrawDX11.h"
#include "drawing/TavloGraphicsRes.h"
#include "graphics/GraphicsTest.h"
#include "support/reference/ReferenceDraw.h"

#include <tavlo/InterfacePtr.h>

#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace tavlo::test {

/// A device with the effects of drawing, and the way from bytes to what an object has drawn.
class DrawTest : public GraphicsTest
{
public:
    using Draw = std::unique_ptr<TavloDrawDX11>;

    void SetUp() override;

    Draw makeDraw(int width, int height, graphics::Format format = graphics::Format::R8G8B8A8_UNORM);

    /// A texture of one or four bytes a texel.
    graphics::TexturePtr upload(int width, int height, int channels, std::span<const std::uint8_t> packed);
    graphics::TexturePtr upload(const reference::Picture& picture);

    /// What the object has drawn.
    reference::Picture result(const TavloDrawDX11& draw);

    /// A target that is no longer blank, and the picture that stands there.
    Draw makeFilled(int width, int height, reference::Picture& filled);

    /// Draws a picture that needs no layout.
    void drawPlain(TavloDrawDX11& draw, const reference::Input& input,
                   const tagTavloPresentPictureFilterParam* process = nullptr, bool clearFirst = true);

    InterfacePtr<TavloGraphicsRes> resources;

private:
    QTemporaryDir _cache;
};

/// Colours that differ from texel to texel and from channel to channel; alpha is neither 0 nor 1.
reference::Picture testPicture(int width, int height, int seed = 0);

/// Whether two pictures are the same, but for `tolerance` steps of 255 in each channel.
/// \param edges  where the drawn picture's edges lie: a pixel whose middle is on one may belong to either side
testing::AssertionResult isSame(const reference::Picture& drawn, const reference::Picture& expected, double tolerance,
                                const std::optional<reference::Placement>& edges = std::nullopt);

} // namespace tavlo::test
