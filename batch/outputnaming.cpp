// SPDX-License-Identifier: MIT
#include "batch/outputnaming.h"

#include "output/savetarget.h"

#include <QDir>
#include <QFileInfo>

namespace batch {

namespace {

QByteArray sameFormatName(QByteArray format)
{
    format = format.toLower();
    if (format == "jpeg")
        return "jpg";
    if (format == "tiff")
        return "tif";
    return format;
}

// The file's path with every link and ".." resolved, also when the file
// itself does not exist yet.
QString resolvedPath(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.canonicalFilePath();
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? info.absoluteFilePath() : folder + QLatin1Char('/') + info.fileName();
}

} // namespace

QString outputPathFor(const QString& outputFolder, const QString& photoPath, const QByteArray& format)
{
    const QString target = saveTarget(outputFolder, photoPath);
    const QFileInfo photo(photoPath);
    if (format.isEmpty() || sameFormatName(format) == sameFormatName(photo.suffix().toLatin1()))
        return target;
    return outputFolder + QLatin1Char('/') + photo.completeBaseName() + QLatin1Char('.') + QString::fromLatin1(format);
}

QStringList outputPathsFor(const QString& outputFolder, const QString& photoPath, const QByteArray& format,
                           const QStringList& backgroundNames)
{
    const QString single = outputPathFor(outputFolder, photoPath, format);
    if (backgroundNames.size() <= 1)
        return {single};
    const QString suffix = QFileInfo(single).suffix();
    const QString base = outputFolder + QLatin1Char('/') + QFileInfo(photoPath).completeBaseName() + QLatin1Char('_');
    QStringList paths;
    for (const QString& background : backgroundNames)
        paths << base + background + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
    return paths;
}

bool wouldReplacePhoto(const QString& outputPath, const QString& photoPath)
{
    return resolvedPath(outputPath) == resolvedPath(photoPath);
}

bool sameFolder(const QString& a, const QString& b)
{
    const QString ca = QFileInfo(a).canonicalFilePath();
    return !ca.isEmpty() && ca == QFileInfo(b).canonicalFilePath();
}

} // namespace batch
