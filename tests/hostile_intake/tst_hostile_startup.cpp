// SPDX-License-Identifier: MIT
// Hostile files where the window looks at start: the two sample photos beside
// the bundle and the "Bkg" folder.

#include "tests/hostile_intake/hostileintake.h"
#include "tests/fixture/windowfixture.h"

#include "state/globals.h"
#include "mainwindow/dialog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QTest>

using namespace hostiletest;
using namespace widgettest;
using testsupport::HostileKind;

namespace {

// Takes the backgrounds out of the case's sample folder, leaving "Bkg" empty.
bool emptyBackgroundFolder(const HostileCase& c)
{
    QDir bkg(c.appDir() + QStringLiteral("/Bkg"));
    return bkg.removeRecursively() && QDir().mkpath(bkg.path());
}

bool endsAsBackground(const QString& name)
{
    return name.endsWith(QLatin1String(".png"), Qt::CaseInsensitive) || name.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive);
}

} // namespace

// A first sample that is no picture: the window's first preview refresh stops it.
PLENDRA_CHILD_SCENARIO("hostileFirstSample")
{
    auto window = openChildWindow();
    childReport(QStringLiteral("constructor returned"));
}

// The window opens on a good first sample; choosing the second, which is no
// picture, stops it at the refresh.
PLENDRA_CHILD_SCENARIO("clickHostileSecondSample")
{
    auto window = openChildWindow();
    if (!window)
        return;
    widgettest::clickRow(widgettest::WindowWidgets(*window).listWidget, 1);
    childReport(QStringLiteral("click returned"));
}

class TestHostileStartup : public HostileIntakeTestCase
{
    Q_OBJECT

private slots:
    void hostileFirstSample_data() { addCorpusRows(); }
    void hostileFirstSample();
    void hostileSecondSampleThenChosen_data() { addCorpusRows(); }
    void hostileSecondSampleThenChosen();
    void bkgHoldingTheWholeCorpus();
    void hostileFirstBackgroundThenChosen_data() { addCorpusRows(); }
    void hostileFirstBackgroundThenChosen();
    void missingBkgFolder();
};

// Designed outcome: a readable first sample, however odd, opens the window
// showing it, with the first background fitted to it. Anything else leaves
// m_foreground null, and the first preview refresh (the rotation handler run
// while the window is built) stops on "!pix.isNull()".
void TestHostileStartup::hostileFirstSample()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString first = c.appDir() + QStringLiteral("/1green.JPG");
    const QString second = c.appDir() + QStringLiteral("/blue1.JPG");
    QVERIFY(QFile::remove(first));
    QVERIFY(placeEntry(entry, first));
    c.takeSnapshots();

    if (entry.kind == HostileKind::Image) {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        const widgettest::WindowWidgets ui(*window);
        QCOMPARE(itemTexts(ui->listWidget), QStringList({first, second}));
        QVERIFY(hasThumbnail(ui->listWidget, 0));
        QCOMPARE(ui->listWidget->currentRow(), 0);
        QCOMPARE(MyGlobal::CurSelection, first);
        const QImage photo(first);
        QVERIFY(!photo.isNull());
        checkPhotoShown(*window, photo);
        QVERIFY(!widgettest::shownPixmap(DialogTestAccess::scene(*window)).isNull());
        QCOMPARE(MyGlobal::CurSelectionBk, c.appDir() + QStringLiteral("/Bkg/a.jpg"));
        QVERIFY(testsupport::samePixels(DialogTestAccess::background(*window),
                                       fittedTo(QImage(c.appDir() + QStringLiteral("/Bkg/a.jpg")), photo.size())));
    } else {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("hostileFirstSample"));
        checkStoppedAtRefresh(run, {});
    }
}

// Designed outcome: the second sample never stops the start: it is listed
// (with an empty icon when it is no picture) and the first is shown. Choosing
// it shows a readable one; any other stops the refresh on "!pix.isNull()"
// (the size check passes: the background is fitted to the null photo and is
// null too).
void TestHostileStartup::hostileSecondSampleThenChosen()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString first = c.appDir() + QStringLiteral("/1green.JPG");
    const QString second = c.appDir() + QStringLiteral("/blue1.JPG");
    QVERIFY(QFile::remove(second));
    QVERIFY(placeEntry(entry, second));
    c.takeSnapshots();

    {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        const widgettest::WindowWidgets ui(*window);
        QCOMPARE(itemTexts(ui->listWidget), QStringList({first, second}));
        QCOMPARE(hasThumbnail(ui->listWidget, 1), entry.kind == HostileKind::Image);
        QCOMPARE(MyGlobal::CurSelection, first);
        QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(*window), QImage(first)));

        if (entry.kind == HostileKind::Image) {
            widgettest::clickRow(ui->listWidget, 1);
            QCOMPARE(widgettest::selectedTexts(ui->listWidget), QStringList({second}));
            checkPhotoChosen(*window, second);
        }
    }
    if (entry.kind != HostileKind::Image) {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("clickHostileSecondSample"));
        checkStoppedAtRefresh(run, {"window open"});
    }
}

// Designed outcome: "Bkg" lists every entry whose name ends in ".png" or
// ".jpg" in any letter case (the folder x.jpg included: all entries count,
// not only files), once each, in name order ignoring case; other endings and
// hidden files are not listed. Entries that are no picture get an empty icon.
// The first listed becomes the background, fitted to the first sample.
void TestHostileStartup::bkgHoldingTheWholeCorpus()
{
    HostileCase& c = hostileCase();
    QVERIFY(emptyBackgroundFolder(c));
    const QString bkg = c.appDir() + QStringLiteral("/Bkg");
    QMap<QString, bool> readable; // listed name -> has a picture
    for (const testsupport::HostileEntry& entry : c.corpus()) {
        const QString name = QFileInfo(entry.path).fileName();
        QVERIFY(placeEntry(entry, bkg + QLatin1Char('/') + name));
        if (endsAsBackground(name))
            readable.insert(name, entry.kind == HostileKind::Image);
    }
    // Ones it must not list beside one more it must.
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(40, 30, 7), bkg + QStringLiteral("/UPPER.JPG")));
    readable.insert(QStringLiteral("UPPER.JPG"), true);
    for (const char* name : {"skip.jpeg", "skip.gif", ".hidden.png", "skip.JPG.txt"})
        QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(40, 30, 8), bkg + QLatin1Char('/') + QLatin1String(name)));
    QVERIFY(readable.contains(QStringLiteral("x.jpg")));
    QVERIFY(!readable.contains(QStringLiteral("album_png")));
    QStringList expectedNames = readable.keys();
    std::sort(expectedNames.begin(), expectedNames.end(),
              [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    QStringList expected;
    for (const QString& name : std::as_const(expectedNames))
        expected << bkg + QLatin1Char('/') + name;
    c.takeSnapshots();

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const widgettest::WindowWidgets ui(*window);
    QCOMPARE(itemTexts(ui->listWidget_Bk), expected);
    for (int row = 0; row < expectedNames.size(); ++row)
        QVERIFY2(hasThumbnail(ui->listWidget_Bk, row) == readable.value(expectedNames.at(row)), qPrintable(expectedNames.at(row)));
    QCOMPARE(ui->listWidget_Bk->currentRow(), 0);
    QCOMPARE(MyGlobal::CurSelectionBk, expected.first());
    const QImage photo(c.appDir() + QStringLiteral("/1green.JPG"));
    QVERIFY(testsupport::samePixels(DialogTestAccess::background(*window), fittedTo(QImage(expected.first()), photo.size())));
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(*window), photo));
}

// Designed outcome: a hostile picture alone in "Bkg" (under a .png or .jpg
// name) is listed; the window opens and shows the first sample; the
// background is the picture fitted to it, or null when it is no picture,
// without any message. Choosing it with no key point set changes nothing
// shown: the preview is not redrawn and the background is loaded again as
// before.
void TestHostileStartup::hostileFirstBackgroundThenChosen()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    QVERIFY(emptyBackgroundFolder(c));
    QString name = QFileInfo(entry.path).fileName();
    if (!endsAsBackground(name))
        name += QStringLiteral(".png");
    const QString path = c.appDir() + QStringLiteral("/Bkg/") + name;
    QVERIFY(placeEntry(entry, path));
    c.takeSnapshots();

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
    const QImage photo(c.appDir() + QStringLiteral("/1green.JPG"));
    const bool picture = entry.kind == HostileKind::Image;
    QCOMPARE(itemTexts(ui->listWidget_Bk), QStringList({path}));
    QCOMPARE(hasThumbnail(ui->listWidget_Bk, 0), picture);
    QCOMPARE(MyGlobal::CurSelectionBk, path);
    QCOMPARE(DialogTestAccess::background(d).isNull(), !picture);
    if (picture)
        QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), fittedTo(QImage(path), photo.size())));
    checkPhotoShown(d, photo);

    const QImage backgroundBefore = DialogTestAccess::background(d);
    widgettest::markPreview(d);
    widgettest::clickRow(ui->listWidget_Bk, 0);
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    QCOMPARE(MyGlobal::CurSelectionBk, path);
    QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
    QCOMPARE(DialogTestAccess::background(d).isNull(), !picture);
    QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), backgroundBefore));
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
}

// Designed outcome: without "Bkg" the window opens with an empty BACKGROUNDS
// list, a null background and no background path, and shows the first sample.
void TestHostileStartup::missingBkgFolder()
{
    HostileCase& c = hostileCase();
    QVERIFY(QDir(c.appDir() + QStringLiteral("/Bkg")).removeRecursively());
    c.takeSnapshots();
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const widgettest::WindowWidgets ui(*window);
    QCOMPARE(ui->listWidget_Bk->count(), 0);
    QVERIFY(DialogTestAccess::background(*window).isNull());
    QVERIFY(MyGlobal::CurSelectionBk.isEmpty());
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(*window), QImage(c.appDir() + QStringLiteral("/1green.JPG"))));
}

PLENDRA_TEST_MAIN(TestHostileStartup)
#include "tst_hostile_startup.moc"
