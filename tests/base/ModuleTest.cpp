#include "TestModule.h"

#include "base/CTempldateHelper.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using tavlo::test::LogCapture;

TEST(ModuleTest, MakesObjectsAndEndsThem)
{
    CTempldateHelper<ITestCounter> first("TavloTestModule", "CreateTestCounter");
    EXPECT_FALSE(first.isReady());
    ASSERT_TRUE(first.create());
    EXPECT_EQ(first->living(), 1);
    {
        CTempldateHelper<ITestCounter> second("TavloTestModule", "CreateTestCounter");
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
    const LogCapture log;
    CTempldateHelper<ITestCounter> noModule("TavloNoSuchModule", "CreateTestCounter");
    EXPECT_FALSE(noModule.create());
    EXPECT_FALSE(noModule.create());
    EXPECT_EQ(log.count("TavloNoSuchModule"), 1);

    CTempldateHelper<ITestCounter> noFactory("TavloTestModule", "CreateNothing");
    EXPECT_FALSE(noFactory.create());
    EXPECT_EQ(log.count("CreateNothing"), 1);

    CTempldateHelper<ITestCounter> throwing("TavloTestModule", "CreateThrowing");
    EXPECT_FALSE(throwing.create());
    EXPECT_EQ(log.count("exception out of CreateThrowing"), 1);

    CTempldateHelper<ITestCounter> tooNew("TavloTestModule", "CreateTestCounter", 0x02000000);
    EXPECT_FALSE(tooNew.create());
}

TEST(ModuleTest, FindsAModuleInAFolderOfTheHostProgram)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/plugins/test");
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString copy = folder + QStringLiteral("/TavloTestModule.so");
    QFile::remove(copy);
    ASSERT_TRUE(QFile::copy(tavlo::engineDirectory() + QStringLiteral("/TavloTestModule.so"), copy));

    CTempldateHelper2<ITestCounter> helper(QStringLiteral("plugins/test"), "TavloTestModule", "CreateTestCounter");
    ASSERT_TRUE(helper.create());
    EXPECT_EQ(helper->living(), 1);
}
