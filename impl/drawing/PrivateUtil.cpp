#include "drawing/PrivateUtil.h"

#include <QDebug>
#include <QImage>

#include <algorithm>
#include <cstring>

namespace PrivateUtil {

using namespace tavlo::graphics;

namespace {

constexpr quint32 formatCount = 188;

/// What the log calls the two uses of a format; empty when it has neither.
QString processorUse(FormatSupport support)
{
    const bool input = supports(support, FormatSupport::ShaderLoad);
    const bool output = supports(support, FormatSupport::RenderTarget);
    return input && output ? QStringLiteral("input/output")
           : input         ? QStringLiteral("input")
           : output        ? QStringLiteral("output")
                           : QString();
}

void copyRows(const Mapped& mapped, const TextureDesc& desc, int x, int y, const quint8* data, int pitch, int rowStart,
              int rowCount)
{
    const auto texelBytes = static_cast<int>(formatBytes(desc.format));
    const int bytes = std::min(pitch, (static_cast<int>(desc.width) - x) * texelBytes);
    const int rows = std::min(rowCount, static_cast<int>(formatRows(desc.format, desc.height)) - y);
    for (int row = 0; row < rows; ++row) {
        std::byte* const target = mapped.data + static_cast<size_t>(y + row) * mapped.rowPitch + x * texelBytes;
        std::memcpy(target, data + static_cast<size_t>(rowStart + row) * static_cast<size_t>(pitch),
                    static_cast<size_t>(bytes));
    }
}

} // namespace

TexturePtr createImageRes(const DevicePtr& device, int width, int height, Usage usage, Format format)
{
    TextureDesc desc;
    desc.width = static_cast<quint32>(std::max(0, width));
    desc.height = static_cast<quint32>(std::max(0, height));
    desc.format = format;
    desc.usage = usage;
    TexturePtr texture = device ? device->createTexture(desc) : nullptr;
    if (!texture) {
        qDebug().nospace() << "failed to create texture2d hr: " << -1 << " w:" << width << " h:" << height
                           << " U:" << static_cast<int>(usage) << " msg:" << lastD3DMessage(device);
    }
    return texture;
}

TexturePtr loadImageRes(const DevicePtr& device, Context& context, const QString& path, int width, int height)
{
    QImage image(path);
    if (!image.isNull() && width > 0 && height > 0)
        image = image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    image = image.convertToFormat(QImage::Format_RGBA8888);
    TexturePtr texture;
    if (!image.isNull())
        texture = createImageRes(device, image.width(), image.height(), Usage::Dynamic, Format::R8G8B8A8_UNORM);
    if (!texture || !UpdateSubresource(context, texture, 0, 0, image.constBits(),
                                       static_cast<int>(image.bytesPerLine()), 0, image.height())) {
        qDebug() << "failed to load image : " << path;
        return nullptr;
    }
    return texture;
}

TexturePtr createCurveRes(const DevicePtr& device, Context& context, const quint8* data, int width, int height)
{
    TexturePtr texture = createImageRes(device, width, height, Usage::Dynamic, Format::R8G8B8A8_UNORM);
    const bool written = texture && UpdateSubresource(context, texture, 0, 0, data, width * 4, 0, height);
    return written ? texture : nullptr;
}

bool UpdateSubresource(Context& context, const TexturePtr& texture, int x, int y, const quint8* data, int pitch,
                       int rowStart, int rowCount)
{
    if (!texture || !data || x < 0 || y < 0 || pitch <= 0 || rowStart < 0 || rowCount < 0)
        return false;
    const TextureDesc& desc = texture->desc();
    if (static_cast<quint32>(x) > desc.width || static_cast<quint32>(y) > formatRows(desc.format, desc.height))
        return false;
    if (desc.usage != Usage::Dynamic) {
        const quint32 texels = static_cast<quint32>(pitch) / formatBytes(desc.format);
        const Box box{static_cast<quint32>(x), static_cast<quint32>(y),
                      std::min(texels, desc.width - static_cast<quint32>(x)), static_cast<quint32>(rowCount)};
        return context.updateSubresource(*texture, box,
                                         data + static_cast<size_t>(rowStart) * static_cast<size_t>(pitch),
                                         static_cast<quint32>(pitch));
    }
    const std::optional<Mapped> mapped = context.map(*texture, MapMode::WriteDiscard);
    if (!mapped) {
        qDebug() << "failed to Map";
        return false;
    }
    copyRows(*mapped, desc, x, y, data, pitch, rowStart, rowCount);
    context.unmap(texture);
    return true;
}

QRectF fitRect(QSizeF target, QSizeF source, double* scaleOut)
{
    const double scale = std::min(target.width() / source.width(), target.height() / source.height());
    if (scaleOut)
        *scaleOut = scale;
    const QSizeF size = source * scale;
    return {QPointF((target.width() - size.width()) / 2.0, (target.height() - size.height()) / 2.0), size};
}

QString lastD3DMessage(const DevicePtr& device)
{
    return device ? QString::fromStdString(device->lastMessage()) : QStringLiteral("NULL ID3D11Device");
}

void reportProcessorFormats(const DevicePtr& device)
{
    if (!device)
        return;
    const auto* const rule = "======================================";
    qDebug() << rule;
    qDebug() << "report d3d11 processor support fomrat:";
    for (quint32 number = 0; number < formatCount; ++number) {
        const Format format = formatFromNumber(number);
        const QString use = format == Format::UNKNOWN ? QString() : processorUse(device->formatSupport(format));
        if (use.isEmpty())
            continue;
        const std::string_view name = formatName(format);
        const QString shown =
            name.empty() ? QStringLiteral("(%1)").arg(number)
                         : QStringLiteral("DXGI_FORMAT_") + QLatin1String(name.data(), static_cast<int>(name.size()));
        qDebug().noquote() << QStringLiteral("processor format %1 is supported for %2").arg(shown, use);
    }
    qDebug() << rule;
}

} // namespace PrivateUtil
