// SPDX-License-Identifier: MIT
#include "tests/hostile_output/hostileoutputsupport.h"

#include "mainwindow/dialog.h"
#include "tests/keying/keyingoracle.h"
#include "tests/support/testsupport.h"
#include "ui_dialog.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QMimeData>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>

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

void clickItem(QListWidget* list, QListWidgetItem* item)
{
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualItemRect(item).center());
}

void dropFile(QListWidget* list, const QString& path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    const QPointF at = QRectF(list->viewport()->rect()).center();
    QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &enter);
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &drop);
}

void pressPreview(Dialog& dialog, QPoint at)
{
    // QTest takes a press at the origin to mean the centre: send it as is.
    testsupport::pressAt(DialogTestAccess::ui(dialog)->graphicsView->viewport(), Qt::LeftButton, at);
}

QSize previewViewportSize(Dialog& dialog)
{
    return DialogTestAccess::ui(dialog)->graphicsView->viewport()->size();
}

QList<QPoint> previewPressPoints(Dialog& dialog)
{
    const QSize v = previewViewportSize(dialog);
    return {QPoint(0, 0), QPoint(v.width() - 1, 0), QPoint(0, v.height() - 1), QPoint(v.width() - 1, v.height() - 1),
            QPoint(v.width() / 2, v.height() / 2), QPoint(20, 20)};
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
    QFile source(QStringLiteral(PLENDRA_SOURCE_DIR "/") + sourceFile);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    const QString call = QStringLiteral("PLENDRA_ASSERT(\"dialog\", ") + condition + QStringLiteral(");");
    int number = 0;
    while (!source.atEnd()) {
        ++number;
        if (QString::fromUtf8(source.readLine()).contains(call))
            return QStringLiteral("dialog:%1: failed assertion `%2'").arg(number).arg(condition);
    }
    return QString();
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
