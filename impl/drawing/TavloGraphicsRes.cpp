#include "drawing/TavloGraphicsRes.h"

#include "base/Log.h"
#include "drawing/FilterCurves.h"
#include "drawing/GraphicsImages.h"
#include "drawing/PrivateUtil.h"

#include "effects/EffectCompiler.h"
#include "resources/ResourceTree.h"

#include <QDebug>
#include <QDir>
#include <QFile>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

constexpr const char* source = "impl\\TavloGraphicsRes";
constexpr const char* effectRoot = ":/res/Resources/TransitionEffect/glsl/";

/// By index; a new effect goes to the end, since transitions name their effect by this number.
constexpr std::array<const char*, ITavloGraphicsRes::effectCount> effectFiles{
    "simple.fx",           "trans_erase.fx", "trans_fade.fx",  "trans_glide.fx", "trans_stretch.fx", "trans_blur.fx",
    "trans_distortion.fx", "trans_color.fx", "trans_lumas.fx", "process.fx",     "filters.fx"};

QString imagePath(const GraphicsImage& image)
{
    const char* const root = image.kind == ImageKind::Filter ? ":/res/Resources/GPUImageFilter/pic/"
                                                             : ":/res/Resources/TransitionEffect/images/";
    return QLatin1String(root) + QLatin1String(image.file);
}

TexturePtr loadImage(int slot, const DevicePtr& device, Context& context)
{
    const GraphicsImage& image = graphicsImage(slot);
    switch (image.kind) {
    case ImageKind::Mask:
        return PrivateUtil::createImageRes(device, maskImageSize, maskImageSize, Usage::Dynamic,
                                           Format::R8G8B8A8_UNORM);
    case ImageKind::Curve:
        return PrivateUtil::createCurveRes(device, context, makeFilterCurve(slot).data(), 256, filterCurveRows(slot));
    default:
        return PrivateUtil::loadImageRes(device, context, imagePath(image));
    }
}

const std::shared_ptr<const InputLayout>& pictureLayout()
{
    static const auto layout = std::make_shared<const InputLayout>(
        InputLayout{{Semantic::Position, Format::R32G32B32_FLOAT, 0}, {Semantic::TexCoord, Format::R32G32_FLOAT, 12}});
    return layout;
}

bool isEffect(int index) { return index >= 0 && index < ITavloGraphicsRes::effectCount; }

/// The effect's place in the cache: the path with its separators made plain, such as "__res_Resources_..._simple.fx".
QString cacheName(QString path)
{
    for (const char separator : {'\\', '/', ':'})
        path.replace(QLatin1Char(separator), QLatin1Char('_'));
    return path;
}

} // namespace

TavloGraphicsRes::~TavloGraphicsRes() { destroyRes(); }

bool TavloGraphicsRes::create(quint32 flags, DevicePtr device, ContextPtr context, const QString& cachePath)
{
    destroyRes();
    if (!device || !context)
        return false;
    initResourceTree();
    _device = std::move(device);
    _context = std::move(context);
    if (!(flags & WithoutImages)) {
        qDebug() << "load image texture res ...";
        loadImages();
    }
    for (size_t i = 0; i < _effects.size(); ++i) {
        const QString path = QLatin1String(effectRoot) + QLatin1String(effectFiles[i]);
        if (!loadEffect(path, cachePath, _effects[i])) {
            logFailure({source, "TavloGraphicsRes::create"}, QStringLiteral("failed to load fx : ") + path);
            return false;
        }
    }
    return true;
}

void TavloGraphicsRes::destroyRes()
{
    _effects = {};
    _images = {};
    _context.reset();
    _device.reset();
}

void TavloGraphicsRes::loadImages()
{
    for (int slot = 0; slot < imageCount; ++slot) {
        _images[static_cast<size_t>(slot)] = loadImage(slot, _device, *_context);
        if (!_images[static_cast<size_t>(slot)]) {
            logFailure({source, "TavloGraphicsRes::create"},
                       QStringLiteral("failed to CreateShaderResourceView : %1").arg(slot));
        }
    }
}

bool TavloGraphicsRes::loadEffect(const QString& path, const QString& cachePath, LoadedEffect& loaded)
{
    const auto fail = [](const QString& text) {
        logFailure({source, "TavloGraphicsRes::loadEffect"}, text);
        return false;
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("failed to load ") + path);
    const QByteArray text = file.readAll();

    effects::CompileJob job;
    job.source = std::string_view(text.constData(), static_cast<size_t>(text.size()));
    job.sourceName = path.toStdString();
    if (!cachePath.isEmpty()) {
        QDir().mkpath(cachePath);
        job.cacheFile = (cachePath + cacheName(path)).toStdString();
    }
    std::string errors;
    if (effects::failed(effects::D3DX11CompileEffectFromMemory(*_device, job, loaded.effect, errors))) {
        return fail(errors.empty()
                        ? QStringLiteral("failed to D3DX10CreateEffectFromMemory")
                        : QStringLiteral("failed to D3DX10CreateEffectFromMemory:") + QString::fromStdString(errors));
    }
    loaded.technique = loaded.effect->GetTechniqueByName("Transprocess");
    if (!loaded.technique.IsValid())
        return fail(QStringLiteral("failed to GetTechniqueByName Transprocess ") + path);
    loaded.layout = pictureLayout();
    if (!loaded.technique.GetPassByIndex(0).Accepts(*loaded.layout))
        return fail(QStringLiteral("failed to CreateInputLayout"));
    return true;
}

TexturePtr TavloGraphicsRes::imageView(int slot)
{
    return slot >= 0 && slot < imageCount ? _images[static_cast<size_t>(slot)] : nullptr;
}

effects::Effect* TavloGraphicsRes::effect(int index)
{
    return isEffect(index) ? _effects[static_cast<size_t>(index)].effect.get() : nullptr;
}

const effects::EffectTechnique& TavloGraphicsRes::technique(int index)
{
    static const effects::EffectTechnique none;
    return isEffect(index) ? _effects[static_cast<size_t>(index)].technique : none;
}

const std::shared_ptr<const InputLayout>& TavloGraphicsRes::inputLayout(int index)
{
    static const std::shared_ptr<const InputLayout> none;
    return isEffect(index) ? _effects[static_cast<size_t>(index)].layout : none;
}
