#include <tavlo/TavloPresentUtil.h>

#include "drawing/DriverVersion.h"
#include "graphics/Adapter.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace tavlo::test {
namespace {

using Info = tagTavloGraphicsDevInfo;
using List = QList<Info>;

Info device(int id, const char* name, TavloInteropType type)
{
    Info info;
    info.id = id;
    info.name = QLatin1String(name);
    info.interopType = type;
    return info;
}

const Info intel = device(0, "Intel one", TavloInteropTypeSoftware);
const Info cuda = device(1, "NVIDIA one", TavloInteropTypeCUDA);
const Info cudaToo = device(2, "NVIDIA two", TavloInteropTypeCUDA);

TEST(DeviceChoice, TakesTheFirstOfAType)
{
    List list{intel, cuda, cudaToo};
    EXPECT_EQ(TavloPresentUtil::prefGraphicsDevice(TavloInteropTypeCUDA, list), cuda);
    EXPECT_EQ(TavloPresentUtil::prefGraphicsDevice(TavloInteropTypeSoftware, list), intel);
    list = {intel};
    EXPECT_EQ(TavloPresentUtil::prefGraphicsDevice(TavloInteropTypeCUDA, list), Info());
}

TEST(DeviceChoice, TakesTheIdThatIsAskedForAndElseChoosesByItself)
{
    const LogCapture log;
    List list{intel, cuda, cudaToo};
    const auto chosen = [&](int id) { return TavloPresentUtil::getWorkGraphicsDeviceInfo(id, list); };
    for (int id = 0; id < 3; ++id)
        EXPECT_EQ(chosen(id).id, id);
    const QString line = log.lines().last().simplified();
    EXPECT_TRUE(line.startsWith("select graphicsDeviceId: 2")) << line.toStdString();
    EXPECT_TRUE(line.contains("graphicsDevInfList-Size: 3")) << line.toStdString();
    for (const int id : {-1, 3, 400})
        EXPECT_EQ(chosen(id), cuda);
    EXPECT_EQ(log.count("can not find graph-cuda dev and select graph-software dev"), 0);
    list = {intel};
    EXPECT_EQ(chosen(-1), intel);
    EXPECT_EQ(log.count("can not find graph-cuda dev and select graph-software dev"), 1);
    EXPECT_EQ(log.count("no graphics device"), 0);
    list = {device(0, "", TavloInteropTypeSoftware)};
    EXPECT_TRUE(chosen(-1).name.isEmpty());
    EXPECT_EQ(log.count("no graphics device"), 1);
    list = {};
    EXPECT_EQ(chosen(0), Info());
}

TEST(DeviceChoiceGL, ListsTheAdapters)
{
    const LogCapture log;
    const List list = TavloPresentUtil::enumGraphicsDevice();
    ASSERT_FALSE(list.isEmpty());
    EXPECT_TRUE(graphics::enumerateAdapters().back().software);
    for (int i = 0; i < list.size(); ++i) {
        EXPECT_EQ(list[i].id, i);
        EXPECT_FALSE(list[i].name.isEmpty());
        EXPECT_EQ(list[i].vendor == 1, list[i].name.contains(QLatin1String("NVIDIA")));
        EXPECT_EQ(list[i].decoderType, list[i].vendor == 1 ? 3 : 1);
    }
    EXPECT_EQ(list.last().interopType, TavloInteropTypeSoftware);
    EXPECT_EQ(log.count("graphics device: "), list.size());
    EXPECT_EQ(log.count("failed to enum adapters"), 1);
}

TEST(DriverVersionText, IsTheLastDottedNumber)
{
    const auto parse = [](const char* text) { return parseDriverVersion(QLatin1String(text)); };
    EXPECT_EQ(parse("OpenGL ES 3.2 NVIDIA 535.54.03"), (DriverVersion{535, 54, 3, 0}));
    EXPECT_EQ(parse("31.0.15.3623"), (DriverVersion{31, 0, 15, 3623}));
    EXPECT_EQ(parse("OpenGL ES 3.2 Mesa 22.3.6 (LLVM 15.0.6)"), (DriverVersion{22, 3, 6, 0}));
    EXPECT_EQ(parse(""), DriverVersion());
    EXPECT_EQ(parse("no number, nor 7 alone"), DriverVersion());
}

} // namespace
} // namespace tavlo::test
