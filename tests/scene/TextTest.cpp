#include "scene/FileUtils.h"
#include "scene/Renderer.h"
#include "scene/SceneTest.h"
#include "scene/TavloCLabel.h"
#include "scene/text/AlphaBlur.h"
#include "scene/text/TextBounds.h"
#include "scene/text/TextPicture.h"
#include "support/LogCapture.h"

#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

using namespace tavlo;
using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

constexpr int width = 300, height = 160;

class TextGL : public SceneTest
{
public:
    void SetUp() override
    {
        SceneTest::SetUp();
        if (QFontDatabase::families().isEmpty())
            GTEST_SKIP() << "no font";
        ASSERT_TRUE(view->setFrameSize(width, height));
        label = TavloCLabel::createWithTTF(*director, {{}, 40}, "Tavlo");
        label->setAnchorPoint({0, 0});
        root->addChild(label);
    }

    double sum(int channel, QRect rows = {0, 0, width, height})
    {
        const Image image = shown();
        double total = 0;
        for (int y = rows.top(); y <= rows.bottom(); ++y)
            for (int x = rows.left(); x <= rows.right(); ++x)
                total += image.at(x, y)[static_cast<std::size_t>(channel)];
        return total;
    }

    QRect ink()
    {
        const Image image = shown();
        QRect found;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (image.at(x, y)[3] > 0.02)
                    found |= QRect(x, y, 1, 1);
        return found;
    }

    void looksAsQtPaintsIt(const char* text, const QString& family = {})
    {
        SCOPED_TRACE(text);
        label->setSystemFontName(family.toStdString());
        label->setString(text);
        label->setPosition(20, 30);
        label->setFillColor({255, 200, 100, 255});
        step();
        const Image image = shown();

        QFont font;
        if (!family.isEmpty())
            font.setFamilies({family});
        font.setPixelSize(40);
        font.setHintingPreference(QFont::PreferNoHinting);
        QImage painted(width, height, QImage::Format_RGBA8888_Premultiplied);
        painted.fill(Qt::transparent);
        QPainterPath path;
        path.setFillRule(Qt::WindingFill);
        const QFontMetricsF metrics(font);
        const double base = height - 30 - std::ceil(metrics.height()) + metrics.ascent();
        path.addText(20, base, font, QString::fromUtf8(text));
        QPainter painter(&painted);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(path, QColor(255, 200, 100));
        painter.end();

        double difference = 0, all = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const uchar* wanted = painted.constScanLine(y) + x * 4;
                for (std::size_t i = 0; i < 4; ++i) {
                    difference += std::abs(image.at(x, y)[i] - wanted[i] / 255.0);
                    all += wanted[i] / 255.0;
                }
            }
        EXPECT_GT(all, 100);
        EXPECT_LT(difference, all * 0.02);
    }

    /// Half a pixel further, everything must be the mean of what stood on whole pixels.
    void movesSmoothly(float x, float y, int byX, int byY)
    {
        label->setPosition(x, y);
        step();
        step();
        const Image rests = shown();
        label->setPosition(x + static_cast<float>(byX) / 2, y + static_cast<float>(byY) / 2);
        step();
        const Image moves = shown();
        double all = 0, worst = 0;
        for (int row = 1; row < height - 1; ++row)
            for (int column = 1; column < width - 1; ++column) {
                const double mean = (rests.at(column, row)[3] + rests.at(column - byX, row + byY)[3]) / 2;
                all += mean;
                worst = std::max(worst, std::abs(moves.at(column, row)[3] - mean));
            }
        EXPECT_GT(all, 100);
        EXPECT_LT(worst, 3 / 255.0);
    }

    RefPtr<TavloCLabel> label;
};

TEST_F(TextGL, looksAsQtPaintsIt)
{
    for (const char* text : {"Tavlo gjÅ", "שלום abc", "Ωμέγα", "مرحبا"})
        looksAsQtPaintsIt(text);
}

TEST_F(TextGL, ideographsLookAsQtPaintsThem)
{
    const QStringList families = QFontDatabase::families(QFontDatabase::Japanese);
    if (families.isEmpty())
        GTEST_SKIP() << "no font of ideographs";
    looksAsQtPaintsIt("日本語 かな", families.first());
    const auto inkOf = [this](const char* text) {
        label->setString(text);
        step();
        return shown().pixels;
    };
    label->setSystemFontName({}); // which has none: another font steps in
    EXPECT_NE(inkOf("日"), inkOf("本"));
}

TEST_F(TextGL, isDrawnAgainOnlyWhenItChanged)
{
    step();
    label->setString("Tavlo");
    label->setFillColor({255, 255, 255, 255});
    label->setTTFConfig(label->ttfConfig());
    label->setPosition(5, 5);
    label->setOpacity(100);
    step();
    EXPECT_EQ(label->rasterCount(), 1U);
    label->setString("12:34:56");
    step();
    step();
    EXPECT_EQ(label->rasterCount(), 2U);
    const double wide = static_cast<double>(label->contentSize().width);
    label->setString("12");
    EXPECT_LT(static_cast<double>(label->contentSize().width), wide / 2); // measured before it is drawn
    label->setString("");
    step();
    EXPECT_TRUE(ink().isNull());
    EXPECT_EQ(label->contentSize().width, 0);
}

TEST_F(TextGL, standsOnWholePixelsAtRestAndMovesInBetween)
{
    label->setPosition(10.4F, 20.4F);
    step();
    const Image rests = shown();
    label->setPosition(10, 20);
    step();
    step();
    EXPECT_EQ(shown().pixels, rests.pixels);
    label->setPosition(10.5F, 20);
    step(); // on its way
    EXPECT_NE(shown().pixels, rests.pixels);
    label->setPosition(10.4F, 20);
    step();
    step();
    EXPECT_EQ(shown().pixels, rests.pixels);
}

TEST_F(TextGL, shadowAndOutlineReachAsFarAsTold)
{
    label->setPosition(40, 40);
    label->setFillColor({255, 0, 0, 255});
    step();
    const QRect plain = ink();
    label->setOutline({0, 255, 0, 255}, 6, 0);
    step();
    const QRect outlined = ink();
    for (const int more : {plain.left() - outlined.left(), outlined.right() - plain.right(),
                           plain.top() - outlined.top(), outlined.bottom() - plain.bottom()})
        EXPECT_NEAR(more, 6, 1);
    const double around = sum(1);
    label->setFillColor({255, 0, 0, 0}); // hollow: the words stay free
    step();
    EXPECT_NEAR(sum(1), around, around * 0.02);
    label->setFillColor({255, 0, 0, 255});
    label->setOutline({0, 255, 0, 0}, 6, 0);
    label->setShadow({0, 0, 255, 128}, {9, -4}, 0); // to the right and down
    step();
    EXPECT_EQ(ink(), plain.united(plain.translated(9, 4)));
    label->setShadow({0, 0, 255, 255}, {9, -4}, 6);
    step();
    EXPECT_NEAR(ink().right() - plain.right() - 9, 6, 3);
    EXPECT_GT(sum(2), 50);
}

TEST_F(TextGL, fillsWithGradientsAndPictures)
{
    label->setString("MMMM");
    label->setPosition(20, 60);
    label->setFillGradient({255, 0, 0, 255}, {0, 0, 255, 255});
    step();
    const QRect all = ink();
    const QRect upper(all.left(), all.top(), all.width(), all.height() / 4);
    const QRect lower = upper.translated(0, all.height() * 3 / 4);
    EXPECT_GT(sum(0, upper), 2 * sum(2, upper));
    EXPECT_GT(sum(2, lower), 2 * sum(0, lower));

    const QTemporaryDir folder;
    QImage tile(3, 3, QImage::Format_RGB32);
    tile.fill(Qt::green);
    ASSERT_TRUE(tile.save(folder.filePath(QStringLiteral("t.png"))));
    director->fileUtils().addSearchPath(folder.path().toStdString());
    EXPECT_TRUE(label->setFillTexture("t.png"));
    step();
    EXPECT_GT(sum(1), 100);
    EXPECT_EQ(sum(0), 0);
    const LogCapture log;
    EXPECT_FALSE(label->setFillTexture("none.png"));
    EXPECT_FALSE(label->setTTFConfig({"none.ttf", 12}));
    EXPECT_EQ(log.count("none."), 2);
    step();
    EXPECT_GT(sum(1), 0); // still the picture, in the size given
    EXPECT_EQ(label->ttfConfig().fontSize, 12);
}

TEST_F(TextGL, alignsLinesInItsRoom)
{
    label->setTTFConfig({{}, 20});
    label->setString("i\nWWWW");
    step();
    const Size natural = label->contentSize();
    label->setDimensions({200, 100});
    EXPECT_EQ(label->contentSize(), (Size{200, 100}));
    label->setString("W");
    QRect place[3];
    for (int i = 0; i < 3; ++i) {
        label->setAlignment(static_cast<TextHAlignment>(i), static_cast<TextVAlignment>(i));
        step();
        place[i] = ink();
    }
    EXPECT_LT(place[0].right(), 40);
    EXPECT_NEAR(place[1].center().x(), 100, 2);
    EXPECT_GT(place[2].left(), 160);
    EXPECT_LT(place[0].bottom(), height - 100 + natural.height / 2);
    EXPECT_NEAR(place[1].top() - place[0].top(), place[2].top() - place[1].top(), 1);
    label->setAlignment(TextHAlignment::Left, TextVAlignment::Top);
    label->setDimensions({50, 0});
    label->setString("word word word");
    EXPECT_NEAR(label->contentSize().height, natural.height / 2 * 3, 3); // broken at the width
}

TEST_F(TextGL, smallTextsShareOneDraw)
{
    label->setString("");
    std::vector<RefPtr<Label>> labels;
    const auto add = [&](float y) {
        labels.push_back(Label::createWithSystemFont(*director, "text " + std::to_string(y), {}, 12));
        labels.back()->setPosition(80, y);
        root->addChild(labels.back());
    };
    for (int i = 0; i < 12; ++i)
        add(static_cast<float>(10 + i * 12));
    step();
    const auto whole = shown().pixels;
    EXPECT_EQ(director->renderer().statistics().drawCalls, 1U);
    // A place that becomes free is taken by another text, and nobody else's picture suffers.
    const float free = labels[5]->position().y;
    root->removeChild(labels[5].get());
    labels.erase(labels.begin() + 5);
    labels[7]->setSystemFontSize(80);
    step();
    EXPECT_NE(shown().pixels, whole);
    labels[7]->setSystemFontSize(12);
    add(free);
    step();
    EXPECT_EQ(shown().pixels, whole);
    EXPECT_EQ(director->renderer().statistics().drawCalls, 1U);
}

TEST_F(TextGL, emojiKeepTheirColours)
{
    if (!QFontDatabase::families().contains(QStringLiteral("Noto Color Emoji")))
        GTEST_SKIP() << "no font of emoji";
    label->setString("a\U0001F3A5\U0001F534"); // a camera and a red circle
    label->setFillColor({0, 0, 0, 255});
    label->setPosition(20, 40);
    step();
    EXPECT_GT(sum(0), 2 * sum(2)); // more red than blue, though the fill is black
}

TEST_F(TextGL, longCrawlsAreDrawnInParts)
{
    std::string text;
    while (text.size() < 800)
        text += "crawl ";
    label->setString(text);
    constexpr float partStep = 2046; // pixels, from part to part
    const double full = static_cast<double>(label->contentSize().width);
    ASSERT_GT(full, 6000);
    label->setPosition(static_cast<float>(-full / 2), 40);
    step();
    const QRect middle = ink();
    EXPECT_LT(middle.left(), 20);
    EXPECT_GT(middle.right(), width - 20);
    label->setPosition(static_cast<float>(-full - 30), 40);
    step();
    EXPECT_TRUE(ink().isNull());

    // The parts meet without a seam, beside one another and below.
    label->setString(std::string(500, '/'));
    for (const int part : {1, 2})
        movesSmoothly(150 - static_cast<float>(part) * partStep, 40, 1, 0);
    label->setTTFConfig({{}, 300});
    label->setString("//\n//\n//\n//\n//\n//\n//\n//");
    ASSERT_GT(label->contentSize().height, partStep + 200);
    movesSmoothly(10, 80 - (label->contentSize().height - partStep), 0, 1);
}

TEST_F(TextGL, staysSharpWhileItsWordsChange)
{
    label->setAnchorPoint({0.5F, 0.5F});
    label->setPosition(150, 80);
    bool odd = false, even = false;
    for (const char* text : {"1", "11", "12:5", "12:50", "il", "W", "WWi"}) {
        label->setString(text);
        const bool isOdd = static_cast<int>(label->contentSize().width) % 2 != 0;
        (isOdd ? odd : even) = true;
        step();
        const Image first = shown();
        step();
        EXPECT_EQ(first.pixels, shown().pixels) << text;
    }
    EXPECT_TRUE(odd && even);
}

TEST_F(TextGL, sizesAreHeldWithinBounds)
{
    const float infinite = std::numeric_limits<float>::infinity();
    label->setString("");
    for (const float value : {std::nanf(""), infinite, -infinite, 1e30F, -1e30F}) {
        SCOPED_TRACE(value);
        label->setTTFConfig({{}, value});
        label->setShadow({0, 0, 0, 255}, {value, value}, value);
        label->setOutline({0, 0, 0, 255}, value, value);
        label->setDimensions({value, value});
        const TextStyle& style = label->textStyle();
        EXPECT_EQ(label->ttfConfig().fontSize, style.fontSize);
        EXPECT_TRUE(style.fontSize >= smallestFont && style.fontSize <= largestFont);
        EXPECT_LE(std::max(std::abs(style.shadowOffset.x), std::abs(style.shadowOffset.y)), farthestShadow);
        for (const float size : {style.shadowBlur, style.outlineBlur, style.outlineSize})
            EXPECT_TRUE(size >= 0 && size <= std::max(widestBlur, widestOutline));
        step();
    }
    TextStyle largest = label->textStyle();
    largest.outlineSize = widestOutline;
    largest.outlineBlur = largest.shadowBlur = widestBlur;
    for (const QSizeF natural :
         {QSizeF(30, 20), QSizeF(1e6, 100), QSizeF(100, 1e6), QSizeF(2e4, 3e3), QSizeF(1e9, 1e9)})
        for (const TextStyle& style : {TextStyle(), largest}) {
            const QSizeF size = boundedText(natural, style);
            const QSize picture = QRectF({}, size).marginsAdded(reachOf(style)).toAlignedRect().size();
            EXPECT_EQ(boundedPicture(picture), picture);
            EXPECT_LE(qint64{picture.width()} * picture.height(), mostTextPixels);
            EXPECT_GE(size.width(), std::min(natural.width(), 800.0));
            EXPECT_GE(size.height(), std::min(natural.height(), 6000.0));
        }

    // What does not fit is neither shown nor counted.
    label = TavloCLabel::createWithTTF(*director, {{}, 12}, std::string(12000, 'W'));
    label->setAnchorPoint({1, 0});
    label->setPosition(100, 40);
    root->removeAllChildren();
    root->addChild(label);
    step();
    EXPECT_LE(label->contentSize().width, longestText);
    EXPECT_NEAR(ink().right(), 99, 2);
}

TEST_F(TextGL, whatADeviceRefusedIsDrawnLater)
{
    TextPicture picture(*director);
    const TextStyle style;
    EXPECT_GT(picture.shape("Tavlo", style).width, 10);
    director->setOpenGLView(nullptr);
    EXPECT_FALSE(picture.raster(style));
    director->setOpenGLView(view);
    EXPECT_TRUE(picture.raster(style));
}

TEST(TextBlur, spreadsAndKeepsTheWhole)
{
    QImage image(81, 61, QImage::Format_Alpha8);
    image.fill(Qt::transparent);
    for (int y = 25; y < 36; ++y)
        for (int x = 30; x < 51; ++x)
            image.scanLine(y)[x] = 255;
    blurAlpha(image, 4);
    double sum = 0, variance = 0;
    for (int y = 0; y < 61; ++y)
        for (int x = 0; x < 81; ++x) {
            sum += image.constScanLine(y)[x];
            variance += image.constScanLine(y)[x] * (x - 40.0) * (x - 40.0);
        }
    EXPECT_NEAR(sum / (21 * 11 * 255), 1, 0.02);
    EXPECT_NEAR(variance / sum, (21 * 21 - 1) / 12.0 + 16, 4);
    EXPECT_EQ(image.constScanLine(30)[29 - blurReach(4)], 0);
}

} // namespace
