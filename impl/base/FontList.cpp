#include "base/FontList.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QStringList>

#include <algorithm>
#include <fontconfig/fontconfig.h>
#include <memory>

namespace tavlo {

namespace {

struct FontFace
{
    int index; ///< within its file
    QString name;
};

using FacesByFile = QMap<QString, QList<FontFace>>;

QString textOf(FcPattern* font, const char* property)
{
    FcChar8* text = nullptr;
    if (FcPatternGetString(font, property, 0, &text) != FcResultMatch)
        return {};
    return QString::fromUtf8(reinterpret_cast<const char*>(text));
}

FacesByFile facesOf(const FcFontSet* fonts)
{
    FacesByFile files;
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        const QString name = textOf(fonts->fonts[i], FC_FULLNAME);
        const QString path = textOf(fonts->fonts[i], FC_FILE);
        int index = 0;
        FcPatternGetInteger(fonts->fonts[i], FC_INDEX, 0, &index);
        if (!name.isEmpty() && !path.isEmpty())
            files[path].append({index, name});
    }
    return files;
}

FacesByFile systemFaces()
{
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> all(FcPatternCreate(), &FcPatternDestroy);
    FcPatternAddBool(all.get(), FC_SCALABLE, FcTrue);
    const std::unique_ptr<FcObjectSet, decltype(&FcObjectSetDestroy)> wanted(
        FcObjectSetBuild(FC_FULLNAME, FC_FILE, FC_INDEX, nullptr), &FcObjectSetDestroy);
    const std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)> fonts(FcFontList(nullptr, all.get(), wanted.get()),
                                                                        &FcFontSetDestroy);
    return facesOf(fonts.get());
}

FacesByFile folderFaces(const QString& folder)
{
    const std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> config(FcConfigCreate(), &FcConfigDestroy);
    const QByteArray path = QFile::encodeName(folder);
    if (!FcConfigAppFontAddDir(config.get(), reinterpret_cast<const FcChar8*>(path.constData())))
        return {};
    return facesOf(FcConfigGetFonts(config.get(), FcSetApplication)); // the configuration's own
}

QList<FontFile> namesOf(FacesByFile files)
{
    QList<FontFile> list;
    for (auto file = files.begin(); file != files.end(); ++file) {
        std::ranges::sort(*file, {}, &FontFace::index);
        QStringList names;
        for (const FontFace& face : *file) {
            if (!names.contains(face.name))
                names.append(face.name);
        }
        for (const QString& name : names)
            list.append({name, file.key()});
        if (names.size() > 1)
            list.append({names.join(QStringLiteral(" & ")), file.key()});
    }
    std::ranges::stable_sort(list, {}, &FontFile::name);
    return list;
}

} // namespace

QList<FontFile> systemFonts() { return namesOf(systemFaces()); }

QList<FontFile> folderFonts(const QString& folder) { return namesOf(folderFaces(folder)); }

QString findFont(const QList<FontFile>& fonts, const QString& name)
{
    if (QFileInfo(name).isFile())
        return name;
    if (fonts.isEmpty()) {
        qDebug() << "no font ??";
        return {};
    }
    for (const QString& wanted : {name, QStringLiteral("Microsoft Sans Serif")}) {
        const auto found = std::ranges::find(fonts, wanted, &FontFile::name);
        if (found != fonts.end())
            return found->path;
    }
    return fonts.first().path;
}

} // namespace tavlo
