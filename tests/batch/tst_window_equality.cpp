// SPDX-License-Identifier: MIT
// plendra-batch writes what the window's "Save Image" writes: the window is
// driven offscreen (photo chosen, background chosen after it, a click on the
// backdrop, "Save Image") and the tool is run on the same photo, background
// and the photo pixel that click samples.
#include "mainwindow/dialog.h"
#include "state/globals.h"
#include "tests/batch/batchtooltest.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray bytesOf(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void clickItem(QListWidget* list, QListWidgetItem* item)
{
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualItemRect(item).center());
}

} // namespace

class TestWindowEquality : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_samples;
    QString m_photos;

    // "Save Image" of `photo` keyed against `background` by a click at
    // `click` in the preview; the file it wrote, in `output`.
    QString saveFromWindow(const QString& photo, const QString& background, QPoint click, const QString& output)
    {
        MyGlobal::appDir = m_samples;
        MyGlobal::outputDir = output;
        MyGlobal::xyClicked = QPoint(0, 0);
        widgettest::Window window(widgettest::WindowSetup::onTheGlobalsAsSet());
        if (!window.ok())
            return QString();
        const widgettest::WindowWidgets ui(*window.dialog);
        clickItem(ui->listWidget, new QListWidgetItem(photo, ui->listWidget));
        clickItem(ui->listWidget_Bk, new QListWidgetItem(background, ui->listWidget_Bk));
        QTest::mouseClick(ui->graphicsView->viewport(), Qt::LeftButton, {}, click);
        QTest::mouseClick(ui->Run, Qt::LeftButton);
        return output + QLatin1Char('/') + QFileInfo(photo).fileName();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_samples = m_dir.filePath(QStringLiteral("samples"));
        m_photos = m_dir.filePath(QStringLiteral("photos"));
        QVERIFY(testsupport::makeSampleFolder(m_samples));
        QVERIFY(QDir().mkpath(m_photos));
        // Showing the saved file on the desktop is not part of this test: a
        // stand-in opener that does nothing comes first on PATH.
        const QString bin = m_dir.filePath(QStringLiteral("bin"));
        QVERIFY(QDir().mkpath(bin));
        for (const char* name : {"xdg-open", "open"}) {
            QFile opener(bin + QLatin1Char('/') + QLatin1String(name));
            QVERIFY(opener.open(QIODevice::WriteOnly));
            opener.write("#!/bin/sh\nexit 0\n");
            opener.close();
            QVERIFY(opener.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
        qputenv("PATH", QFile::encodeName(bin) + ':' + qgetenv("PATH"));
    }

    void toolWritesWhatSaveImageWrites_data()
    {
        QTest::addColumn<QString>("photoName");
        QTest::addColumn<QImage>("photo");
        QTest::addColumn<QString>("backgroundName");
        QTest::addColumn<QImage>("background");
        QTest::addColumn<QPoint>("click");

        const QImage green = testsupport::studioShot(320, 240, QColor(40, 180, 60), 31);
        const QImage blue = testsupport::studioShot(300, 220, QColor(40, 70, 200), 32);
        const QImage portrait = testsupport::studioShot(180, 270, QColor(50, 190, 70), 33);
        const QImage tall = testsupport::backgroundPicture(150, 400, 34);
        const QImage wide = testsupport::backgroundPicture(500, 210, 35);
        const QPoint corner(20, 20);
        QTest::newRow("JPEG, tall background") << "shot.jpg" << green << "tall.png" << tall << corner;
        QTest::newRow("JPEG upper case, JPEG background") << "SHOT2.JPG" << green << "wide.jpg" << wide << QPoint(400, 30);
        QTest::newRow("PNG, blue backdrop") << "blue.png" << blue << "wide.png" << wide << QPoint(30, 330);
        QTest::newRow("portrait JPEG") << "portrait.jpg" << portrait << "wide.png" << wide << QPoint(15, 340);
        QTest::newRow("16-bit PNG") << "deep.png" << green.convertToFormat(QImage::Format_RGBX64) << "tall.png" << tall << corner;
        QTest::newRow("paletted PNG") << "palette.png" << green.convertToFormat(QImage::Format_Indexed8) << "wide.png" << wide
                                      << corner;
        QTest::newRow("TIFF") << "shot.tif" << green << "tall.png" << tall << corner;
        QTest::newRow("BMP") << "shot.bmp" << blue << "wide.jpg" << wide << corner;
    }

    void toolWritesWhatSaveImageWrites()
    {
        QFETCH(QString, photoName);
        QFETCH(QImage, photo);
        QFETCH(QString, backgroundName);
        QFETCH(QImage, background);
        QFETCH(QPoint, click);
        const QString photoPath = m_photos + QLatin1Char('/') + photoName;
        const QString backgroundPath = m_dir.filePath(backgroundName);
        QVERIFY(testsupport::writeImage(photo, photoPath));
        QVERIFY(testsupport::writeImage(background, backgroundPath));
        static int round = 0;
        const QString windowOut = m_dir.filePath(QStringLiteral("window-%1").arg(++round));
        const QString toolOut = m_dir.filePath(QStringLiteral("tool-") + photoName);
        QVERIFY(QDir().mkpath(windowOut));

        const QString saved = saveFromWindow(photoPath, backgroundPath, click, windowOut);
        QVERIFY(QFileInfo::exists(saved));

        // The photo pixel the click sampled: the view spans the whole photo.
        const QImage stored(photoPath);
        const QPoint pixel(stored.width() * click.x() / 421, stored.height() * click.y() / 351);
        const batchtest::ToolRun run = batchtest::runTool(
            {QStringLiteral("-b"), backgroundPath, QStringLiteral("-k"), QStringLiteral("%1,%2").arg(pixel.x()).arg(pixel.y()),
             QStringLiteral("-o"), toolOut, photoPath});
        QVERIFY2(run.exitCode == 0 && !run.crashed, run.standardError.constData());
        QVERIFY(!run.sanitizerReported());
        const QString written = toolOut + QLatin1Char('/') + photoName;

        const QImage fromWindow(saved);
        const QImage fromTool(written);
        QVERIFY(!fromTool.isNull());
        QCOMPARE(fromTool.size(), stored.size());
        QCOMPARE(fromTool.format(), fromWindow.format());
        QCOMPARE(fromTool, fromWindow);
        QCOMPARE(bytesOf(written), bytesOf(saved));
        // The click keyed something: the composite is not the photo.
        QVERIFY(testsupport::meanDifference(fromTool, stored) > 1.0);
    }
};

PLENDRA_TEST_MAIN(TestWindowEquality)
#include "tst_window_equality.moc"
