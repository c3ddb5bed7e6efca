#pragma once

#include <QList>
#include <QString>

namespace tavlo {

/// A font of the system: the name under which people choose it, and its file.
struct FontFile
{
    QString name; ///< the full name; a collection has one more entry that joins all its names by " & "
    QString path;
};

/// The scalable fonts of the system, in order of their names. Asks the system anew. Any thread.
QList<FontFile> systemFonts();

/// The same of the fonts in a folder and below it. Any thread.
QList<FontFile> folderFonts(const QString& folder);

/// The file for a font's name. In order: the name itself when it is a file; the first font of that name; the font
/// "Microsoft Sans Serif"; the first font. With no font at all it logs "no font ??" and gives an empty text.
QString findFont(const QList<FontFile>& fonts, const QString& name);

} // namespace tavlo
