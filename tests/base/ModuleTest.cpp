#include "TestModule.h"

#include "base/CTempldateHelper.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using Helper = CTempldateHelper<ITestCounter>;

TEST(ModuleTest, MakesObjectsAndEndsThem)
{
    Helper first("TavloTestModule", "CreateTestCounter");
    EXPECT_FALSE(first.isReady());
    ASSERT_TRUE(first.create());
    {
        Helper second("TavloTestModule", "CreateTestCounter");
        ASSERT_TRUE(second.create());
        EXPECT_EQ(first->living(), 2);
    }
    EXPECT_EQ(first->living(), 1);
    ASSERT_TRUE(first.create()) << "the earlier object goes first";
    EXPECT_EQ(first->living(), 1);
    first.destroy();
    EXPECT_FALSE(first.isReady());
}

TEST(ModuleTest, TellsWhatIsMissingOnce)
{
    const tavlo::test::LogCapture log;
    const auto expectTold = [&](const char* module, const char* factory, const char* told) {
        Helper helper(module, factory);
        EXPECT_FALSE(helper.create());
        EXPECT_FALSE(helper.create());
        EXPECT_EQ(log.count(told), 1) << told;
    };
    expectTold("TavloNoSuchModule", "CreateTestCounter", "TavloNoSuchModule");
    expectTold("TavloTestModule", "CreateNothing", "CreateNothing");
    Helper throwing("TavloTestModule", "CreateThrowing");
    EXPECT_FALSE(throwing.create());
    EXPECT_EQ(log.count("exception out of CreateThrowing"), 1);
    Helper tooNew("TavloTestModule", "CreateTestCounter", 0x02000000);
    EXPECT_FALSE(tooNew.create());
}

TEST(ModuleTest, FindsAModuleInAFolderOfTheHostProgram)
{
    const QString folder = QCoreApplication::applicationDirPath() + "/plugins/test";
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString copy = folder + "/TavloTestModule.so";
    QFile::remove(copy);
    ASSERT_TRUE(QFile::copy(tavlo::engineDirectory() + "/TavloTestModule.so", copy));
    CTempldateHelper2<ITestCounter> helper("plugins/test", "TavloTestModule", "CreateTestCounter");
    ASSERT_TRUE(helper.create());
    EXPECT_EQ(helper->living(), 1);
}
