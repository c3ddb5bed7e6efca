#include "drawing/SavedPicture.h"

#include <QDebug>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>
#include <QThreadPool>

namespace tavlo {
namespace {

/// Any thread: waits for the copy to arrive, not for the frame thread. The file is there whole or not at all.
void writePicture(graphics::Texture& staging, const QString& path, QSize size, bool bottomRowFirst)
{
    const auto mapped = staging.mapRead();
    if (!mapped) {
        qDebug() << "failed to save picture" << path;
        return;
    }
    const QImage rows(reinterpret_cast<const uchar*>(mapped->data), static_cast<int>(staging.desc().width),
                      static_cast<int>(staging.desc().height), static_cast<qsizetype>(mapped->rowPitch),
                      QImage::Format_RGBA8888_Premultiplied);
    const QImage picture = bottomRowFirst ? rows.mirrored() : rows.copy();
    const QImage wanted =
        size.isEmpty() ? picture : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    staging.unmapRead();
    QSaveFile file(path);
    const QByteArray format = QFileInfo(path).suffix().toLatin1();
    if (!file.open(QIODevice::WriteOnly) || !wanted.save(&file, format.isEmpty() ? "png" : format.constData()) ||
        !file.commit())
        qDebug() << "failed to save picture" << path << file.errorString();
}

} // namespace

void savePicture(graphics::Device& device, graphics::Context& context, const graphics::TexturePtr& texture,
                 const QString& path, QSize size, bool bottomRowFirst)
{
    graphics::TextureDesc desc = texture->desc();
    desc.usage = graphics::Usage::Staging;
    desc.renderTarget = false;
    const graphics::TexturePtr staging = device.createTexture(desc);
    if (!staging || !context.copyResource(*staging, texture)) {
        qDebug() << "failed to save picture" << path;
        return;
    }
    context.flush();
    QThreadPool::globalInstance()->start([=] { writePicture(*staging, path, size, bottomRowFirst); });
}

} // namespace tavlo
