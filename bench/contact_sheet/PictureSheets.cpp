#include "Sheets.h"

#include "Sheet.h"

#include "drawing/FilterTable.h"
#include "drawing/GraphicsImages.h"
#include "drawing/PictureChroma.h"
#include "drawing/PrivateUtil.h"
#include "drawing/TavloDrawDX11.h"
#include "drawing/TavloGraphicsRes.h"

#include <QPainterPath>

#include <cstdio>
#include <functional>

namespace {

using namespace tavlo;
using namespace tavlo::graphics;

/// A person before a green screen, with sky, skin, foliage, deep shadow and highlights.
QImage makeScene(QSize size)
{
    QImage picture(size, QImage::Format_RGBA8888);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size.width() / 160.0, size.height() / 90.0);
    QLinearGradient sky(0, 0, 0, 60);
    sky.setColorAt(0, QColor(40, 90, 190));
    sky.setColorAt(1, QColor(230, 200, 170));
    painter.fillRect(QRectF(0, 0, 80, 90), sky);
    painter.fillRect(QRectF(80, 0, 80, 90), QColor(30, 190, 60));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 250, 220));
    painter.drawEllipse(QPointF(20, 18), 8, 8);
    painter.setBrush(QColor(40, 80, 30));
    QPainterPath hill(QPointF(0, 60));
    hill.cubicTo(25, 40, 45, 75, 80, 55);
    hill.lineTo(80, 90);
    hill.lineTo(0, 90);
    painter.drawPath(hill);
    painter.setBrush(QColor(25, 20, 25));
    painter.drawRoundedRect(QRectF(95, 62, 50, 40), 14, 14);
    QRadialGradient skin(QPointF(116, 32), 26);
    skin.setColorAt(0, QColor(245, 200, 170));
    skin.setColorAt(1, QColor(170, 110, 85));
    painter.setBrush(skin);
    painter.drawEllipse(QPointF(120, 40), 17, 22);
    painter.setBrush(QColor(60, 35, 20));
    painter.drawChord(QRectF(102, 15, 36, 36), 0, 180 * 16);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(114, 40), 3, 2);
    painter.drawEllipse(QPointF(127, 40), 3, 2);
    return picture;
}

class PictureShow
{
public:
    explicit PictureShow(QSize size) : _size(size), _device(Device::create())
    {
        if (!_device)
            return;
        _context = _device->immediateContext();
        TextureDesc desc;
        const bool made = _resources.create(0, _device, _context, QString()) &&
                          _first.create(&_resources, nullptr, _device, _context, desc, QSizeF(size)) &&
                          _second.create(&_resources, nullptr, _device, _context, desc, QSizeF(size));
        if (made)
            _scene = upload(makeScene(size));
    }

    bool isMade() const { return _scene != nullptr; }

    bool writeImages(const QDir& folder)
    {
        Sheet sheet(10, 8, _size);
        for (int slot = 0; slot < graphicsImageCount; ++slot) {
            const TexturePtr image = _resources.imageView(slot);
            const QSizeF own = image ? QSizeF(image->desc().width, image->desc().height) : QSizeF(_size);
            tagTavloShowDisplayItemInfo whole;
            whole.offset = {};
            _first.clear({0.3F, 0.3F, 0.3F, 1.0F});
            _first.drawPicturePlaced(chromaRgba, image, own, {}, whole, FitModeStretch, false, false, false);
            const char* const file = graphicsImage(slot).file;
            sheet.add(readBack(), QStringLiteral("%1 %2").arg(slot).arg(QLatin1String(file ? file : "")));
        }
        return sheet.save(folder.filePath(QStringLiteral("images.png")));
    }

    bool writeProcess(const QDir& folder)
    {
        using Param = tagTavloPresentPictureFilterParam;
        struct Row
        {
            const char* name;
            std::function<void(Param&)> set;
        };
        const Row rows[]{
            {"plain", [](Param&) {}},
            {"crop",
             [](Param& p) {
                 p.rectCropParam = {1, {0.1F, 0.2F, 0.9F, 0.7F}};
             }},
            {"hue 120",
             [](Param& p) {
                 p.colorAdjustParam = {1, 0, 0, 120, 1};
             }},
            {"contrast 0.5",
             [](Param& p) {
                 p.colorAdjustParam = {1, 0.5F, 0, 0, 1};
             }},
            {"brightness 0.3",
             [](Param& p) {
                 p.colorAdjustParam = {1, 0, 0.3F, 0, 1};
             }},
            {"saturation 0",
             [](Param& p) {
                 p.colorAdjustParam = {1, 0, 0, 0, 0};
             }},
            {"chroma key", [](Param& p) { p.chromaKeyParam = green(); }},
            {"luma key",
             [](Param& p) {
                 p.lumaKeyParam = {1, 0.1F, 0.1F, 0.1F};
             }},
            {"both keys",
             [](Param& p) {
                 p.chromaKeyParam = green(), p.lumaKeyParam = {1, 0.1F, 0.1F, 0.1F};
             }},
            {"flip", [](Param& p) { p.processParam.vFlip = 1; }},
            {"mirror", [](Param& p) { p.processParam.hMirror = 1; }},
            {"all",
             [](Param& p) {
                 p.processParam.hMirror = 1, p.rectCropParam = {1, {0.05F, 0, 1, 0.95F}};
                 p.colorAdjustParam = {1, 0.2F, 0.05F, 20, 1.2F}, p.chromaKeyParam = green();
             }},
        };
        Sheet sheet(4, 4, _size);
        for (const Row& row : rows) {
            Param param;
            row.set(param);
            drawKeyedSource(_first, _second, chromaRgba, _scene, QSizeF(_size), {}, param, true, false);
            sheet.add(overChequer(readBack()), QLatin1String(row.name));
        }
        tagTavloShowDisplayItemInfo placed;
        placed.scale = {0.5, 0.5};
        placed.offset = {0.1, -0.1};
        placed.rotation = 20;
        _first.clear({0.3F, 0.3F, 0.3F, 1.0F});
        _first.drawPicturePlaced(chromaRgba, _scene, QSizeF(_size), {}, placed, FitModeAspect, false, false, false);
        sheet.add(readBack(), QStringLiteral("placed, 20 degrees"));
        placed = {};
        placed.finalRect = {_size.width() * 0.5, _size.height() * 0.1, _size.width() * 0.4, _size.height() * 0.4};
        _first.clear({0.3F, 0.3F, 0.3F, 1.0F});
        _first.drawPicturePlaced(chromaRgba, _scene, QSizeF(_size), {}, placed, FitModeAspect, false, false, false);
        sheet.add(readBack(), QStringLiteral("final rectangle"));
        _first.drawGray(_scene, QSizeF(_size));
        sheet.add(readBack(), QStringLiteral("grey"));
        return sheet.save(folder.filePath(QStringLiteral("process.png")));
    }

    bool writeFilters(const QDir& folder)
    {
        const QImage photograph = QImage(QStringLiteral(":/photograph.jpg"))
                                      .scaled(_size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                      .convertToFormat(QImage::Format_RGBA8888);
        const TexturePtr picture = upload(photograph);
        const TexturePtr below = upload(photograph.mirrored(true, false));
        Sheet sheet(4, 6, _size);
        sheet.add(photograph, QStringLiteral("0 NONE"));
        for (const FilterRow& row : filterRows()) {
            _first.drawFilter(row.type, picture, below, QSizeF(_size), false, false);
            sheet.add(readBack(), QStringLiteral("%1 %2").arg(row.type).arg(QLatin1String(row.name)));
        }
        return sheet.save(folder.filePath(QStringLiteral("filters.png")));
    }

private:
    static tagTavloPresentPictureChromaKey green()
    {
        const float r = 30 / 255.0F, g = 190 / 255.0F, b = 60 / 255.0F;
        const float u = -0.100644F * r - 0.338572F * g + 0.439216F * b + 0.501961F;
        const float v = 0.439216F * r - 0.398942F * g - 0.040274F * b + 0.501961F;
        return {1, 0xFF1EBE3C, 0.12F, 0.08F, 0.1F, {u, v}};
    }

    TexturePtr upload(const QImage& image)
    {
        TexturePtr texture =
            PrivateUtil::createImageRes(_device, image.width(), image.height(), Usage::Dynamic, Format::R8G8B8A8_UNORM);
        const bool written = PrivateUtil::UpdateSubresource(*_context, texture, 0, 0, image.constBits(),
                                                            static_cast<int>(image.bytesPerLine()), 0, image.height());
        return written ? texture : nullptr;
    }

    QImage readBack()
    {
        TextureDesc desc = _first.targetResource()->desc();
        desc.usage = Usage::Staging;
        desc.renderTarget = false;
        const TexturePtr staging = _device->createTexture(desc);
        _context->copyResource(*staging, _first.targetResource());
        _context->flush();
        const std::optional<Mapped> mapped = staging->mapRead();
        if (!mapped)
            return {};
        QImage image = QImage(reinterpret_cast<const uchar*>(mapped->data), _size.width(), _size.height(),
                              static_cast<int>(mapped->rowPitch), QImage::Format_RGBA8888)
                           .copy();
        staging->unmapRead();
        return image;
    }

    static QImage overChequer(const QImage& picture)
    {
        QImage result(picture.size(), QImage::Format_RGB32);
        result.fill(QColor(150, 150, 150));
        QPainter painter(&result);
        for (int y = 0; y < result.height(); y += 8) {
            for (int x = y / 8 % 2 * 8; x < result.width(); x += 16)
                painter.fillRect(x, y, 8, 8, QColor(200, 200, 200));
        }
        painter.drawImage(0, 0, picture);
        return result;
    }

    QSize _size;
    DevicePtr _device;
    ContextPtr _context;
    TavloGraphicsRes _resources;
    TavloDrawDX11 _first;
    TavloDrawDX11 _second;
    TexturePtr _scene;
};

} // namespace

bool writePictureSheets(const QDir& folder, QSize size)
{
    PictureShow show(size);
    if (!show.isMade()) {
        std::fprintf(stderr, "no device to draw on\n");
        return false;
    }
    return show.writeImages(folder) && show.writeProcess(folder) && PictureShow(2 * size).writeFilters(folder);
}
