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
    const Info none = TavloPresentUtil::prefGraphicsDevice(TavloInteropTypeCUDA, list);
    EXPECT_EQ(none, Info());
    EXPECT_TRUE(none.name.isEmpty());
    EXPECT_EQ(none.interopType, TavloInteropTypeSoftware);
    EXPECT_EQ(none.decoderType, 0);
}

TEST(DeviceChoice, TakesTheIdThatIsAskedFor)
{
    const LogCapture log;
    List list{intel, cuda, cudaToo};
    for (int id = 0; id < 3; ++id)
        EXPECT_EQ(TavloPresentUtil::getWorkGraphicsDeviceInfo(id, list).id, id);
    ASSERT_EQ(log.lines().size(), 3);
    const QString line = log.lines().last().simplified();
    EXPECT_TRUE(line.startsWith(QLatin1String("select graphicsDeviceId: 2"))) << line.toStdString();
    EXPECT_TRUE(line.contains(QLatin1String("graphicsDevInfList-Size: 3"))) << line.toStdString();
}

TEST(DeviceChoice, ChoosesByItselfOtherwise)
{
    const LogCapture log;
    List list{intel, cuda, cudaToo};
    for (const int id : {-1, 3, 400})
        EXPECT_EQ(TavloPresentUtil::getWorkGraphicsDeviceInfo(id, list), cuda);
    EXPECT_EQ(log.count("can not find graph-cuda dev and select graph-software dev"), 0);
    list = {intel};
    EXPECT_EQ(TavloPresentUtil::getWorkGraphicsDeviceInfo(-1, list), intel);
    EXPECT_EQ(log.count("can not find graph-cuda dev and select graph-software dev"), 1);
    EXPECT_EQ(log.count("no graphics device"), 0);
}

TEST(DeviceChoice, TellsThatThereIsNone)
{
    const LogCapture log;
    List list;
    EXPECT_EQ(TavloPresentUtil::getWorkGraphicsDeviceInfo(0, list), Info());
    EXPECT_EQ(log.lines().size(), 0);
    list = {device(0, "", TavloInteropTypeSoftware)};
    EXPECT_TRUE(TavloPresentUtil::getWorkGraphicsDeviceInfo(-1, list).name.isEmpty());
    EXPECT_EQ(log.count("no graphics device"), 1);
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

TEST(VendorNames, AreThoseOfThePciIds)
{
    EXPECT_STREQ(pciVendorName(0x10DE), "NVIDIA");
    EXPECT_STREQ(pciVendorName(0x1106), "VIA");
    EXPECT_STREQ(pciVendorName(0x8086), "Intel");
    EXPECT_STREQ(pciVendorName(0x5333), "S3 Graphics");
    EXPECT_STREQ(pciVendorName('Q' | 'C' << 8 | 'O' << 16 | 'M' << 24), "Qualcomm");
    EXPECT_STREQ(pciVendorName(0), "Unknown");
}

} // namespace
} // namespace tavlo::test
