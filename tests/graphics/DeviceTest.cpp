#include "graphics/GraphicsTest.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <thread>

using namespace tavlo::graphics;
using tavlo::test::LogCapture;

namespace {

class DeviceGL : public tavlo::test::GraphicsTest
{};

constexpr FormatSupport drawn = FormatSupport::Texture2D | FormatSupport::ShaderLoad | FormatSupport::ShaderSample;
constexpr FormatSupport target = drawn | FormatSupport::RenderTarget | FormatSupport::ReadBack;

TEST_F(DeviceGL, knowsWhatEachFormatOfThePictureTablesCanDo)
{
    for (const Format format : {Format::R8_UNORM, Format::R8G8_UNORM, Format::R8G8B8A8_UNORM, Format::B8G8R8A8_UNORM,
                                Format::B8G8R8X8_UNORM, Format::NV12, Format::R16_FLOAT, Format::R16G16B16A16_FLOAT})
        EXPECT_TRUE(supports(device->formatSupport(format), target)) << formatName(format);
    EXPECT_TRUE(supports(device->formatSupport(Format::A8_UNORM), drawn));
    EXPECT_FALSE(supports(device->formatSupport(Format::A8_UNORM), FormatSupport::RenderTarget));
    EXPECT_TRUE(supports(device->formatSupport(Format::D24_UNORM_S8_UINT), FormatSupport::DepthStencil));
    EXPECT_FALSE(supports(device->formatSupport(Format::D24_UNORM_S8_UINT), FormatSupport::RenderTarget));
    EXPECT_TRUE(supports(device->formatSupport(Format::R32G32B32_FLOAT), FormatSupport::VertexBuffer));
    EXPECT_FALSE(supports(device->formatSupport(Format::R32G32B32_FLOAT), FormatSupport::Texture2D));
    EXPECT_EQ(device->formatSupport(Format::UNKNOWN), FormatSupport::None);
    EXPECT_EQ(device->formatSupport(static_cast<Format>(70)), FormatSupport::None); // a number without a row
}

TEST(FormatNames, followTheirNumbers)
{
    EXPECT_EQ(formatName(formatFromNumber(28)), "R8G8B8A8_UNORM");
    EXPECT_EQ(formatName(formatFromNumber(87)), "B8G8R8A8_UNORM");
    EXPECT_EQ(formatName(formatFromNumber(103)), "NV12");
    EXPECT_EQ(formatFromNumber(45), Format::D24_UNORM_S8_UINT);
    EXPECT_EQ(formatFromNumber(187), Format::UNKNOWN);
    EXPECT_EQ(formatRows(Format::NV12, 37), 37U + 18U);
}

TEST_F(DeviceGL, listsItsOwnAdapterAndTheSoftwareRendererLast)
{
    const std::vector<Adapter> adapters = enumerateAdapters();
    ASSERT_FALSE(adapters.empty());
    bool seenSoftware = false;
    for (std::size_t i = 0; i < adapters.size(); ++i) {
        EXPECT_EQ(adapters[i].id, static_cast<int>(i));
        EXPECT_FALSE(adapters[i].name.empty());
        EXPECT_FALSE(adapters[i].driverVersion.empty());
        EXPECT_TRUE(adapters[i].software || !seenSoftware) << adapters[i].name;
        seenSoftware |= adapters[i].software;
        EXPECT_TRUE(Device::create({.adapter = static_cast<int>(i)})) << adapters[i].name;
    }
    EXPECT_THAT(device->driverIdentity(), testing::HasSubstr(device->adapter().driverVersion));
}

TEST_F(DeviceGL, anAdapterThatIsNotThereIsRefused)
{
    const LogCapture log;
    EXPECT_FALSE(Device::create({.adapter = 99}));
    EXPECT_GE(log.count("no graphics adapter 99"), 1);
}

TEST_F(DeviceGL, badDescriptionsAreRefusedWithALine)
{
    const struct
    {
        TextureDesc desc;
        const char* reason;
    } faults[] = {
        {{0, 0}, "an empty size"},
        {{5, 0}, "an empty size"},
        {{device->maxTextureSize() + 1, 4}, "larger than the device can hold"},
        {{4, device->maxTextureSize(), Format::NV12}, "larger than the device can hold"},
        {{4, 4, Format::UNKNOWN}, "cannot use the format so"},
        {{4, 4, Format::R32G32B32_FLOAT}, "cannot use the format so"},
        {{4, 4, Format::A8_UNORM, Usage::Default, true}, "cannot use the format so"},
        {{4, 4, Format::D24_UNORM_S8_UINT, Usage::Staging}, "cannot use the format so"},
        {{4, 4, Format::R8_UNORM, Usage::Dynamic, true}, "only a default texture"},
    };
    for (const auto& fault : faults) {
        const LogCapture log;
        EXPECT_FALSE(device->createTexture(fault.desc)) << fault.reason;
        EXPECT_EQ(log.count(fault.reason), 1) << fault.reason;
        EXPECT_THAT(device->lastMessage(), testing::HasSubstr(fault.reason));
    }
    EXPECT_FALSE(device->createBuffer({0, BufferKind::Vertex, true}));
    EXPECT_FALSE(device->createBuffer({8, BufferKind::Index, false}));
}

TEST_F(DeviceGL, objectsOutliveDeviceAndContexts)
{
    TexturePtr texture = makeTarget(9, 5);
    std::string messages;
    ContextPtr deferred = device->createDeferredContext();
    ASSERT_TRUE(deferred);
    const TexturePtr dynamic = makeTexture(Format::R8_UNORM, 9, 5, Usage::Dynamic);
    device.reset();
    EXPECT_TRUE(context->clearRenderTarget(texture, {1, 0, 0, 1}));
    const Fence last = context->flush();
    context.reset();
    EXPECT_TRUE(last.wait(std::chrono::seconds(5)));
    deferred.reset();
    EXPECT_EQ(texture->desc().width, 9U);
    texture.reset();
}

TEST_F(DeviceGL, aContextBelongsToOneThreadAtATime)
{
    const LogCapture log;
    bool taken = true;
    std::thread([&] { taken = context->attach(); }).join();
    EXPECT_FALSE(taken);
    EXPECT_EQ(log.count("failed to eglMakeCurrent"), 1);
    context->detach();
    std::thread([&] {
        taken = context->attach();
        context->detach();
    }).join();
    EXPECT_TRUE(taken);
    EXPECT_TRUE(context->attach());
}

} // namespace
