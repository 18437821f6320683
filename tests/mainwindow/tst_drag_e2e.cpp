// SPDX-License-Identifier: MIT
// Real drags on X, end to end: the built program on a virtual screen, the
// mouse driven with xdotool. An item dragged from FOREGROUNDS onto
// BACKGROUNDS carries no file address, so nothing is added; files dragged in
// from another program's window are added to the list they are dropped on.
//
// The program runs from a copy of its bundle beside a sample folder made
// here, so that the backgrounds are plain colours that tell in the preview
// and in the saved composite which background is in use.

#include "tests/support/recordingopener.h"
#include "tests/support/desktopsession.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace testsupport::windowplaces;
using testsupport::DesktopSession;
using testsupport::colourShare;
using testsupport::kWindowTitle;
using testsupport::lowestContentRow;

namespace {

const QString kSourceTitle = QStringLiteral("Plendra test file source");
// A backdrop point of the sample photo in the preview.
const QPoint kBackdropInPreview(44, 20);

const QColor kBackdrop(40, 180, 60);
const QColor kRed(220, 40, 40);       // Bkg/a.png, the first background
const QColor kYellow(240, 220, 40);   // Bkg/b.png, the second
const QColor kMagenta(230, 40, 230);  // a background dragged in

QImage plain(QColor colour, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

// A copy of the built bundle with a sample folder of its own beside it: the
// two sample photos, and "Bkg" with a red "a.png" and a yellow "b.png".
struct Bundle
{
    QTemporaryDir dir;
    QString executable;

    bool make()
    {
        if (!dir.isValid())
            return false;
        const QString macos = dir.path() + QStringLiteral("/Plendra.app/Contents/MacOS");
        executable = macos + QStringLiteral("/Plendra");
        return QDir().mkpath(macos) && QFile::copy(QStringLiteral(PLENDRA_BUNDLE_EXE), executable) &&
               testsupport::makeSampleFolder(dir.path(), {}) &&
               testsupport::writeImage(plain(kRed, 320, 240), dir.path() + QStringLiteral("/Bkg/a.png")) &&
               testsupport::writeImage(plain(kYellow, 320, 240), dir.path() + QStringLiteral("/Bkg/b.png"));
    }
};

// The program started from a bundle copy, with a home of its own and the
// recording opener first on PATH.
struct Program
{
    QTemporaryDir home;
    Bundle bundle;
    testsupport::RecordingOpener opener;
    std::unique_ptr<DesktopSession> app;

    bool start()
    {
        if (!home.isValid() || !bundle.make() || !opener.isValid())
            return false;
        // The window of a program that an earlier failing test left behind
        // may take a moment to go; this program's window must not be taken for it.
        QElapsedTimer clock;
        clock.start();
        while (DesktopSession::windowExists(kWindowTitle) && clock.elapsed() < 10000)
            QTest::qWait(200);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PATH"), QString::fromLocal8Bit(opener.pathWithOpenerFirst()));
        app = std::make_unique<DesktopSession>(home.path(), env);
        app->process().setProgram(bundle.executable);
        return app->start(kWindowTitle);
    }
    QString outputFolder() const { return home.path() + QStringLiteral("/Documents/Plendra"); }
    QPoint onScreen(QPoint inWindow) const { return app->windowOrigin() + inWindow; }
};

bool xdo(const QStringList& arguments)
{
    bool ok = false;
    DesktopSession::xdotool(arguments, &ok);
    return ok;
}

bool moveTo(QPoint onScreen)
{
    return xdo({QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(onScreen.x()),
                QString::number(onScreen.y())});
}

// A drag as a hand makes it: press, move in small steps (giving each step
// time to be seen), rest on the target until it has answered, release.
bool dragWithMouse(QPoint from, QPoint to)
{
    if (!moveTo(from) || !xdo({QStringLiteral("mousedown"), QStringLiteral("1")}))
        return false;
    QTest::qWait(150);
    const int steps = 24;
    for (int i = 1; i <= steps; ++i) {
        if (!moveTo(from + (to - from) * i / steps))
            return false;
        QTest::qWait(40);
    }
    // Wiggle on the target so that it is asked more than once whether it takes the drop.
    moveTo(to + QPoint(3, 0));
    QTest::qWait(150);
    moveTo(to);
    QTest::qWait(300);
    return xdo({QStringLiteral("mouseup"), QStringLiteral("1")});
}

// Takes window shots until `done` holds for one, or the time is up; returns
// the last shot taken.
QImage waitForShot(DesktopSession& app, const std::function<bool(const QImage&)>& done, int milliseconds = 8000)
{
    QElapsedTimer clock;
    clock.start();
    QImage shot;
    do {
        shot = app.windowShot();
        if (!shot.isNull() && done(shot))
            break;
        QTest::qWait(200);
    } while (clock.elapsed() < milliseconds);
    return shot;
}

QString shotsFolder()
{
    const QString shots = QStringLiteral(PLENDRA_BUILD_DIR "/tests/mainwindow/drag-e2e-screens");
    QDir().mkpath(shots);
    return shots;
}

// The helper window that drags files in, as a file manager would.
struct FileSource
{
    QProcess process;
    QByteArray printed;

    bool start(QPoint at, const QStringList& files)
    {
        process.setProgram(QStringLiteral(PLENDRA_FILEDRAGSOURCE));
        process.setArguments(QStringList{QString::number(at.x()), QString::number(at.y())} + files);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start();
        if (!process.waitForStarted(10000))
            return false;
        QElapsedTimer clock;
        clock.start();
        while (!printed.contains("ready\n") && clock.elapsed() < 20000) {
            process.waitForReadyRead(200);
            printed += process.readAllStandardOutput();
        }
        if (!printed.contains("ready\n"))
            return false;
        const QString id = DesktopSession::findWindow(kSourceTitle, 20000);
        if (id.isEmpty())
            return false;
        // Where the window really is, whatever was asked for.
        bool ok = false;
        const QString shell = DesktopSession::xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), id}, &ok);
        QMap<QString, int> geometry;
        for (const QString& line : shell.split(QLatin1Char('\n'))) {
            const QStringList kv = line.split(QLatin1Char('='));
            if (kv.size() == 2)
                geometry.insert(kv[0], kv[1].toInt());
        }
        centre = QPoint(geometry.value(QStringLiteral("X")) + geometry.value(QStringLiteral("WIDTH")) / 2,
                        geometry.value(QStringLiteral("Y")) + geometry.value(QStringLiteral("HEIGHT")) / 2);
        return ok && geometry.value(QStringLiteral("WIDTH")) > 0;
    }
    // The middle of the window, on the screen.
    QPoint centre;
    // Waits for the end of a drag; -1 when none was reported in time.
    int waitForDragEnd(int milliseconds = 10000)
    {
        QElapsedTimer clock;
        clock.start();
        while (!printed.contains("drag ended") && clock.elapsed() < milliseconds) {
            process.waitForReadyRead(200);
            printed += process.readAllStandardOutput();
        }
        const int at = printed.indexOf("drag ended ");
        if (at < 0)
            return -1;
        return printed.mid(at + 11).split('\n').first().toInt();
    }
    ~FileSource()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(5000);
        }
    }
};

// Where the file source window goes: beside the program's window, clear of it.
QPoint sourcePlace(const DesktopSession& app)
{
    const QRect window(app.windowOrigin(), app.windowSize());
    if (window.right() + 180 < 1280)
        return QPoint(window.right() + 20, window.top() + 40);
    return QPoint(window.left() + 40, window.bottom() + 30);
}

} // namespace

class TestDragEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void itemDraggedFromForegroundsOntoBackgroundsAddsNothing();
    void fileDraggedInFromOutsideOntoForegrounds();
    void fileDraggedInFromOutsideOntoBackgrounds();
};

void TestDragEndToEnd::itemDraggedFromForegroundsOntoBackgroundsAddsNothing()
{
    const QString shots = shotsFolder();
    Program program;
    QVERIFY2(program.start(), "the main window did not appear");
    DesktopSession& app = *program.app;

    const QImage start = app.windowShot(shots + "/internal-0-start.png");
    QVERIFY(!start.isNull());
    const int foregroundsBottom = lowestContentRow(start, kForegrounds);
    const int backgroundsBottom = lowestContentRow(start, kBackgrounds);
    QVERIFY2(foregroundsBottom > kForegrounds.top() + 30, "the sample photos should be listed");
    QVERIFY2(backgroundsBottom > kBackgrounds.top() + 30, "the two backgrounds should be listed");
    // Two rows each; the parts of the two background rows right of their thumbnails.
    const int rowHeight = (backgroundsBottom - kBackgrounds.top()) / 2;
    const QRect firstRowText(kBackgrounds.left() + 70, kBackgrounds.top() + rowHeight / 4, 75, rowHeight / 2);
    const QRect secondRowText = firstRowText.translated(0, rowHeight);

    // Choose the second background (yellow) and key the photo against it.
    QVERIFY(app.click(QPoint(kBackgrounds.left() + 40, backgroundsBottom - 15)));
    QVERIFY(app.click(kPreview.topLeft() + kBackdropInPreview));
    const QImage keyed = waitForShot(app, [](const QImage& s) { return colourShare(s, kPreview, kYellow) > 0.3; });
    keyed.save(shots + "/internal-1-keyed-yellow.png");
    QVERIFY2(colourShare(keyed, kPreview, kYellow) > 0.3, "the key click should show the yellow background");
    // The chosen row is drawn highlighted; the first is not.
    const QColor highlight = QColor(keyed.pixel(kBackgrounds.left() + 71, secondRowText.center().y()));
    QVERIFY2(colourShare(keyed, secondRowText, highlight) > 0.5, "the chosen background's row should be highlighted");
    QVERIFY(colourShare(keyed, firstRowText, highlight) < 0.1);

    // Drag the first photo's item onto the empty part of BACKGROUNDS.
    QVERIFY(dragWithMouse(program.onScreen(QPoint(kForegrounds.left() + 40, kForegrounds.top() + 20)),
                          program.onScreen(QPoint(kBackgrounds.center().x(), kBackgrounds.bottom() - 60))));

    // The drop made the first background the current (and selected) row.
    const QImage dropped = waitForShot(app, [&](const QImage& s) { return colourShare(s, firstRowText, highlight) > 0.5; });
    dropped.save(shots + "/internal-2-dropped.png");
    QVERIFY2(colourShare(dropped, firstRowText, highlight) > 0.5, "after the drop the first background's row should be current");
    QVERIFY(colourShare(dropped, secondRowText, highlight) < 0.1);
    // The item carried no file: neither list gained or lost a row, and the
    // preview was left as it was.
    QCOMPARE(lowestContentRow(dropped, kForegrounds), foregroundsBottom);
    QCOMPARE(lowestContentRow(dropped, kBackgrounds), backgroundsBottom);
    QVERIFY2(testsupport::meanDifference(keyed.copy(kPreview), dropped.copy(kPreview)) < 1.0, "the preview should not change");

    // A later effect of the new current row: "Remove" takes the current row,
    // the red background, not the yellow one chosen before the drop.
    QVERIFY(app.click(kRemoveBackground.center()));
    const QImage removed = waitForShot(app, [&](const QImage& s) {
        return lowestContentRow(s, kBackgrounds) < backgroundsBottom - rowHeight / 2;
    });
    removed.save(shots + "/internal-3-removed.png");
    QVERIFY2(lowestContentRow(removed, kBackgrounds) < backgroundsBottom - rowHeight / 2, "one background should be gone");
    QVERIFY2(lowestContentRow(removed, kBackgrounds) > kBackgrounds.top() + 30, "one background should be left");
    // Keying again and saving shows the background that is left: yellow.
    // (The preview already showed yellow before; the saved composite is
    // made after the new key click, which comes first in the event queue.)
    QVERIFY(app.click(kPreview.topLeft() + kBackdropInPreview));
    QVERIFY(app.click(kSaveImage.center()));
    const QString saved = program.outputFolder() + QStringLiteral("/1green.JPG");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(saved) && program.opener.calls().size() >= 2, 15000);
    app.windowShot(shots + "/internal-4-rekeyed-saved.png");
    const QImage composite = QImage(saved).convertToFormat(QImage::Format_RGB32);
    QVERIFY(!composite.isNull());
    QVERIFY2(colourShare(composite, composite.rect(), kYellow) > 0.3, "the yellow background should be the one left");
    QVERIFY(colourShare(composite, composite.rect(), kRed) < 0.01);

    QVERIFY(app.key(QStringLiteral("Escape")));
    QCOMPARE(app.waitForExit(), 0);
}

void TestDragEndToEnd::fileDraggedInFromOutsideOntoForegrounds()
{
    const QString shots = shotsFolder();
    Program program;
    QVERIFY2(program.start(), "the main window did not appear");
    DesktopSession& app = *program.app;
    // A tall photo, so that its shape tells it from the samples.
    const QString photo = program.home.path() + QStringLiteral("/shoot/dropped portrait.png");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(200, 400, kBackdrop, 78), photo));
    const QByteArray photoBytes = testsupport::fileBytes(photo);

    const QImage start = app.windowShot(shots + "/foregrounds-0-start.png");
    QVERIFY(!start.isNull());
    const int foregroundsBottom = lowestContentRow(start, kForegrounds);
    const int backgroundsBottom = lowestContentRow(start, kBackgrounds);
    QVERIFY2(foregroundsBottom > kForegrounds.top() + 30, "the sample photos should be listed");

    FileSource source;
    const QPoint sourceAt = sourcePlace(app);
    QVERIFY2(source.start(sourceAt, {photo}), "the file source window did not appear");
    QVERIFY2(!QRect(app.windowOrigin(), app.windowSize()).contains(source.centre), "the file source covers the window");
    QVERIFY(dragWithMouse(source.centre,
                          program.onScreen(QPoint(kForegrounds.center().x(), kForegrounds.bottom() - 60))));
    const int action = source.waitForDragEnd();
    QVERIFY2(action >= 0, "the file source saw no end of its drag");
    qInfo("the drop on FOREGROUNDS reported back drop action %d", action);

    // One more row in FOREGROUNDS, none in BACKGROUNDS.
    const QImage dropped = waitForShot(app, [&](const QImage& s) {
        return lowestContentRow(s, kForegrounds) > foregroundsBottom + 30;
    });
    dropped.save(shots + "/foregrounds-1-dropped.png");
    const int newBottom = lowestContentRow(dropped, kForegrounds);
    QVERIFY2(newBottom > foregroundsBottom + 30,
             qPrintable(QStringLiteral("list bottom %1 -> %2").arg(foregroundsBottom).arg(newBottom)));
    QCOMPARE(lowestContentRow(dropped, kBackgrounds), backgroundsBottom);

    // The new row is the dropped photo: choose it and save it.
    QVERIFY(app.click(QPoint(kForegrounds.left() + 40, newBottom - 15)));
    QVERIFY(app.click(kSaveImage.center()));
    const QString saved = program.outputFolder() + QStringLiteral("/dropped portrait.png");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(saved) && program.opener.calls().size() >= 2, 15000);
    app.windowShot(shots + "/foregrounds-2-saved.png");
    QImageReader reader(saved);
    QCOMPARE(reader.format(), QByteArray("png"));
    QCOMPARE(reader.size(), QSize(200, 400));
    // The dragged file is used where it lies, untouched.
    QCOMPARE(testsupport::fileBytes(photo), photoBytes);

    QVERIFY(app.key(QStringLiteral("Escape")));
    QCOMPARE(app.waitForExit(), 0);
}

void TestDragEndToEnd::fileDraggedInFromOutsideOntoBackgrounds()
{
    const QString shots = shotsFolder();
    Program program;
    QVERIFY2(program.start(), "the main window did not appear");
    DesktopSession& app = *program.app;
    const QString picture = program.home.path() + QStringLiteral("/pictures/magenta.png");
    QVERIFY(testsupport::writeImage(plain(kMagenta, 300, 200), picture));
    const QByteArray pictureBytes = testsupport::fileBytes(picture);

    const QImage start = app.windowShot(shots + "/backgrounds-0-start.png");
    QVERIFY(!start.isNull());
    const int foregroundsBottom = lowestContentRow(start, kForegrounds);
    const int backgroundsBottom = lowestContentRow(start, kBackgrounds);
    QVERIFY2(backgroundsBottom > kBackgrounds.top() + 30, "the two backgrounds should be listed");

    // Key against the first background, red.
    QVERIFY(app.click(kPreview.topLeft() + kBackdropInPreview));
    const QImage keyed = waitForShot(app, [](const QImage& s) { return colourShare(s, kPreview, kRed) > 0.3; });
    keyed.save(shots + "/backgrounds-1-keyed-red.png");
    QVERIFY2(colourShare(keyed, kPreview, kRed) > 0.3, "the key click should show the red background");

    FileSource source;
    const QPoint sourceAt = sourcePlace(app);
    QVERIFY2(source.start(sourceAt, {picture}), "the file source window did not appear");
    QVERIFY2(!QRect(app.windowOrigin(), app.windowSize()).contains(source.centre), "the file source covers the window");
    QVERIFY(dragWithMouse(source.centre,
                          program.onScreen(QPoint(kBackgrounds.center().x(), kBackgrounds.bottom() - 60))));
    const int action = source.waitForDragEnd();
    QVERIFY2(action >= 0, "the file source saw no end of its drag");
    qInfo("the drop on BACKGROUNDS reported back drop action %d", action);

    // One more row in BACKGROUNDS, none in FOREGROUNDS; the preview stays.
    const QImage dropped = waitForShot(app, [&](const QImage& s) {
        return lowestContentRow(s, kBackgrounds) > backgroundsBottom + 30;
    });
    dropped.save(shots + "/backgrounds-2-dropped.png");
    const int newBottom = lowestContentRow(dropped, kBackgrounds);
    QVERIFY2(newBottom > backgroundsBottom + 30,
             qPrintable(QStringLiteral("list bottom %1 -> %2").arg(backgroundsBottom).arg(newBottom)));
    QCOMPARE(lowestContentRow(dropped, kForegrounds), foregroundsBottom);
    QVERIFY2(testsupport::meanDifference(keyed.copy(kPreview), dropped.copy(kPreview)) < 1.0, "the preview should not change");

    // The new row is the dropped picture: choosing it keys the photo against it.
    QVERIFY(app.click(QPoint(kBackgrounds.left() + 40, newBottom - 15)));
    const QImage chosen = waitForShot(app, [](const QImage& s) { return colourShare(s, kPreview, kMagenta) > 0.3; });
    chosen.save(shots + "/backgrounds-3-chosen.png");
    QVERIFY2(colourShare(chosen, kPreview, kMagenta) > 0.3, "the dropped picture should be the background");
    QVERIFY(colourShare(chosen, kPreview, kRed) < 0.01);

    // And the saved composite holds it too.
    QVERIFY(app.click(kSaveImage.center()));
    const QString saved = program.outputFolder() + QStringLiteral("/1green.JPG");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(saved) && program.opener.calls().size() >= 2, 15000);
    const QImage composite(saved);
    QVERIFY(!composite.isNull());
    QVERIFY2(colourShare(composite.convertToFormat(QImage::Format_RGB32), composite.rect(), kMagenta) > 0.3,
             "the saved composite should show the dropped background");
    QCOMPARE(testsupport::fileBytes(picture), pictureBytes);

    QVERIFY(app.key(QStringLiteral("Escape")));
    QCOMPARE(app.waitForExit(), 0);
}

QTEST_GUILESS_MAIN(TestDragEndToEnd)
#include "tst_drag_e2e.moc"
