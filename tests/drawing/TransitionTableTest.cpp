#include "resources/ResourceTree.h"

#include <tavlo/TavloPresentUtil.h>

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace tavlo {
namespace {

TEST(TransitionTable, NamesEveryKindOnceBothWays)
{
    const QList<quint32> kinds = TavloPresentUtil::transitionKinds();
    ASSERT_EQ(kinds.size(), 105);
    QSet<QString> names;
    for (const quint32 kind : kinds) {
        const QString name = TavloPresentUtil::transitionName(kind);
        names.insert(name);
        EXPECT_EQ(TavloPresentUtil::transitionKind(name), kind) << qPrintable(name);
    }
    EXPECT_EQ(names.size(), 105);
    EXPECT_EQ(TavloPresentUtil::transitionKind(QStringLiteral("fade_Normal")), 22U);
    EXPECT_EQ(TavloPresentUtil::transitionKind(QStringLiteral("fade_normal")), 0U);
    EXPECT_EQ(TavloPresentUtil::transitionKind({}), 0U);
    EXPECT_EQ(TavloPresentUtil::transitionName(52), QString());
}

TEST(TransitionTable, KnowsTheFamilyOfEveryNumber)
{
    struct Range
    {
        quint32 first, last;
        const char* name;
    };
    constexpr std::array ranges{Range{1, 20, "erase"},    Range{22, 23, "fade"},  Range{25, 44, "glide"},
                                Range{46, 51, "stretch"}, Range{53, 60, "blur"},  Range{62, 72, "distortion"},
                                Range{74, 79, "color"},   Range{81, 112, "lumas"}};
    for (unsigned kind = 0; kind < 200; ++kind) {
        unsigned family = 0;
        for (unsigned i = 0; i < ranges.size(); ++i)
            family = kind >= ranges[i].first && kind <= ranges[i].last ? i + 1 : family;
        EXPECT_EQ(TavloPresentUtil::getEffectCatalog(kind), family) << kind;
        const QString name = TavloPresentUtil::transitionName(kind);
        EXPECT_EQ(name.section(u'_', 0, 0), family ? QLatin1String(ranges[family - 1].name) : QLatin1String()) << kind;
    }
    for (const unsigned kind : {65535U, 65536U, 0xffffffffU})
        EXPECT_EQ(TavloPresentUtil::getEffectCatalog(kind), TavloPresentEffectKindCatalogNone) << kind;
}

TEST(TransitionTable, AgreesWithTheNumbersInTheEffectFiles)
{
    initResourceTree();
    const QRegularExpression constant("const int TavloSwitchEffectKind_(\\w+) = (\\d+);");
    int found = 0;
    for (const char* family : {"erase", "fade", "glide", "stretch", "blur", "distortion", "color"}) {
        QFile file(QStringLiteral(":/res/Resources/TransitionEffect/glsl/trans_%1.fx").arg(family));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << family;
        for (auto match = constant.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext(); ++found) {
            const QRegularExpressionMatch one = match.next();
            EXPECT_EQ(TavloPresentUtil::transitionKind(one.captured(1)), one.captured(2).toUInt())
                << qPrintable(one.captured());
        }
    }
    EXPECT_EQ(found, 105 - 32); // lumas are a range of their own
}

} // namespace
} // namespace tavlo
