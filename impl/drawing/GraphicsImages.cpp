#include "drawing/GraphicsImages.h"

#include "drawing/FilterCurves.h"

#include <array>

namespace tavlo {

namespace {

constexpr GraphicsImage transition(const char* file) { return {ImageKind::Transition, file}; }
constexpr GraphicsImage filter(const char* file) { return {ImageKind::Filter, file}; }
constexpr GraphicsImage curve() { return {ImageKind::Curve, nullptr}; }

constexpr std::array<GraphicsImage, graphicsImageCount> images{
    transition("clouds.png"),                   // 0
    transition("noise.png"),                    // 1
    transition("sincosatan.png"),               // 2
    transition("checkerboard.png"),             // 3
    GraphicsImage{ImageKind::Mask, nullptr},    // 4
    filter("amaromap.png"),                     // 5
    filter("amaro_mask1.jpg"),                  // 6
    filter("amaro_mask2.jpg"),                  // 7
    filter("bluevintage_mask1.jpg"),            // 8
    filter("brannan_blowout.png"),              // 9
    filter("brannan_contrast.png"),             // 10
    filter("brannan_luma.png"),                 // 11
    filter("brannan_process.png"),              // 12
    filter("brannan_screen.png"),               // 13
    filter("brooklynCurves1.png"),              // 14
    filter("brooklynCurves2.png"),              // 15
    filter("calm_mask1.jpg"),                   // 16
    filter("calm_mask2.jpg"),                   // 17
    filter("earlybirdblowout.png"),             // 18
    filter("earlybirdcurves.png"),              // 19
    filter("earlybirdmap.png"),                 // 20
    filter("earlybirdoverlaymap_new.png"),      // 21
    filter("fairy_tale.png"),                   // 22
    filter("filter_map_first.png"),             // 23
    filter("hudsonbackground.png"),             // 24
    filter("hudsonmap.png"),                    // 25
    filter("inkwellmap.png"),                   // 26
    filter("overlaymap.png"),                   // 27
    filter("rise_mask1.jpg"),                   // 28
    filter("rise_mask2.jpg"),                   // 29
    filter("toastercolorshift.png"),            // 30
    filter("toastercurves.png"),                // 31
    filter("toastermetal.png"),                 // 32
    filter("toasteroverlaymapwarm.png"),        // 33
    filter("toastersoftlight.png"),             // 34
    filter("toy_mask1.jpg"),                    // 35
    filter("vignettemap_new.png"),              // 36
    filter("warm_layer1.jpg"),                  // 37
    curve(),                                    // 38
    curve(),                                    // 39
    curve(),                                    // 40
    curve(),                                    // 41
    curve(),                                    // 42
    curve(),                                    // 43
    curve(),                                    // 44
    curve(),                                    // 45
    curve(),                                    // 46
    curve(),                                    // 47
    transition("lumas/barndoor-botleft.png"),   // 48
    transition("lumas/barndoor-h.png"),         // 49
    transition("lumas/barndoor-topleft.png"),   // 50
    transition("lumas/barndoor-v.png"),         // 51
    transition("lumas/blinds-h.png"),           // 52
    transition("lumas/box-botleft.png"),        // 53
    transition("lumas/box-botright.png"),       // 54
    transition("lumas/box-topleft.png"),        // 55
    transition("lumas/box-topright.png"),       // 56
    transition("lumas/burst.png"),              // 57
    transition("lumas/checkerboard-small.png"), // 58
    transition("lumas/circles.png"),            // 59
    transition("lumas/clock.png"),              // 60
    transition("lumas/cloud.png"),              // 61
    transition("lumas/curtain.png"),            // 62
    transition("lumas/fan.png"),                // 63
    transition("lumas/iris.png"),               // 64
    transition("lumas/linear-h.png"),           // 65
    transition("lumas/linear-topleft.png"),     // 66
    transition("lumas/linear-topright.png"),    // 67
    transition("lumas/linear-v.png"),           // 68
    transition("lumas/parallel-zigzag-h.png"),  // 69
    transition("lumas/parallel-zigzag-v.png"),  // 70
    transition("lumas/spiral.png"),             // 71
    transition("lumas/square.png"),             // 72
    transition("lumas/squares.png"),            // 73
    transition("lumas/stripes.png"),            // 74
    transition("lumas/strips-h.png"),           // 75
    transition("lumas/strips-v.png"),           // 76
    transition("lumas/watercolor.png"),         // 77
    transition("lumas/zigzag-h.png"),           // 78
    transition("lumas/zigzag-v.png"),           // 79
};

static_assert(images[maskImageSlot].kind == ImageKind::Mask);
static_assert(images[firstFilterCurveSlot].kind == ImageKind::Curve);
static_assert(images[lastFilterCurveSlot].kind == ImageKind::Curve);

} // namespace

const GraphicsImage& graphicsImage(int slot) { return images[static_cast<size_t>(slot)]; }

} // namespace tavlo
