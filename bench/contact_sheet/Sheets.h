#pragma once

#include <QDir>
#include <QSize>

/// Pages of pictures for a person to look at, written as PNG into the folder. Cells have that size, pixels. False, and
/// the reason on the error output, when a page could not be made.

/// all.png: every transition at the middle; FAMILY.png: one row for each kind, from the first frame to the last.
bool writeTransitionSheets(const QDir& folder, QSize size);

/// images.png: every image slot of the graphics store; process.png: a picture under every part of the picture process;
/// filters.png: a photograph under every filter, in cells of twice the size.
bool writePictureSheets(const QDir& folder, QSize size);

/// multiview.png: the canvas of an engine with eight sources, in the middle of a take. In its own size.
bool writeMultiViewSheet(const QDir& folder);

/// scene.png: what the scene graph draws, with a label in each text style. In its own size.
bool writeSceneSheet(const QDir& folder);
