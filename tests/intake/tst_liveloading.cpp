// SPDX-License-Identifier: MIT
// The lists fill while the window stays live: items come at once in today's
// order, with today's texts, selection and current item; their icons arrive
// afterwards, pixel for pixel the ones the synchronous thumbnail gave. Keying
// and saving while icons load give the same composite, and closing the window
// mid-way ends cleanly.

#include "tests/fixture/windowfixture.h"
#include "tests/fixture/thumbnailwait.h"

#include "state/globals.h"
#include "intake/thumbnail.h"
#include "keying/pipeline.h"
#include "mainwindow/dialog.h"
#include "mainwindow/droplistwidget.h"
#include "intake/thumbnailloader.h"

#include <QFile>
#include <QListWidget>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

using namespace widgettest;

namespace {

// What a list shows: each item's icon as an image (null for an empty icon).
QList<QImage> shownIcons(const QListWidget* list, const QSize& size)
{
    QList<QImage> icons;
    for (int row = 0; row < list->count(); ++row) {
        const QIcon icon = list->item(row)->icon();
        icons << (icon.isNull() ? QImage() : icon.pixmap(size).toImage());
    }
    return icons;
}

// Today's icons for these files, made one by one on this thread.
QList<QImage> todaysIcons(const QStringList& paths, const QSize& size)
{
    QList<QImage> icons;
    for (const QString& path : paths) {
        const QIcon icon = thumbnailIcon(path, size);
        icons << (icon.isNull() ? QImage() : icon.pixmap(size).toImage());
    }
    return icons;
}

bool writeBroken(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write("no picture here") > 0;
}

enum class Types { AnyPhoto, LibraryOnly };

// Twenty photos in assorted formats and sizes, the eighth no picture at all.
// The library takes only PNG and JPEG files.
QStringList writeShoot(const QString& folder, const QString& stem, int width, int height, Types types = Types::AnyPhoto)
{
    static const char* const endings[] = {"jpg", "png", "JPG", "tif", "bmp"};
    const int kinds = types == Types::LibraryOnly ? 3 : 5;
    QStringList paths;
    for (int i = 0; i < 20; ++i) {
        const QString path = QStringLiteral("%1/%2%3.%4").arg(folder, stem).arg(i, 2, 10, QLatin1Char('0')).arg(QLatin1String(endings[i % kinds]));
        const QImage photo = testsupport::studioShot(width + 7 * i, height + 3 * i, QColor(40, 170 + i, 60), 100 + i);
        if (i == 7 ? !writeBroken(path) : !testsupport::writeImage(photo, path))
            return {};
        paths << path;
    }
    return paths;
}

// The "Bkg" library's order: by name, without regard to letter case.
QStringList inNameOrder(QStringList paths)
{
    std::sort(paths.begin(), paths.end(), [](const QString& a, const QString& b) {
        return QString::compare(a, b, Qt::CaseInsensitive) < 0;
    });
    return paths;
}

// A stand-in desktop opener first on PATH, so that "Save Image" opens nothing.
class QuietOpener
{
public:
    QuietOpener()
    {
        QFile script(m_dir.path() + QStringLiteral("/xdg-open"));
        m_ok = script.open(QIODevice::WriteOnly) && script.write("#!/bin/sh\nexit 0\n") > 0;
        script.close();
        m_ok = m_ok && script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_oldPath = qgetenv("PATH");
        qputenv("PATH", m_dir.path().toLocal8Bit() + ':' + m_oldPath);
    }
    ~QuietOpener() { qputenv("PATH", m_oldPath); }
    bool ok() const { return m_ok; }

private:
    QTemporaryDir m_dir;
    QByteArray m_oldPath;
    bool m_ok = false;
};

} // namespace

class TestLiveLoading : public widgettest::WindowTestCase
{
    Q_OBJECT

private slots:
    void startupWithTwentyBackgroundsListsThemAsToday()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {}));
        const QStringList library =
            writeShoot(dir.path() + QStringLiteral("/Bkg"), QStringLiteral("bg"), 300, 200, Types::LibraryOnly);
        QCOMPARE(library.size(), 20);
        MyGlobal::appDir = dir.path();
        const QStringList samples = {dir.path() + QStringLiteral("/1green.JPG"), dir.path() + QStringLiteral("/blue1.JPG")};
        const QStringList backgrounds = inNameOrder(library);

        Dialog d;
        const WindowWidgets ui(d);
        // Items, order, selection and current item are there before any icon.
        QVERIFY(d.pendingThumbnails() > 0);
        QCOMPARE(widgettest::itemTexts(ui->listWidget), samples);
        QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk), backgrounds);
        QCOMPARE(ui->listWidget->currentRow(), 0);
        QCOMPARE(selectedTexts(ui->listWidget), QStringList({samples.first()}));
        QCOMPARE(ui->listWidget_Bk->currentRow(), 0);
        QCOMPARE(selectedTexts(ui->listWidget_Bk), QStringList({backgrounds.first()}));
        QCOMPARE(MyGlobal::CurSelection, samples.first());
        QCOMPARE(MyGlobal::CurSelectionBk, backgrounds.first());
        QVERIFY(testsupport::samePixels(DialogTestAccess::background(d),
                           keying::fittedBackground(QImage(backgrounds.first()), QImage(samples.first()).size())));

        d.show();
        QVERIFY(widgettest::waitForThumbnails(&d));
        QCOMPARE(d.pendingThumbnails(), 0);
        QCOMPARE(shownIcons(ui->listWidget, kStartupThumbnailSize), todaysIcons(samples, kStartupThumbnailSize));
        const QList<QImage> expected = todaysIcons(backgrounds, kStartupThumbnailSize);
        QCOMPARE(shownIcons(ui->listWidget_Bk, kStartupThumbnailSize), expected);
        // The one that is no picture has its empty icon, and only that one.
        QCOMPARE(expected.count(QImage()), 1);
        QVERIFY(ui->listWidget_Bk->item(int(backgrounds.indexOf(library.at(7))))->icon().isNull());
    }

    void addOfTwentyListsThemAsToday_data()
    {
        QTest::addColumn<bool>("backgrounds");
        QTest::newRow("FOREGROUNDS") << false;
        QTest::newRow("BACKGROUNDS") << true;
    }

    void addOfTwentyListsThemAsToday()
    {
        QFETCH(bool, backgrounds);
        Window w;
        QVERIFY(w.ok());
        const WindowWidgets ui(*w.dialog);
        QListWidget* list = backgrounds ? ui->listWidget_Bk : ui->listWidget;
        QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
        QStringList shoot = writeShoot(w.dir.path(), QStringLiteral("shot"), 320, 240);
        QCOMPARE(shoot.size(), 20);
        const QStringList before = widgettest::itemTexts(list);
        const QList<QImage> iconsBefore = shownIcons(list, kAddedThumbnailSize);

        auto seen = std::make_shared<FileDialogSeen>();
        answerFileDialog(shoot, seen);
        clickButton(backgrounds ? ui->AddBackground : ui->AddForegGround);
        QVERIFY(seen->answered);

        QCOMPARE(widgettest::itemTexts(list), before + shoot);
        QCOMPARE(list->currentRow(), list->count() - 1);
        QCOMPARE(selectedTexts(list), QStringList({shoot.last()}));
        if (backgrounds) {
            QCOMPARE(MyGlobal::CurSelectionBk, shoot.last());
            QVERIFY(testsupport::samePixels(DialogTestAccess::background(*w.dialog),
                               keying::fittedBackground(QImage(shoot.last()), DialogTestAccess::foreground(*w.dialog).size())));
        } else {
            QCOMPARE(MyGlobal::CurSelection, shoot.last());
            QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(*w.dialog), QImage(shoot.last())));
        }

        QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
        QCOMPARE(shownIcons(list, kAddedThumbnailSize), iconsBefore + todaysIcons(shoot, kAddedThumbnailSize));
        QVERIFY(list->item(int(before.size() + shoot.indexOf(shoot.filter("shot07").first())))->icon().isNull());
        QCOMPARE(todaysIcons(shoot, kAddedThumbnailSize).count(QImage()), 1);
    }

    void keyingAndSavingWhileIconsLoadGiveTheSameComposite()
    {
        QuietOpener opener;
        QVERIFY(opener.ok());
        QTemporaryDir photos;
        const QStringList shoot = writeShoot(photos.path(), QStringLiteral("big"), 1800, 1200);
        QCOMPARE(shoot.size(), 20);
        QStringList readable = shoot;
        readable.removeAt(7);
        readable.move(0, 18); // a picture comes last, to be keyed and saved

        QList<QImage> saved;
        QList<QImage> previews;
        for (const bool waitFirst : {false, true}) {
            Window w;
            QVERIFY(w.ok());
            QTemporaryDir out;
            MyGlobal::outputDir = out.path();
            const WindowWidgets ui(*w.dialog);
            auto seen = std::make_shared<FileDialogSeen>();
            answerFileDialog(readable, seen);
            clickButton(ui->AddForegGround);
            QVERIFY(seen->answered);
            if (waitFirst) {
                QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
            } else {
                // Some icons in, the others being made while the user works.
                QTRY_VERIFY_WITH_TIMEOUT(ui->listWidget->pendingThumbnails() < readable.size(), 60000);
                QVERIFY2(w.dialog->pendingThumbnails() > 0, "the icons were all there before the click");
            }
            pressPreview(*w.dialog, 30, 30);
            QVERIFY(MyGlobal::xyClicked != QPoint(0, 0));
            if (!waitFirst)
                QVERIFY2(w.dialog->pendingThumbnails() > 0, "the icons were all there before the save");
            clickButton(ui->Run);
            const QString target = out.path() + QLatin1Char('/') + QFileInfo(readable.last()).fileName();
            QVERIFY(QFile::exists(target));
            saved << QImage(target);
            previews << DialogTestAccess::preview(*w.dialog).toImage();
            QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
        }
        QVERIFY(!saved.first().isNull());
        QCOMPARE(saved.first(), saved.last());
        QCOMPARE(previews.first(), previews.last());
        // The click keyed something: the composite is not the photo as shot.
        QVERIFY(!testsupport::samePixels(previews.first(), QImage(readable.last())));
    }

    void closingTheWindowWhileIconsLoadEndsCleanly_data()
    {
        QTest::addColumn<int>("filledBeforeClosing");
        QTest::newRow("before any work started") << 0;
        QTest::newRow("with the first icons in") << 2;
    }

    void closingTheWindowWhileIconsLoadEndsCleanly()
    {
        QFETCH(int, filledBeforeClosing);
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {}));
        QCOMPARE(writeShoot(dir.path() + QStringLiteral("/Bkg"), QStringLiteral("bg"), 1800, 1200, Types::LibraryOnly).size(), 20);
        MyGlobal::appDir = dir.path();

        auto* d = new Dialog;
        const int toMake = d->pendingThumbnails();
        QCOMPARE(toMake, 19 + 1); // the library but its first, and the second sample
        if (filledBeforeClosing > 0) {
            d->show();
            QTRY_VERIFY_WITH_TIMEOUT(d->pendingThumbnails() <= toMake - filledBeforeClosing, 60000);
        }
        QVERIFY(d->pendingThumbnails() > 0);
        d->close();
        delete d;
        // Deliveries still queued for the gone lists are dropped with them;
        // the event loop runs over them without touching a freed item.
        QTest::qWait(300);
        QVERIFY(ThumbnailLoader::pool().waitForDone(60000));
    }
};

PLENDRA_TEST_MAIN(TestLiveLoading)
#include "tst_liveloading.moc"
