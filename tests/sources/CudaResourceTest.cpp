// Pictures that stay in graphics memory: with a driver in the place of CUDA's, as none is where tests run.

#include "TavloCUDAUtil/ITavloVideoCUDAResource.h"
#include "base/CTempldateHelper.h"
#include "drawing/TavloDrawDX11.h"
#include "fake/FakeCuda.h"
#include "graphics/Device.h"
#include "shared/CudaPicture.h"
#include "shared/VlcTypes.h"
#include "sources/PlayerSources.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace tavlo::test {
namespace {

int alive = 0; ///< pictures

picture_t* pictureInGraphicsMemory(quint64 address, void* context, int width, int height)
{
    video_format_t format;
    video_format_Setup(&format, chromaInGraphicsMemory, width, height, width, height, 1, 1);
    picture_resource_t resource{};
    resource.p_sys =
        reinterpret_cast<picture_sys_t*>(new CudaPicture{context, nullptr, address, address + 0x10000, 256, 512});
    resource.pf_destroy = [](picture_t* picture) {
        --alive;
        delete reinterpret_cast<CudaPicture*>(picture->p_sys);
        free(picture);
    };
    ++alive;
    return picture_NewFromResource(&format, &resource);
}

class CudaResource : public testing::Test
{
protected:
    void SetUp() override
    {
        *fakeCuda() = {};
        ASSERT_TRUE(device);
        ASSERT_TRUE(device->immediateContext()->attach());
        ASSERT_TRUE(helper.create());
        target = makeTarget();
    }
    void TearDown() override
    {
        helper.destroy();
        EXPECT_EQ(fakeCuda()->depth, 0);
        EXPECT_EQ(fakeCuda()->retained, 0);
        EXPECT_EQ(fakeCuda()->registered, 0);
        EXPECT_EQ(fakeCuda()->mapped, 0);
        EXPECT_EQ(alive, 0);
    }

    graphics::TexturePtr makeTarget() const
    {
        return device->createTexture({.width = 64, .height = 54, .format = graphics::Format::R8_UNORM});
    }

    void give(quint64 address, void* context = nullptr)
    {
        picture_t* const picture = pictureInGraphicsMemory(address, context, 64, 36);
        helper->takePicture(picture, 0);
        picture_Release(picture);
    }

    graphics::DevicePtr device = graphics::Device::create({});
    CTempldateHelper<ITavloVideoCUDAResource> helper{"TavloCUDAUtil", "CreateTavloVideoCUDAResource"};
    graphics::TexturePtr target;
};

TEST_F(CudaResource, TheNewestPictureGoesIntoTheTextureAsItLies)
{
    const FakeCuda& cuda = *fakeCuda();
    ASSERT_TRUE(helper->create(target.get(), 64, 54));
    EXPECT_FALSE(helper->copyTo(target.get())) << "there is none";
    int context = 0;
    give(0xA0000, &context);
    give(0xB0000, &context);
    EXPECT_EQ(alive, 1) << "the older one is let go";
    ASSERT_TRUE(helper->copyTo(target.get()));
    ASSERT_EQ(cuda.copies.size(), 2U);
    EXPECT_EQ(cuda.copies[0].address, 0xB0000U);
    EXPECT_EQ(cuda.copies[0].pitch, 256U);
    EXPECT_EQ(cuda.copies[0].width, 64U);
    EXPECT_EQ(cuda.copies[0].height, 36U);
    EXPECT_EQ(cuda.copies[0].row, 0U);
    EXPECT_EQ(cuda.copies[1].address, 0xC0000U);
    EXPECT_EQ(cuda.copies[1].pitch, 512U);
    EXPECT_EQ(cuda.copies[1].height, 18U);
    EXPECT_EQ(cuda.copies[1].row, 36U);
    for (const FakeCuda::Copy& copy : cuda.copies)
        EXPECT_TRUE(copy.mapped && copy.context == &context);
    EXPECT_EQ(alive, 1) << "the copy goes on behind the call";
    EXPECT_FALSE(helper->copyTo(target.get())) << "nothing newer";

    const unsigned first = cuda.texture;
    const graphics::TexturePtr other = makeTarget();
    give(0xD0000, &context);
    EXPECT_TRUE(helper->copyTo(other.get()));
    EXPECT_NE(cuda.texture, first);
    EXPECT_EQ(cuda.registered, 1) << "it knows one at a time";
    give(0xE0000, &context);
    helper->videoStopped();
    EXPECT_FALSE(helper->copyTo(other.get()));
}

TEST_F(CudaResource, WhatFailsIsToldOnceAndLeftOut)
{
    const LogCapture log;
    fakeCuda()->devices = 0;
    EXPECT_FALSE(helper->create(target.get(), 64, 54)) << "another maker's device";
    fakeCuda()->devices = 1;
    ASSERT_TRUE(helper->create(target.get(), 64, 54));
    fakeCuda()->failing = 999;
    for (const quint64 address : {0xA0000, 0xB0000}) {
        give(address);
        EXPECT_FALSE(helper->copyTo(target.get()));
    }
    EXPECT_EQ(log.count("a fault of the device"), 1);
    fakeCuda()->failing = 0;
    give(0xC0000);
    EXPECT_TRUE(helper->copyTo(target.get()));
}

/// From the player's threads to the texture that is drawn.
TEST_F(CudaResource, ASourceKeepsPicturesInGraphicsMemoryWhereItCan)
{
    const FakeCuda& cuda = *fakeCuda();
    for (const bool possible : {true, false}) {
        fakeCuda()->devices = possible ? 1 : 0;
        const LogCapture log;
        SourceSite site;
        site.device = device;
        site.context = device->immediateContext();
        site.deferredContext = device->createDeferredContext();
        auto* const source = new TavloPresentSourceMediaVLCURL(site);
        ITavloSourcePlayerSink& sink = *source;
        tagTavloPresentSourceInfo info;
        info.enableCUDAAccelerate = 1;
        ASSERT_TRUE(source->openSource(info));
        EXPECT_EQ(log.count("use cuda resource to copy texture"), possible);
        EXPECT_EQ(log.count("failed to create cuda res "), !possible);
        EXPECT_EQ(log.count("use d3d resource to copy texture"), !possible);
        tagTavloVideoInfo video;
        video.sourceWidth = 64;
        video.sourceHeight = 36;
        sink.OnMediaSourcePlayerDoVideoStart(chromaInGraphicsMemory, video);
        EXPECT_EQ(video.chroma, possible ? chromaInGraphicsMemory : tavloFourcc("RGBA")) << "the software renderer's";
        if (possible) {
            quint32 count = 0;
            EXPECT_EQ(sink.OnMediaSourcePlayerDoVideoSamplePool(&count), nullptr);
            picture_t* const picture = pictureInGraphicsMemory(0xA0000, &count, 64, 36);
            sink.OnMediaSourcePlayerDoVideoSample(0, picture);
            picture_Release(picture);
            TavloDrawDX11 draw;
            source->drawFrame(draw, {});
            EXPECT_EQ(cuda.copies.size(), 2U);
            source->drawFrame(draw, {});
            EXPECT_EQ(cuda.copies.size(), 2U) << "it stands already";
            EXPECT_EQ(alive, 1);
        }
        source->closeSource();
        EXPECT_EQ(alive, 0);
        picture_t* const late = pictureInGraphicsMemory(0xB0000, nullptr, 64, 36);
        sink.OnMediaSourcePlayerDoVideoSample(0, late);
        picture_Release(late);
        sink.OnMediaSourcePlayerDoVideoStop();
        source->release();
    }
}

} // namespace
} // namespace tavlo::test
