#include "resources/ResourceTree.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace tavlo {
namespace {

struct Texel
{
    double red;
    double green;
    double blue;
};

/// An image as a shader reads it after the store's upload: the bytes of ARGB32, blue first, taken as red, green, blue.
/// Linear between texels, level outside.
class Sampled
{
public:
    explicit Sampled(const QString& path)
        : _image(QImage(":/res/Resources/" + path).convertToFormat(QImage::Format_ARGB32))
    {}

    bool isNull() const { return _image.isNull(); }
    QSize size() const { return _image.size(); }

    Texel at(double u, double v) const
    {
        const double x = std::clamp(u * _image.width() - 0.5, 0.0, _image.width() - 1.0);
        const double y = std::clamp(v * _image.height() - 0.5, 0.0, _image.height() - 1.0);
        const int left = std::min(int(x), std::max(_image.width() - 2, 0));
        const int top = std::min(int(y), std::max(_image.height() - 2, 0));
        Texel sum{};
        for (const int row : {0, 1}) {
            for (const int column : {0, 1}) {
                const double weight = std::abs(1 - column - (x - left)) * std::abs(1 - row - (y - top));
                if (weight > 0)
                    add(sum, left + column, top + row, weight / 255);
            }
        }
        return sum;
    }

private:
    void add(Texel& sum, int column, int row, double weight) const
    {
        const uchar* bytes = _image.constScanLine(row) + column * 4;
        sum.red += weight * bytes[0];
        sum.green += weight * bytes[1];
        sum.blue += weight * bytes[2];
    }

    QImage _image;
};

class ResourceImages : public testing::Test
{
protected:
    static void SetUpTestSuite() { initResourceTree(); }

    static Sampled luma(const char* name) { return Sampled(QString("TransitionEffect/images/lumas/%1.png").arg(name)); }
};

constexpr std::array lumaNames{"barndoor-botleft",
                               "barndoor-h",
                               "barndoor-topleft",
                               "barndoor-v",
                               "blinds-h",
                               "box-botleft",
                               "box-botright",
                               "box-topleft",
                               "box-topright",
                               "burst",
                               "checkerboard-small",
                               "circles",
                               "clock",
                               "cloud",
                               "curtain",
                               "fan",
                               "iris",
                               "linear-h",
                               "linear-topleft",
                               "linear-topright",
                               "linear-v",
                               "parallel-zigzag-h",
                               "parallel-zigzag-v",
                               "spiral",
                               "square",
                               "squares",
                               "stripes",
                               "strips-h",
                               "strips-v",
                               "watercolor",
                               "zigzag-h",
                               "zigzag-v"};

TEST_F(ResourceImages, EveryImageOfTheStoreLoads)
{
    QStringList paths;
    for (const char* name : {"clouds.png", "noise.png", "sincosatan.png", "checkerboard.png"})
        paths << QString("TransitionEffect/images/") + name;
    for (const char* name : lumaNames)
        paths << QString("TransitionEffect/images/lumas/%1.png").arg(name);
    for (const char* name : {"amaromap.png",
                             "amaro_mask1.jpg",
                             "amaro_mask2.jpg",
                             "bluevintage_mask1.jpg",
                             "brannan_blowout.png",
                             "brannan_contrast.png",
                             "brannan_luma.png",
                             "brannan_process.png",
                             "brannan_screen.png",
                             "brooklynCurves1.png",
                             "brooklynCurves2.png",
                             "calm_mask1.jpg",
                             "calm_mask2.jpg",
                             "earlybirdblowout.png",
                             "earlybirdcurves.png",
                             "earlybirdmap.png",
                             "earlybirdoverlaymap_new.png",
                             "fairy_tale.png",
                             "filter_map_first.png",
                             "hudsonbackground.png",
                             "hudsonmap.png",
                             "inkwellmap.png",
                             "overlaymap.png",
                             "rise_mask1.jpg",
                             "rise_mask2.jpg",
                             "toastercolorshift.png",
                             "toastercurves.png",
                             "toastermetal.png",
                             "toasteroverlaymapwarm.png",
                             "toastersoftlight.png",
                             "toy_mask1.jpg",
                             "vignettemap_new.png",
                             "warm_layer1.jpg"})
        paths << QString("GPUImageFilter/pic/") + name;
    ASSERT_EQ(paths.size(), 4 + 32 + 33);
    for (const QString& path : paths)
        EXPECT_FALSE(Sampled(path).isNull()) << path.toStdString();
}

TEST_F(ResourceImages, LumasBeginWhereTheirNamesSay)
{
    struct Order
    {
        const char* name;
        QPointF first; ///< where the new picture comes first,
        QPointF last;  ///< and where it comes last, of these two
    };
    for (const Order& order : {
             Order{"linear-h", {0.1, 0.7}, {0.3, 0.2}},
             Order{"linear-v", {0.7, 0.1}, {0.2, 0.3}},
             Order{"linear-topleft", {0.1, 0.2}, {0.3, 0.4}},
             Order{"linear-topright", {0.9, 0.2}, {0.7, 0.4}},
             Order{"box-topleft", {0.2, 0.2}, {0.4, 0.1}},
             Order{"box-topright", {0.8, 0.2}, {0.9, 0.4}},
             Order{"box-botleft", {0.2, 0.8}, {0.1, 0.6}},
             Order{"box-botright", {0.8, 0.8}, {0.9, 0.6}},
             Order{"barndoor-h", {0.5, 0.9}, {0.3, 0.5}},
             Order{"barndoor-v", {0.9, 0.5}, {0.5, 0.3}},
             Order{"barndoor-topleft", {0.1, 0.1}, {0.1, 0.9}},
             Order{"barndoor-botleft", {0.1, 0.9}, {0.1, 0.1}},
             Order{"clock", {0.7, 0.3}, {0.3, 0.3}},
             Order{"clock", {0.7, 0.7}, {0.3, 0.7}},
             Order{"iris", {0.5, 0.5}, {0.2, 0.2}},
             Order{"square", {0.45, 0.45}, {0.2, 0.5}},
             Order{"burst", {0.5, 0.5}, {0.1, 0.1}},
             Order{"spiral", {0.5, 0.5}, {0.9, 0.5}},
             Order{"curtain", {0.5, 0.9}, {0.1, 0.1}},
             Order{"fan", {0.5, 0.5}, {0.1, 0.9}},
             Order{"zigzag-h", {0.1, 0.5}, {0.6, 0.4}},
             Order{"zigzag-v", {0.5, 0.1}, {0.4, 0.6}},
             Order{"strips-h", {0.1, 0.05}, {0.3, 0.05}},
             Order{"strips-h", {0.9, 0.17}, {0.7, 0.17}},
         }) {
        const Sampled picture = luma(order.name);
        EXPECT_LT(picture.at(order.first.x(), order.first.y()).red, picture.at(order.last.x(), order.last.y()).red)
            << order.name;
    }
}

TEST_F(ResourceImages, LumasUncoverTheSameAreaInEveryStep)
{
    for (const char* name : lumaNames) {
        const Sampled picture = luma(name);
        constexpr int side = 256;
        std::array<int, 11> uncovered{};
        for (int i = 0; i < side * side; ++i) {
            const double value = picture.at((i % side + 0.5) / side, (i / side + 0.5) / side).red;
            for (size_t step = 0; step < uncovered.size(); ++step)
                uncovered[step] += value <= double(step) / 10;
        }
        for (size_t step = 0; step < uncovered.size(); ++step)
            EXPECT_NEAR(double(uncovered[step]) / (side * side), double(step) / 10, 0.02) << name << ", step " << step;
    }
}

TEST_F(ResourceImages, TheTrigTableTurnsADirectionIntoAnAngleAndBack)
{
    const Sampled table("TransitionEffect/images/sincosatan.png");
    ASSERT_FALSE(table.isNull());
    const auto turned = [&table](double x, double y, double by) {
        const double angle = table.at((x + 1) / 2, (y + 1) / 2).blue - by - 0.5;
        const double place = angle - std::floor(angle);
        const Texel found = table.at(place, place);
        return QPointF(found.red * 2 - 1, found.green * 2 - 1);
    };
    for (int i = 0; i < 1000; ++i) {
        const double angle = (i + 0.5) / 1000 * 2 * std::numbers::pi;
        const double x = std::sin(angle);
        const double y = std::cos(angle);
        if (y < 0 && std::abs(x) < 0.01)
            continue; // here the turn's end and its beginning meet
        const QPointF same = turned(x, y, 0);
        EXPECT_LT(std::hypot(same.x() - x, same.y() - y), 0.02) << x << ", " << y;
        const double back = angle - 2 * std::numbers::pi * 0.03;
        const QPointF before = turned(x, y, 0.03);
        EXPECT_LT(std::hypot(before.x() - std::sin(back), before.y() - std::cos(back)), 0.03) << x << ", " << y;
    }
}

TEST_F(ResourceImages, ColoursAreWrittenForAShaderThatReadsRedFirst)
{
    const Sampled sepia("GPUImageFilter/pic/earlybirdmap.png");
    EXPECT_EQ(sepia.size(), QSize(256, 1));
    EXPECT_GT(sepia.at(0.7, 0).red, sepia.at(0.7, 0).blue + 0.1);
    const Sampled cold("GPUImageFilter/pic/hudsonbackground.png");
    EXPECT_LT(cold.at(0.1, 0.9).red, cold.at(0.1, 0.9).blue - 0.05);
    const Sampled amber("GPUImageFilter/pic/warm_layer1.jpg");
    EXPECT_GT(amber.at(0.99, 0.35).red, amber.at(0.99, 0.35).blue + 0.3);

    // The cube's shader exchanges red and blue itself. Tile 63 holds the strongest blue; in it red goes right, green
    // down.
    const Sampled cube("GPUImageFilter/pic/fairy_tale.png");
    ASSERT_EQ(cube.size(), QSize(512, 512));
    const Texel noBlue = cube.at(0.06, 0.06);
    const Texel fullBlue = cube.at(0.875 + 0.06, 0.875 + 0.06);
    EXPECT_GT(fullBlue.red, noBlue.red + 0.4);
    EXPECT_GT(cube.at(0.12, 0.01).blue, cube.at(0.01, 0.12).blue + 0.4);
    EXPECT_GT(cube.at(0.01, 0.12).green, cube.at(0.12, 0.01).green + 0.4);
}

} // namespace
} // namespace tavlo
