#include "OutputSupport.h"
#include "fake/FakeNdi.h"

#include <gtest/gtest.h>

namespace {

using namespace tavlo::test;

TEST(Ndi, SendsUyvyAndSoundThroughTheLibraryThatIsInstalled)
{
    tagTavloPresentOutputParam param;
    param.ndiName = QStringLiteral("studio");
    Stage stage(Stage::Way::BottomFirst);
    stage.start(TavloPresentOutputTypeNDI, param);
    for (int number = 0; number < 5; ++number) {
        stage.commit(number, 1, false);
        stage.stop(TavloPresentOutputTypeHDMI3); // comes behind the picture
    }
    stage.stop(TavloPresentOutputTypeNDI);

    const FakeNdi& ndi = *fakeNdi();
    EXPECT_EQ(ndi.name, "studio");
    EXPECT_EQ(ndi.created, 1);
    EXPECT_EQ(ndi.destroyed, 1);
    ASSERT_EQ(ndi.pictures.size(), 5U);
    const FakeNdi::Picture& picture = ndi.pictures[3];
    EXPECT_EQ(picture.width, Programme::width);
    EXPECT_EQ(picture.height, Programme::height);
    EXPECT_EQ(picture.fpsNum, Programme::fps * picture.fpsDen);
    EXPECT_EQ(picture.chroma, "UYVY");
    EXPECT_EQ(picture.timecode, (Programme::begin + 3 * Programme::step) * 10);
    const auto red = Programme::fieldColor(0); // of the lower half's first field
    EXPECT_NEAR(picture.lastRow[9], 16 + (0.299 * red[0] + 0.587 * red[1] + 0.114 * red[2]) * 219 / 255,
                2); // BT.601: few lines
    ASSERT_EQ(ndi.sounds.size(), 5U);
    EXPECT_EQ(ndi.sounds[1].rate, Programme::rate);
    EXPECT_EQ(ndi.sounds[1].channels, 2);
    EXPECT_EQ(ndi.sounds[1].timecode, (Programme::begin + Programme::step) * 10);
    EXPECT_EQ(ndi.sounds[1].samples, Programme::sound(1));
}

} // namespace
