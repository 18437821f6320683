// SPDX-License-Identifier: MIT
// Every readable file of the hostile corpus as the foreground and as the
// background: chosen, keyed by presses on the preview, re-keyed by a change of
// background, and saved. Unreadable backgrounds give a null background, and
// with a key point set the size assertion, in a child process.
#include "state/globals.h"
#include "state/imagelimits.h"
#include "mainwindow/dialog.h"
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
    allowLargePhotos();
    widgettest::resetGlobals();
    MyGlobal::appDir = qEnvironmentVariable("PLENDRA_HOSTILE_SAMPLES");
    MyGlobal::outputDir = QDir::homePath() + QStringLiteral("/Documents/Plendra");
    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
    QVERIFY(dFixture.ok());
    Dialog& d = *dFixture.dialog;
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

class HostileKeyingTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_root;     // samples and corpus: the input files
    QTemporaryDir m_childTmp; // temporary folders of child processes
    QString m_samples;
    QList<HostileEntry> m_corpus;
    QMap<QString, QByteArray> m_inputs;
    testsupport::RecordingOpener m_opener;
    QString m_home;
    QString m_output;
    QMap<QString, QByteArray> m_homeAtStart;

    QString sample(const QString& name) const { return m_samples + QLatin1Char('/') + name; }

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

    // The window shown on the offscreen screen, so that list rows have places.
    static bool showWindow(Dialog& d)
    {
        d.show();
        return QTest::qWaitForWindowExposed(&d);
    }

    // Home entries added or changed since init(), besides `allowed`.
    QStringList unexpectedHomeChanges(const QStringList& allowed = {}) const
    {
        QStringList changed = testsupport::treeDifferences(m_homeAtStart, testsupport::snapshotTree(m_home));
        for (const QString& a : allowed)
            changed.removeAll(a);
        return changed;
    }

private slots:
    void initTestCase()
    {
        allowLargePhotos(); // as the program does at start
        m_home = QDir::homePath();
        QVERIFY(m_home.startsWith(QDir::tempPath()));
        QVERIFY(m_root.isValid());
        QVERIFY(m_childTmp.isValid());
        m_samples = m_root.path() + QStringLiteral("/samples");
        QVERIFY(testsupport::makeSampleFolder(m_samples));
        bool ok = false;
        m_corpus = testsupport::makeHostileCorpus(m_root.path() + QStringLiteral("/corpus"), &ok);
        QVERIFY(ok);
        QVERIFY(!testsupport::entriesOfKind(m_corpus, HostileKind::Image).isEmpty());
        m_inputs = testsupport::snapshotTree(m_root.path());
        QVERIFY(m_opener.isValid());
        m_opener.putFirstOnPath();
    }

    void init()
    {
        // An empty home holding the output folder that start-up makes.
        m_output = testsupport::emptyHomeWithOutputFolder(m_home);
        QVERIFY(!m_output.isEmpty());
        widgettest::resetGlobals();
        MyGlobal::appDir = m_samples;
        MyGlobal::outputDir = m_output;
        m_opener.forgetCalls();
        m_homeAtStart = testsupport::snapshotTree(m_home);
    }

    void cleanup()
    {
        // Input files are only ever read.
        QCOMPARE(testsupport::treeDifferences(m_inputs, testsupport::snapshotTree(m_root.path())), QStringList());
    }

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
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        QVERIFY(showWindow(d));
        const widgettest::WindowWidgets ui(d);
        QImage& foreground = DialogTestAccess::foreground(d);
        QImage& background = DialogTestAccess::background(d);
        const QImage stored(entry.path);
        QVERIFY(!stored.isNull());

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
            QCOMPARE(unexpectedHomeChanges(), QStringList());
            return;
        }
        QCOMPARE(unexpectedHomeChanges({QStringLiteral("Documents/Plendra/") + name}), QStringList());
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
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        QVERIFY(showWindow(d));
        const widgettest::WindowWidgets ui(d);
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
        QCOMPARE(unexpectedHomeChanges(), QStringList());
    }

    // Designed outcome: an unreadable background gets an item with an empty
    // icon; chosen without a key point it leaves a null background and the
    // preview as it was, nothing reported; "Save Image" then writes the
    // unkeyed photo as the only new file.
    void unreadableBackgroundWithoutKeyPoint_data() { addRows(unreadable()); }
    void unreadableBackgroundWithoutKeyPoint()
    {
        QFETCH(HostileEntry, entry);
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        QVERIFY(showWindow(d));
        const widgettest::WindowWidgets ui(d);
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
        QCOMPARE(unexpectedHomeChanges({QStringLiteral("Documents/Plendra/1green.JPG")}), QStringList());
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
        QTemporaryDir childTmp(m_childTmp.path() + QStringLiteral("/run-XXXXXX"));
        QVERIFY(childTmp.isValid());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PLENDRA_HOSTILE_SAMPLES"), m_samples);
        env.insert(QStringLiteral("PLENDRA_HOSTILE_ENTRY"), entry.path);
        env.insert(QStringLiteral("TMPDIR"), childTmp.path());

        const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("unreadable-background-after-key-point"), env);
        QVERIFY(run.started);
        QVERIFY2(run.standardOutput.contains("key point 20,20"), run.standardOutput.constData());
        QVERIFY2(!run.standardOutput.contains("survived"), run.standardOutput.constData());
        QVERIFY2(run.crashed, run.standardError.constData());
        const QString err = QString::fromLocal8Bit(run.standardError);
        QCOMPARE(err.count(QStringLiteral("failed assertion")), 1);
        QVERIFY2(err.endsWith(expected + QLatin1Char('\n')), qPrintable(err));
        QCOMPARE(sanitizerReports(run.standardError), QStringList());
        // The child's own home and temporary files: folders only, no file.
        const QMap<QString, QByteArray> left = testsupport::snapshotTree(childTmp.path());
        for (auto it = left.cbegin(); it != left.cend(); ++it)
            QVERIFY2(it.value() == "folder", qPrintable(it.key()));
        QCOMPARE(unexpectedHomeChanges(), QStringList());
        QCOMPARE(m_opener.calls().size(), 0);
    }
};

PLENDRA_TEST_MAIN(HostileKeyingTest)
#include "tst_hostile_keying.moc"
