#include "base/FontList.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using tavlo::findFont;
using tavlo::FontFile;
using tavlo::test::LogCapture;

TEST(FontListTest, TakesFileThenNameThenTheUsualOneThenTheFirst)
{
    const QList<FontFile> fonts{{QStringLiteral("Alpha"), QStringLiteral("/a.ttf")},
                                {QStringLiteral("Microsoft Sans Serif"), QStringLiteral("/micross.ttf")},
                                {QStringLiteral("Zeta"), QStringLiteral("/z1.ttf")},
                                {QStringLiteral("Zeta"), QStringLiteral("/z2.ttf")}};
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("own.ttf"));
    QFile(file).open(QIODevice::WriteOnly);

    EXPECT_EQ(findFont(fonts, file), file);
    EXPECT_EQ(findFont(fonts, QStringLiteral("Zeta")), QStringLiteral("/z1.ttf"));
    EXPECT_EQ(findFont(fonts, QStringLiteral("unknown")), QStringLiteral("/micross.ttf"));
    EXPECT_EQ(findFont(fonts.mid(2), QStringLiteral("unknown")), QStringLiteral("/z1.ttf"));
    EXPECT_EQ(findFont({}, file), file);

    const LogCapture log;
    EXPECT_EQ(findFont({}, QStringLiteral("Zeta")), QString());
    EXPECT_EQ(log.lines(), QStringList{QStringLiteral("no font ??")});
}

TEST(FontListTest, ListsFilesThatExist)
{
    const QList<FontFile> fonts = tavlo::systemFonts();
    if (fonts.isEmpty())
        GTEST_SKIP() << "this system has no font";
    for (const FontFile& font : fonts) {
        EXPECT_FALSE(font.name.isEmpty());
        EXPECT_TRUE(QFile::exists(font.path)) << qPrintable(font.path);
        EXPECT_EQ(findFont(fonts, font.name).isEmpty(), false);
    }
}
