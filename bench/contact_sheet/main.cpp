// Draws what drawing can do, for a person to look at:   tavlo-contact-sheet FOLDER [WIDTH]

#include "Sheets.h"

#include <QGuiApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "tavlo-contact-sheet FOLDER [WIDTH]\n");
        return 2;
    }
    const int width = argc > 2 ? std::max(QString::fromLocal8Bit(argv[2]).toInt(), 32) : 160;
    const QSize cell(width, width * 9 / 16);
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.mkpath(QStringLiteral(".")))
        return 1;
    const std::array written{writeMultiViewSheet(folder), writeSceneSheet(folder), writePictureSheets(folder, cell),
                             writeTransitionSheets(folder, cell)};
    return std::ranges::all_of(written, std::identity{}) ? 0 : 1;
}
