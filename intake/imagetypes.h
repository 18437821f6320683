// SPDX-License-Identifier: MIT
#pragma once

// The image types Plendra takes in, in the three forms its entry points need.
// This is the only place they are spelt out.

#include <QString>
#include <QStringList>

// Filter of the "Add" file dialogs of both lists (passed through tr()).
inline constexpr char kImageFileDialogFilter[] = "Images (*.jpeg *.jpg *.tiff *.tif *.bmp *.png *.xpm)";

// Endings of dropped paths, tried in this order on the lower-cased path. A bare
// ending test: no dot is required and folders are not told apart from files.
inline const QStringList kDroppedImageEndings = {
    QStringLiteral("jpg"), QStringLiteral("jpeg"), QStringLiteral("bmp"), QStringLiteral("png"),
    QStringLiteral("tiff"), QStringLiteral("tif"), QStringLiteral("xpm"),
};

// Name filters of the watched folder's listings.
inline const QStringList kWatchedFolderNameFilters = {
    QStringLiteral("*.jpeg"), QStringLiteral("*.jpg"), QStringLiteral("*.tiff"), QStringLiteral("*.tif"),
    QStringLiteral("*.bmp"), QStringLiteral("*.png"), QStringLiteral("*.xpm"),
};

// Name filters of the "Bkg" folder beside the bundle: only PNG and JPEG
// pictures, whatever the letter case, are taken from it.
inline const QStringList kBackgroundLibraryNameFilters = {
    QStringLiteral("*.PNG"), QStringLiteral("*.JPG"), QStringLiteral("*.png"), QStringLiteral("*.jpg"),
};

// True when a dropped path counts as an image.
inline bool hasDroppedImageEnding(const QString& path)
{
    const QString lower = path.toLower();
    for (const QString& ending : kDroppedImageEndings) {
        if (lower.endsWith(ending, Qt::CaseSensitive))
            return true;
    }
    return false;
}
