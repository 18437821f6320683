// SPDX-License-Identifier: MIT
#include "tests/hostile_output/hostileoutputsupport.h"

#include "tests/keying/keyingoracle.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace hostileoutput {

QImage keyedComposite(const QString& photoPath, const QImage& background, QPoint at, QSize viewSize)
{
    QImage photo(photoPath);
    if (photo.format() == QImage::Format_Indexed8 || photo.format() == QImage::Format_Mono
        || photo.format() == QImage::Format_MonoLSB)
        photo = photo.convertToFormat(photo.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (photo.isNull())
        return photo;
    const QRgb key = photo.pixel(photo.width() * at.x() / viewSize.width(), photo.height() * at.y() / viewSize.height());
    oracle::maskOut(photo, background, key);
    return photo;
}

QImage fittedBackground(const QString& backgroundPath, QSize size)
{
    return QImage(backgroundPath).scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

QByteArray formatForSuffix(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QStringLiteral("jpg") || suffix == QStringLiteral("jpeg"))
        return "jpeg";
    if (suffix == QStringLiteral("tif") || suffix == QStringLiteral("tiff"))
        return "tiff";
    return suffix.toLatin1();
}

QString assertionLine(const QString& sourceFile, const QString& condition)
{
    const int line = testsupport::sourceLineOf(sourceFile, QStringLiteral("PLENDRA_ASSERT(\"dialog\", ") + condition + QStringLiteral(");"));
    return line > 0 ? QStringLiteral("dialog:%1: failed assertion `%2'").arg(line).arg(condition) : QString();
}

QStringList sanitizerReports(const QByteArray& standardError)
{
    static const QRegularExpression finding(
        QStringLiteral("Sanitizer|runtime error:|==\\d+==ERROR|SUMMARY: "));
    QStringList found;
    const QStringList lines = QString::fromLocal8Bit(standardError).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (finding.match(line).hasMatch())
            found << line;
    }
    return found;
}

} // namespace hostileoutput
