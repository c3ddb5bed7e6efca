#include "drawing/TavloGraphicsRes.h"
#include "effects/EffectCompiler.h"
#include "graphics/GraphicsTest.h"
#include "support/LogCapture.h"

#include <tavlo/InterfacePtr.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace tavlo::test {
namespace {

using graphics::TexturePtr;

const QString simpleCache = QStringLiteral("__res_Resources_TransitionEffect_glsl_simple.fx");
const QString greyCache = QStringLiteral("__res_Resources_TransitionEffect_glsl_process.fx");

class GraphicsResGL : public GraphicsTest
{
public:
    using Store = InterfacePtr<TavloGraphicsRes>;

    /// A store without images, with its cache in `cachePath`.
    Store start(const QString& path)
    {
        Store store(new TavloGraphicsRes);
        EXPECT_TRUE(store->create(ITavloGraphicsRes::WithoutImages, device, context, path));
        EXPECT_TRUE(isSimple(*store, 0));
        return store;
    }

    /// Whether an effect has a variable that only simple.fx has.
    static bool isSimple(TavloGraphicsRes& store, int index)
    {
        return store.effect(index) && store.effect(index)->GetVariableByName("lumaKey_softness").IsValid();
    }

    QByteArray content(const QString& name) const
    {
        QFile file(cachePath + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void replace(const QString& name, const QByteArray& bytes) const
    {
        QFile file(cachePath + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    QTemporaryDir folder;
    const QString cachePath = folder.filePath(QStringLiteral("hlslObj/7/"));
};

TEST_F(GraphicsResGL, LoadsEffectsAndImagesUnlessThoseAreLeftOut)
{
    const LogCapture log;
    const Store bare = start(cachePath);
    EXPECT_EQ(log.count("load image texture res ..."), 0);
    for (int slot = 0; slot < ITavloGraphicsRes::imageCount; ++slot)
        EXPECT_EQ(bare->imageView(slot), nullptr);
    Store store(new TavloGraphicsRes);
    EXPECT_EQ(store->effect(0), nullptr);
    ASSERT_TRUE(store->create(0, device, context, cachePath));
    EXPECT_EQ(log.count("load image texture res ..."), 1);
    EXPECT_EQ(log.count("failed"), 0) << log.lines().join(QLatin1Char('\n')).toStdString();
    for (int i = 0; i < ITavloGraphicsRes::effectCount; ++i) {
        EXPECT_NE(store->effect(i), nullptr) << i;
        EXPECT_TRUE(store->technique(i).IsValid()) << i;
        ASSERT_NE(store->inputLayout(i), nullptr) << i;
        EXPECT_TRUE(store->technique(i).GetPassByIndex(0).Accepts(*store->inputLayout(i))) << i;
    }
    EXPECT_TRUE(isSimple(*store, 0));
    EXPECT_FALSE(isSimple(*store, 9));
    for (int slot = 0; slot < ITavloGraphicsRes::imageCount; ++slot) {
        ASSERT_NE(store->imageView(slot), nullptr) << slot;
        EXPECT_EQ(store->imageView(slot), store->imageTextures()[slot]);
    }
    EXPECT_EQ(store->imageView(4)->desc().width, 512U);
    EXPECT_EQ(store->imageView(4)->desc().usage, graphics::Usage::Dynamic);
    EXPECT_EQ(store->imageView(45)->desc().width, 256U); // a filter's curve
    EXPECT_EQ(store->imageView(45)->desc().height, 3U);
    for (const int beyond : {-1, 80, 4000}) { // there are fewer effects than images
        EXPECT_EQ(store->imageView(beyond), nullptr);
        EXPECT_EQ(store->effect(beyond), nullptr);
        EXPECT_FALSE(store->technique(beyond).IsValid());
        EXPECT_EQ(store->inputLayout(beyond), nullptr);
    }

    const TexturePtr image = store->imageView(0);
    store->destroyRes();
    store->destroyRes();
    EXPECT_EQ(store->effect(0), nullptr);
    EXPECT_EQ(store->imageView(0), nullptr);
    EXPECT_EQ(image.use_count(), 1);
}

/// The first start writes what the second one reads, without a look at the source.
TEST_F(GraphicsResGL, TrustsItsCache)
{
    start(cachePath);
    EXPECT_EQ(QDir(cachePath).entryList(QDir::Files).size(), ITavloGraphicsRes::effectCount);
    const QByteArray simple = content(simpleCache);
    ASSERT_FALSE(simple.isEmpty());
    replace(greyCache, simple);
    EXPECT_TRUE(isSimple(*start(cachePath), 9));
    EXPECT_EQ(content(simpleCache), simple);
}

/// An effect without the technique that all are drawn with: as the cache may hold it, since nothing compares it with the
/// source.
TEST_F(GraphicsResGL, StopsAtAnEffectThatFails)
{
    start(cachePath);
    constexpr std::string_view other = "effect 1\n[technique Other]\npass all all\n"
                                       "[vertex all]\nvoid main() { gl_Position = vec4(0.0); }\n"
                                       "[fragment all]\nout vec4 color;\nvoid main() { color = vec4(1.0); }\n";
    const QString file = cachePath + greyCache;
    ASSERT_TRUE(QFile::remove(file));
    effects::EffectPtr effect;
    std::string errors;
    ASSERT_FALSE(effects::failed(
        effects::D3DX11CompileEffectFromMemory(*device, {other, "other", file.toStdString()}, effect, errors)))
        << errors;

    const LogCapture log;
    Store store(new TavloGraphicsRes);
    EXPECT_FALSE(store->create(ITavloGraphicsRes::WithoutImages, device, context, cachePath));
    EXPECT_EQ(log.count("failed to GetTechniqueByName Transprocess "), 1);
    EXPECT_EQ(log.count("failed to load fx : :/res/Resources/TransitionEffect/glsl/process.fx"), 1);
}

TEST_F(GraphicsResGL, WorksWithoutACacheFolder)
{
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    start(file.fileName() + QStringLiteral("/below/"));
    start(QString());
}

} // namespace
} // namespace tavlo::test
