#include "base/FontList.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using tavlo::findFont;
using tavlo::FontFile;

TEST(FontListTest, TakesFileThenNameThenTheUsualOneThenTheFirst)
{
    const QList<FontFile> fonts{
        {"Alpha", "/a.ttf"}, {"Microsoft Sans Serif", "/micross.ttf"}, {"Zeta", "/z1.ttf"}, {"Zeta", "/z2.ttf"}};
    const QTemporaryDir folder;
    const QString file = folder.filePath("own.ttf");
    QFile(file).open(QIODevice::WriteOnly);
    EXPECT_EQ(findFont(fonts, file), file);
    EXPECT_EQ(findFont(fonts, "Zeta"), "/z1.ttf");
    EXPECT_EQ(findFont(fonts, "unknown"), "/micross.ttf");
    EXPECT_EQ(findFont(fonts.mid(2), "unknown"), "/z1.ttf");
    EXPECT_EQ(findFont({}, file), file);

    const tavlo::test::LogCapture log;
    EXPECT_EQ(findFont({}, "Zeta"), QString());
    EXPECT_EQ(log.lines(), QStringList{"no font ??"});
}

TEST(FontListTest, ListsFilesThatExist)
{
    const QList<FontFile> fonts = tavlo::systemFonts();
    if (fonts.isEmpty())
        GTEST_SKIP() << "this system has no font";
    for (const FontFile& font : fonts) {
        EXPECT_TRUE(QFile::exists(font.path)) << qPrintable(font.path);
        EXPECT_FALSE(findFont(fonts, font.name).isEmpty());
    }
}
