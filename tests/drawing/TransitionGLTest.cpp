#include "drawing/TransitionTable.h"
#include "support/DrawStage.h"
#include "support/LogCapture.h"
#include "support/reference/Transitions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace tavlo {
namespace {

using reference::Picture;
using reference::operator*;
using reference::Rgba;
using reference::Vector;

/// One device for all tests of the file: compiling the effects takes longer than drawing.
DrawStage& stage()
{
    static DrawStage one;
    return one;
}

/// A picture without a symmetry: each channel goes its own way, alpha is never 0 or 1.
/// \param detail  how quickly colours change
QImage makePicture(QSize size, double phase, double detail = 1)
{
    QImage picture(size, QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double u = detail * x / size.width(), v = detail * y / size.height();
            const auto level = [](double t) { return static_cast<uchar>(std::lround(128 + 120 * std::sin(t))); };
            uchar* pixel = picture.scanLine(y) + x * 4;
            pixel[0] = level(7 * u + 2 * v + phase);
            pixel[1] = level(3 * u - 8 * v + 2 * phase);
            pixel[2] = level(-5 * u + 5 * v * v + 3 * phase);
            pixel[3] = static_cast<uchar>(170 + 40 * std::sin(4 * u + 3 * v + phase));
        }
    }
    return picture;
}

Picture toReference(const QImage& image)
{
    return {image.width(), image.height(), {image.constBits(), std::size_t(image.sizeInBytes())}};
}

/// The largest difference of a channel, in levels of 8 bits.
double distance(const uchar* pixel, const Rgba& wanted)
{
    double worst = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i)
        worst = std::max(worst, std::abs(pixel[i] - 255 * reference::unit(wanted[i])));
    return worst;
}

/// The same of two pictures, but for a border of that many pixels.
double distance(const QImage& a, const QImage& b, int border = 0)
{
    int worst = 0;
    for (int y = border; y < a.height() - border; ++y) {
        for (int x = border * 4; x < (a.width() - border) * 4; ++x)
            worst = std::max(worst, std::abs(a.constScanLine(y)[x] - b.constScanLine(y)[x]));
    }
    return worst;
}

class TransitionGL : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(stage().fault(), QString()); }

    static QImage draw(quint32 kind, float position, const QImage& first, const QImage& second, bool topFirst = true)
    {
        return stage().drawTransition(kind, position, stage().upload(first), stage().upload(second), size, topFirst);
    }

    static constexpr QSize size{67, 47};
    const QImage outgoing = makePicture(size, 0.3), incoming = makePicture(size, 1.9);
};

/// The kinds of a family, drawn and computed.
class TransitionFamilyGL : public TransitionGL, public testing::WithParamInterface<TavloPresentEffectKindCatalog>
{
protected:
    void SetUp() override
    {
        TransitionGL::SetUp();
        _images.clouds = toReference(stage().image(0));
        _images.noise = toReference(stage().image(1));
        _images.sincosatan = toReference(stage().image(2));
        _images.checkerboard = toReference(stage().image(3));
    }

    static std::vector<TransitionRow> rows()
    {
        std::vector<TransitionRow> rows;
        std::ranges::copy_if(transitionRows(), std::back_inserter(rows),
                             [](const TransitionRow& row) { return transitionFamily(row.kind) == GetParam(); });
        return rows;
    }

    /// What the C library chooses for the stage's seconds; other kinds take what the effect holds.
    void chooseSeed(const TransitionRow& row)
    {
        std::srand(stage().randomSeed = 12345);
        _images.randomSeed = row.kind == 68 ? (std::rand() % 1000) / 1000.0 : 0.2;
        stage().effect(row.kind)->GetVariableByName("randomSeed").AsScalar().SetFloat(0.2F); // or there is none
    }

    void compare(const TransitionRow& row, const QImage& before, const QImage& after, float position)
    {
        _kind = row.kind;
        // What the table of sines costs is in the tolerance; a picture that displaces itself is read at its texels.
        const bool exact = after.size() == size;
        _imagesInDoubt = row.kind != 53 && !(row.kind == 79 && exact && (position < 0.4F || position > 0.6F));
        chooseSeed(row);
        if (row.mask)
            _images.mask = paintedMask(row.kind, position);
        if (row.kind >= 81)
            _images.luma = toReference(stage().image(static_cast<int>(row.kind) - 33));
        const Picture first = toReference(before), second = toReference(after);
        const QImage frame = draw(row.kind, position, before, after);
        ASSERT_FALSE(frame.isNull());
        // Where two pictures at once each read themselves, both may be in doubt at the same pixel.
        const int allowed = row.kind == 79 ? 2 : 0;
        int wrong = 0;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const Vector uv{(x + 0.5) / size.width(), (y + 0.5) / size.height()};
                const uchar* got = frame.constScanLine(y) + x * 4;
                if (isNear(got, first, second, position, uv))
                    continue;
                if (++wrong > allowed && wrong <= allowed + 3)
                    ADD_FAILURE() << row.name << " at " << position << ", pixel " << x << ", " << y << ": "
                                  << testing::PrintToString(std::vector<int>(got, got + 4)) << ", wanted "
                                  << testing::PrintToString(transition(position, first, second, uv) * 255);
            }
        }
        EXPECT_LE(wrong, allowed) << "pixels of " << size.width() * size.height();
    }

private:
    reference::TransitionImages _images;
    quint32 _kind = 0;
    bool _imagesInDoubt = true; ///< whether levels of images are read between texels

    Rgba transition(double position, const Picture& first, const Picture& second, Vector uv, Vector error = {})
    {
        _images.error = error;
        return reference::transition(static_cast<int>(_kind), position, first, second, _images, uv);
    }

    /// Levels. The device weighs texels in steps of 1/256; some kinds multiply what that costs, or add it up from many
    /// samples that decide or displace.
    double tolerance() const
    {
        switch (_kind) {
        case 58:
            return 4;
        case 53:
            return 10;
        case 74:
        case 75:
            return 5;
        case 79:
            return _imagesInDoubt ? 10 : 2.6;
        default:
            return 2.6;
        }
    }

    /// A pixel may be what the formula gives here, or as near as the device's numbers can tell places, positions and
    /// levels of an image apart: at an edge that is the other side.
    bool isNear(const uchar* pixel, const Picture& first, const Picture& second, double position, Vector uv)
    {
        const auto fits = [&](const Rgba& wanted) { return distance(pixel, wanted) <= tolerance(); };
        if (fits(transition(position, first, second, uv)))
            return true;
        if (position <= 0)
            return false; // nothing to be in doubt about
        // Fine enough around that one points nearly where the device sees the very centre.
        std::vector<Vector> ways;
        for (int i = 0; i < 25; ++i) {
            const int x = i % 5 - 2, y = i / 5 - 2;
            if ((x * x + y * y) % 4 != 0) // each direction once
                ways.push_back({double(x), double(y)});
        }
        for (const double step : {1e-7, 3e-7, 1e-6, 3e-6}) {
            for (const Vector way : ways) {
                if (fits(transition(position, first, second, uv + way * step)))
                    return true;
            }
            for (const double moved : {position - step, position + step}) {
                if (fits(transition(moved, first, second, uv)))
                    return true;
            }
        }
        if (!_imagesInDoubt)
            return false;
        for (const double levels : {0.3, 0.6, 1.0, 1.5, 2.0}) {
            for (const Vector way : ways) {
                if (fits(transition(position, first, second, uv, way * (levels / 255))))
                    return true;
            }
        }
        return false;
    }

    static Picture paintedMask(quint32 kind, float position)
    {
        QImage mask(512, 512, QImage::Format_ARGB32);
        TransitionMask().paintTransition(kind, static_cast<double>(position), mask);
        return toReference(mask);
    }
};

TEST_P(TransitionFamilyGL, DrawsWhatItsFormulasGive)
{
    for (const TransitionRow& row : rows()) {
        for (const float position : {0.0F, 0.25F, 0.5F, 0.75F, 1.0F})
            compare(row, outgoing, makePicture({53, 39}, 1.9), position);
        // Both of the target's size: texels are loaded, not sampled.
        for (const float position : {0.3F, 0.5F, 0.65F})
            compare(row, outgoing, incoming, position);
        // Small steps of a blur show in fine detail only.
        if (row.kind >= 54 && row.kind <= 60)
            compare(row, makePicture(size, 0.3, 6), makePicture(size, 1.9, 6), 0.45F);
    }
}

TEST_P(TransitionFamilyGL, ShowsAWholePictureAtBothEnds)
{
    // Colours that stay changed until the cut; of 75 those are brighter than their alpha allows.
    constexpr std::array<quint32, 4> neverClean{75, 76, 77, 78};
    for (const TransitionRow& row : rows()) {
        SCOPED_TRACE(row.name);
        const auto drawn = [&](float position) { return draw(row.kind, position, outgoing, incoming); };
        // The shader shows its first picture when its position is not above 0: what the table exchanges shows there.
        const int border = row.settingCount > 0 && row.kind <= 10 ? 1 : 0; // where an edge's soft half is left
        const QImage& before = row.turn == TransitionTurn::Swap ? incoming : outgoing;
        EXPECT_LE(distance(drawn(0.0F), before, border), 1) << "at 0";
        if (row.turn != TransitionTurn::Invert) {
            EXPECT_LE(distance(drawn(-0.25F), before), 1) << "below 0";
        }
        if (std::find(neverClean.begin(), neverClean.end(), row.kind) == neverClean.end()) {
            const bool staysOld = row.turn == TransitionTurn::Invert || row.kind == transitionKind::applyTextureMap;
            EXPECT_LE(distance(drawn(1.0F), staysOld ? outgoing : incoming, border), 2) << "at 1";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, TransitionFamilyGL,
                         testing::Values(TavloPresentEffectKindCatalogErase, TavloPresentEffectKindCatalogFade,
                                         TavloPresentEffectKindCatalogGlide, TavloPresentEffectKindCatalogStretch,
                                         TavloPresentEffectKindCatalogBlur, TavloPresentEffectKindCatalogDistortion,
                                         TavloPresentEffectKindCatalogColor, TavloPresentEffectKindCatalogLumas));

TEST_F(TransitionGL, DrawsTheSameIntoABackBuffer)
{
    for (const quint32 kind : {3U, 19U, 22U, 29U, 48U, 70U, 86U}) {
        const QImage frame = draw(kind, 0.31F, outgoing, incoming);
        EXPECT_LE(distance(draw(kind, 0.31F, outgoing, incoming, false), frame), 1) << kind;
    }
}

TEST_F(TransitionGL, ChoosesANewRandomSeedForOneKindOnly)
{
    const auto drawn = [&](quint32 kind, quint32 seconds) {
        stage().randomSeed = seconds;
        return draw(kind, 0.4F, outgoing, incoming);
    };
    const QImage plain = drawn(67, 1);
    EXPECT_EQ(drawn(67, 2), plain);
    const QImage first = drawn(68, 1);
    EXPECT_NE(drawn(68, 3), first);
    EXPECT_EQ(drawn(68, 1), first);
    EXPECT_NE(drawn(67, 1), plain); // the family's value stays as the last draw left it
    stage().effect(68)->GetVariableByName("randomSeed").AsScalar().SetFloat(0);
}

TEST_F(TransitionGL, CutsAtOnceWithoutItsImageOrMask)
{
    for (const auto& [kind, position, slot] : {std::tuple(90U, 0.001F, 90 - 33), {11U, 0.5F, transitionMaskSlot}}) {
        graphics::TexturePtr image;
        image.swap(stage().texture(slot));
        EXPECT_LE(distance(draw(kind, position, outgoing, incoming), incoming), 1) << kind;
        image.swap(stage().texture(slot));
    }
}

TEST_F(TransitionGL, DrawsMissingPicturesAsNothing)
{
    const QImage frame = stage().drawTransition(22, 0.5F, nullptr, stage().upload(incoming), size);
    ASSERT_FALSE(frame.isNull());
    for (int x = 0; x < size.width() * 4; ++x)
        ASSERT_NEAR(frame.constScanLine(7)[x], incoming.constScanLine(7)[x] / 2.0, 1.1) << x;
}

TEST_F(TransitionGL, LeavesTheTargetClearedForAKindOfNoFamily)
{
    QImage cleared(size, QImage::Format_RGBA8888);
    cleared.fill(Qt::transparent);
    for (const quint32 kind : {0U, 21U, 113U, 65535U}) {
        ASSERT_NE(draw(22, 0.5F, outgoing, outgoing), cleared);
        const test::LogCapture log;
        EXPECT_EQ(draw(kind, 0.5F, outgoing, outgoing), cleared) << kind;
        EXPECT_EQ(log.count("failed to set shader float vector :"), 1);
    }
}

TEST_F(TransitionGL, EndsTheDrawAndSaysWhyWhenAnEffectLacksAVariable)
{
    TransitionDraw draw;
    test::LogCapture log;
    // An erase with the effect of the fades: "fuzzyAmount" is not there.
    EXPECT_FALSE(draw.apply(stage().context(), *stage().effect(22), {}, 0.5F, 1));
    EXPECT_EQ(log.count("failed to applyTransitionEffectDependencyProperty :"), 1);
    stage().context().clearState();
}

} // namespace
} // namespace tavlo
