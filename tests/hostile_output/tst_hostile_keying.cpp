// SPDX-License-Identifier: MIT
// Every readable file of the hostile corpus as the foreground and as the
// background: chosen, keyed by presses on the preview, re-keyed by a change of
// background, and saved. Unreadable backgrounds give a null background, and
// with a key point set the size assertion, in a child process.
#include "state/globals.h"
#include "state/imagelimits.h"
#include "mainwindow/dialog.h"
#include "tests/hostile_output/hostileoutputcase.h"
#include "tests/hostile_output/hostileoutputsupport.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/foldertree.h"
#include "tests/support/recordingopener.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <cstdlib>

using namespace hostileoutput;
using namespace widgettest;
using testsupport::HostileEntry;
using testsupport::HostileKind;

Q_DECLARE_METATYPE(testsupport::HostileEntry)

namespace {

const QString kSizeCondition =
    QStringLiteral("m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width()");
// A point on the backdrop of every generated studio shot.
const QPoint kBackdrop(20, 20);

// The preview pixmap as the window makes it from `image`.
QImage asPreview(const QImage& image) { return QPixmap::fromImage(image).toImage(); }

} // namespace

// A key point on the preview, then an unreadable background chosen in
// BACKGROUNDS: the re-key meets a null background and stops on the size check.
// Paths come from the parent through the environment.
PLENDRA_CHILD_SCENARIO("unreadable-background-after-key-point")
{
    const auto window = openChildWindow();
    QVERIFY(window->ok());
    Dialog& d = *window->dialog;
    if (!QTest::qWaitForWindowExposed(&d))
        std::fputs("window not exposed\n", stdout);
    pressPreview(d, kBackdrop);
    std::printf("key point %d,%d\n", MyGlobal::xyClicked.x(), MyGlobal::xyClicked.y());
    std::fflush(stdout);
    QListWidget* backgrounds = widgettest::WindowWidgets(d).listWidget_Bk;
    dropFile(backgrounds, qEnvironmentVariable("PLENDRA_HOSTILE_ENTRY"));
    clickItem(backgrounds, backgrounds->item(backgrounds->count() - 1));
    std::puts("survived the click");
}

class HostileKeyingTest : public HostileOutputTestCase
{
    Q_OBJECT

private:
    QList<HostileEntry> m_corpus;

    // The corpus, beside the samples.
    void addInputs() override
    {
        bool ok = false;
        m_corpus = testsupport::makeHostileCorpus(m_root.path() + QStringLiteral("/corpus"), &ok);
        QVERIFY(ok);
        QVERIFY(!testsupport::entriesOfKind(m_corpus, HostileKind::Image).isEmpty());
    }

    void addRows(const QList<HostileEntry>& entries)
    {
        QTest::addColumn<HostileEntry>("entry");
        for (const HostileEntry& e : entries)
            QTest::newRow(qPrintable(e.name)) << e;
    }

    QList<HostileEntry> unreadable() const
    {
        return testsupport::entriesOfKind(m_corpus, HostileKind::Unreadable)
            + testsupport::entriesOfKind(m_corpus, HostileKind::Folder);
    }

    static QSize viewSize(Dialog& d) { return widgettest::WindowWidgets(d).graphicsView->size(); }

private slots:
    // Designed outcome: the photo loads as stored; each press keys it against
    // the background (the composite matches the per-pixel oracle, in the
    // photo's own pixel format, a palette turned into 32-bit); a new background
    // re-keys at the key point, or without one only replaces the background;
    // "Save Image" writes the composite under the photo's name, in its format,
    // as the only new file, and runs the opener on the folder and on the file.
    void foregroundKeysAndSaves_data() { addRows(testsupport::entriesOfKind(m_corpus, HostileKind::Image)); }
    void foregroundKeysAndSaves()
    {
        QFETCH(HostileEntry, entry);
        const QImage stored(entry.path);
        QVERIFY(!stored.isNull());
        // Shown, so that list rows have places.
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        const auto [d, ui] = dFixture.parts();
        QImage& foreground = DialogTestAccess::foreground(d);
        QImage& background = DialogTestAccess::background(d);

        // Current through the rotation handler, as the watched folder makes a photo current.
        MyGlobal::CurSelection = entry.path;
        QVERIFY(QMetaObject::invokeMethod(&d, "on_Rotation_currentIndexChanged", Q_ARG(QString, QStringLiteral("0"))));
        QCOMPARE(foreground, stored);
        QCOMPARE(background.size(), stored.size());
        QCOMPARE(DialogTestAccess::preview(d).toImage(), asPreview(stored));

        // Current through a click on its FOREGROUNDS item.
        QListWidgetItem* item = d.AddFileToDisplay(entry.path);
        QVERIFY(widgettest::waitForThumbnails(&d));
        QVERIFY(!item->icon().isNull());
        clickItem(ui->listWidget, item);
        QCOMPARE(MyGlobal::CurSelection, entry.path);
        QCOMPARE(foreground, stored);
        const QImage bkgA = fittedBackground(sample(QStringLiteral("Bkg/a.jpg")), stored.size());
        QCOMPARE(background, bkgA);
        QCOMPARE(DialogTestAccess::preview(d).toImage(), asPreview(stored));

        // Presses at the corners, the centre and on the backdrop.
        for (const QPoint at : previewPressPoints(d)) {
            pressPreview(d, at);
            const QByteArray where = QByteArray::number(at.x()) + "," + QByteArray::number(at.y());
            const QImage expected = keyedComposite(entry.path, bkgA, at, viewSize(d));
            QVERIFY2(foreground.format() == expected.format(), where);
            QVERIFY2(foreground == expected, where);
            QVERIFY2(DialogTestAccess::preview(d).toImage() == asPreview(expected), where);
            QCOMPARE(MyGlobal::xyClicked, at); // a press at the origin counts as none
            const QPixmap shown = widgettest::shownPixmap(DialogTestAccess::scene(d));
            QVERIFY(!shown.isNull());
            QVERIFY(shown.width() <= MyGlobal::PrevSize.width() && shown.height() <= MyGlobal::PrevSize.height());
        }
        QCOMPARE(MyGlobal::xyClicked, kBackdrop);

        // Another background with the key point set: keyed again against it.
        clickItem(ui->listWidget_Bk, ui->listWidget_Bk->item(1));
        const QImage bkgB = fittedBackground(sample(QStringLiteral("Bkg/b.png")), stored.size());
        QCOMPARE(background, bkgB);
        QVERIFY(foreground == keyedComposite(entry.path, bkgB, kBackdrop, viewSize(d)));
        QVERIFY(DialogTestAccess::preview(d).toImage() == asPreview(foreground));

        // Without a key point: the background changes, the preview does not.
        clickItem(ui->listWidget, item);
        QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
        const QImage shownBefore = DialogTestAccess::preview(d).toImage();
        clickItem(ui->listWidget_Bk, ui->listWidget_Bk->item(0));
        QCOMPARE(background, bkgA);
        QCOMPARE(foreground, stored);
        QCOMPARE(DialogTestAccess::preview(d).toImage(), shownBefore);

        // "Save Image" with a keyed composite.
        pressPreview(d, kBackdrop);
        const QImage composite = DialogTestAccess::preview(d).toImage();
        QVERIFY(composite == asPreview(keyedComposite(entry.path, bkgA, kBackdrop, viewSize(d))));
        QTest::mouseClick(ui->Run, Qt::LeftButton);

        const QString name = QFileInfo(entry.path).fileName();
        const QString target = m_output + QLatin1Char('/') + name;
        const QByteArray format = formatForSuffix(name);
        const QList<QStringList> expectedCalls = {{m_output},
                                                  QProcess::splitCommand(testsupport::openerName() + QLatin1Char(' ') + target).mid(1)};
        QCOMPARE(m_opener.calls(), expectedCalls);
        QCOMPARE(ui->listWidget->currentRow(), 0);
        QVERIFY(ui->Run->isEnabled());

        if (!QImageWriter::supportedImageFormats().contains(format)) {
            // Qt cannot write this format: the save fails without a word.
            QCOMPARE(homeChanges(), QStringList());
            return;
        }
        QCOMPARE(homeChanges({QStringLiteral("Documents/Plendra/") + name}), QStringList());
        QImageReader reader(target);
        QCOMPARE(reader.format(), format);
        const QImage saved = reader.read();
        QVERIFY2(!saved.isNull(), qPrintable(reader.errorString()));
        QCOMPARE(saved.size(), stored.size());
        if (format == "jpeg")
            QVERIFY2(testsupport::meanDifference(saved, composite) < 4.0, qPrintable(QString::number(testsupport::meanDifference(saved, composite))));
        else
            QCOMPARE(saved.convertToFormat(QImage::Format_ARGB32), composite.convertToFormat(QImage::Format_ARGB32));
    }

    // Designed outcome: an odd but readable picture works as a background: it
    // is fitted to the photo, nothing shows until a key point is set, and the
    // composite then matches the per-pixel oracle, also when it is chosen
    // again with the key point set.
    void oddBackgroundKeys_data() { addRows(testsupport::entriesOfKind(m_corpus, HostileKind::Image)); }
    void oddBackgroundKeys()
    {
        QFETCH(HostileEntry, entry);
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        const auto [d, ui] = dFixture.parts();
        QImage& foreground = DialogTestAccess::foreground(d);
        const QString photo = sample(QStringLiteral("1green.JPG"));
        const QImage stored(photo);
        QListWidget* backgrounds = ui->listWidget_Bk;
        const int rowsBefore = backgrounds->count();
        dropFile(backgrounds, entry.path);
        QCOMPARE(backgrounds->count(), rowsBefore + 1);
        QListWidgetItem* item = backgrounds->item(rowsBefore);
        QCOMPARE(item->text(), entry.path);
        QVERIFY(widgettest::waitForThumbnails(&d));
        QVERIFY(!item->icon().isNull());

        const QImage shownBefore = DialogTestAccess::preview(d).toImage();
        clickItem(backgrounds, item);
        QCOMPARE(MyGlobal::CurSelectionBk, entry.path);
        const QImage fitted = fittedBackground(entry.path, stored.size());
        QCOMPARE(DialogTestAccess::background(d), fitted);
        QCOMPARE(DialogTestAccess::preview(d).toImage(), shownBefore);

        for (const QPoint at : previewPressPoints(d)) {
            pressPreview(d, at);
            const QByteArray where = QByteArray::number(at.x()) + "," + QByteArray::number(at.y());
            const QImage expected = keyedComposite(photo, fitted, at, viewSize(d));
            QVERIFY2(foreground == expected, where);
            QVERIFY2(DialogTestAccess::preview(d).toImage() == asPreview(expected), where);
        }
        // The backdrop press keyed something: the composite is not the photo.
        QVERIFY(foreground != stored);

        // Away and back again with the key point set: keyed against it anew.
        clickItem(backgrounds, backgrounds->item(0));
        QVERIFY(foreground == keyedComposite(photo, fittedBackground(sample(QStringLiteral("Bkg/a.jpg")), stored.size()),
                                             kBackdrop, viewSize(d)));
        clickItem(backgrounds, item);
        QCOMPARE(DialogTestAccess::background(d), fitted);
        QVERIFY(foreground == keyedComposite(photo, fitted, kBackdrop, viewSize(d)));
        QCOMPARE(homeChanges(), QStringList());
    }

    // Designed outcome: an unreadable background gets an item with an empty
    // icon; chosen without a key point it leaves a null background and the
    // preview as it was, nothing reported; "Save Image" then writes the
    // unkeyed photo as the only new file.
    void unreadableBackgroundWithoutKeyPoint_data() { addRows(unreadable()); }
    void unreadableBackgroundWithoutKeyPoint()
    {
        QFETCH(HostileEntry, entry);
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        const auto [d, ui] = dFixture.parts();
        QListWidget* backgrounds = ui->listWidget_Bk;
        const int rowsBefore = backgrounds->count();
        dropFile(backgrounds, entry.path);
        QCOMPARE(backgrounds->count(), rowsBefore + 1);
        QListWidgetItem* item = backgrounds->item(rowsBefore);
        QVERIFY(widgettest::waitForThumbnails(&d));
        QVERIFY(item->icon().isNull());

        const QImage shownBefore = DialogTestAccess::preview(d).toImage();
        clickItem(backgrounds, item);
        QCOMPARE(MyGlobal::CurSelectionBk, entry.path);
        QVERIFY(DialogTestAccess::background(d).isNull());
        QCOMPARE(DialogTestAccess::foreground(d), QImage(sample(QStringLiteral("1green.JPG"))));
        QCOMPARE(DialogTestAccess::preview(d).toImage(), shownBefore);

        QTest::mouseClick(ui->Run, Qt::LeftButton);
        const QString target = m_output + QStringLiteral("/1green.JPG");
        QCOMPARE(homeChanges({QStringLiteral("Documents/Plendra/1green.JPG")}), QStringList());
        const QImage saved(target);
        QCOMPARE(saved.size(), shownBefore.size());
        QVERIFY(testsupport::meanDifference(saved, shownBefore) < 4.0);
        QCOMPARE(m_opener.calls().size(), 2);
    }

    // Designed outcome: with a key point set, choosing an unreadable background
    // re-keys against a null background, and the program stops on the named
    // size assertion of the key click: that line alone on standard error (Qt's
    // warnings aside), an abort, no sanitizer report, nothing written.
    void unreadableBackgroundAfterKeyPointStops_data() { addRows(unreadable()); }
    void unreadableBackgroundAfterKeyPointStops()
    {
        QFETCH(HostileEntry, entry);
        const QString expected = assertionLine(QStringLiteral("mainwindow/dialog_keying.cpp"), kSizeCondition);
        QVERIFY(!expected.isEmpty());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PLENDRA_HOSTILE_ENTRY"), entry.path);
        QStringList filesLeft;
        const testsupport::ChildRun run = runChild(QStringLiteral("unreadable-background-after-key-point"), env, &filesLeft);
        checkStoppedOn(run, expected, filesLeft);
        QVERIFY2(run.standardOutput.contains("key point 20,20"), run.standardOutput.constData());
        QCOMPARE(homeChanges(), QStringList());
        QCOMPARE(m_opener.calls().size(), 0);
    }
};

PLENDRA_TEST_MAIN(HostileKeyingTest)
#include "tst_hostile_keying.moc"
