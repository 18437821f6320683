// SPDX-License-Identifier: MIT
// End to end on X: the built bundle, driven with xdotool. "Add" a generated
// studio shot through the real file dialog, see it listed and shown, click
// its backdrop, choose the other background, and check the preview in
// screenshots (kept under the build tree).

#include "tests/support/desktopsession.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace testsupport::windowplaces;
using testsupport::colourDistance;
using testsupport::kWindowTitle;
using testsupport::lowestContentRow;

namespace {

const QString kAddDialogTitle = QStringLiteral("Select Files for Chroma-Keying");
const QColor kBackdrop(40, 180, 60);

bool isBackdrop(QRgb p)
{
    return colourDistance(p, kBackdrop) < 60;
}

// Bounding box of the backdrop-green pixels inside `area`.
QRect backdropBox(const QImage& window, const QRect& area)
{
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (isBackdrop(window.pixel(x, y)))
                box |= QRect(x, y, 1, 1);
    return box;
}

double meanDifference(const QImage& a, const QImage& b, const QRect& area)
{
    qint64 sum = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            sum += colourDistance(a.pixel(x, y), QColor(b.pixel(x, y)));
    return double(sum) / (area.width() * area.height());
}

} // namespace

class TestIntakeEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void addKeyAndChooseAnotherBackground();
};

void TestIntakeEndToEnd::addKeyAndChooseAnotherBackground()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const QString shots = QStringLiteral(PLENDRA_BUILD_DIR "/tests/intake/e2e-screens");
    QDir(shots).removeRecursively();
    QVERIFY(QDir().mkpath(shots));

    // A tall photo, so that its shape in the preview tells it from the samples.
    const QString photo = home.path() + QStringLiteral("/shoot/portrait.png");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(200, 400, kBackdrop, 77), photo));
    const QByteArray photoBytes = testsupport::fileBytes(photo);
    QMap<QString, QByteArray> shipped;
    const QDir bkg(QStringLiteral(PLENDRA_BUILD_DIR "/Bkg"));
    for (const QString& name : bkg.entryList(QDir::Files))
        shipped.insert(bkg.filePath(name), testsupport::fileBytes(bkg.filePath(name)));
    QVERIFY2(shipped.size() >= 2, "the build tree needs two backgrounds beside the bundle");

    testsupport::DesktopSession app(home.path());
    QVERIFY2(app.start(kWindowTitle), "the main window did not appear");
    QCOMPARE(app.windowSize(), QSize(817, 539));

    const QImage start = app.windowShot(shots + "/0-start.png");
    QVERIFY(!start.isNull());
    const int listBottomBefore = lowestContentRow(start, kForegrounds);
    QVERIFY2(listBottomBefore > kForegrounds.top(), "the sample photos should be listed");

    // "Add", then the path typed into Qt's file dialog and Return.
    QVERIFY(app.click(kAddButton.center()));
    const QString fileDialog = testsupport::DesktopSession::findWindow(kAddDialogTitle);
    QVERIFY2(!fileDialog.isEmpty(), "the add dialog did not open");
    QTest::qWait(500);
    bool ok = false;
    testsupport::DesktopSession::xdotool({"mousemove", "--sync", "--window", fileDialog, "60", "60"}, &ok);
    QVERIFY(ok);
    testsupport::DesktopSession::xdotool({"windowfocus", "--sync", fileDialog});
    QVERIFY(app.type(photo));
    QVERIFY(app.key(QStringLiteral("Return")));
    // A completion list may take the first Return.
    QElapsedTimer waited;
    waited.start();
    while (testsupport::DesktopSession::windowExists(kAddDialogTitle) && waited.elapsed() < 8000) {
        QTest::qWait(700);
        if (testsupport::DesktopSession::windowExists(kAddDialogTitle))
            app.key(QStringLiteral("Return"));
    }
    QVERIFY2(!testsupport::DesktopSession::windowExists(kAddDialogTitle), "the add dialog did not close");
    QTest::qWait(800);

    const QImage added = app.windowShot(shots + "/1-added.png");
    QVERIFY(!added.isNull());
    // One more row in FOREGROUNDS.
    const int listBottomAfter = lowestContentRow(added, kForegrounds);
    QVERIFY2(listBottomAfter > listBottomBefore + 30,
             qPrintable(QStringLiteral("list bottom %1 -> %2").arg(listBottomBefore).arg(listBottomAfter)));
    // The preview shows a green-backdrop picture of the photo's shape (1 : 2).
    const QRect shown = backdropBox(added, kPreview);
    QVERIFY2(shown.height() > 300, qPrintable(QStringLiteral("backdrop box %1x%2").arg(shown.width()).arg(shown.height())));
    QVERIFY2(qAbs(double(shown.width()) / shown.height() - 0.5) < 0.05,
             qPrintable(QStringLiteral("backdrop box %1x%2").arg(shown.width()).arg(shown.height())));

    // Click the backdrop. The whole view is taken to span the whole photo, so
    // view point (42, 18) keys on photo pixel (19, 15), backdrop.
    QVERIFY(app.click(kPreview.topLeft() + QPoint(44, 20)));
    QTest::qWait(1000);
    const QImage keyed = app.windowShot(shots + "/2-keyed.png");
    QVERIFY(!keyed.isNull());
    // Points of the shown photo's backdrop (its upper corners) and of its
    // subject (the middle of the body).
    const QList<QPoint> backdropPoints = {shown.topLeft() + QPoint(6, 6), shown.topRight() + QPoint(-6, 6),
                                          shown.topLeft() + QPoint(6, shown.height() / 3),
                                          shown.topRight() + QPoint(-6, shown.height() / 3)};
    const QPoint body(shown.center().x(), shown.top() + shown.height() * 3 / 4);
    for (const QPoint& p : backdropPoints)
        QVERIFY2(!isBackdrop(keyed.pixel(p)), "the backdrop should show the background after the key click");
    QVERIFY(colourDistance(keyed.pixel(body), QColor(added.pixel(body))) < 30);

    // Choose the second background: the photo is keyed again at the same point.
    QVERIFY(app.click(kBackgrounds.topLeft() + QPoint(40, 100)));
    QTest::qWait(1000);
    const QImage rekeyed = app.windowShot(shots + "/3-other-background.png");
    QVERIFY(!rekeyed.isNull());
    for (const QPoint& p : backdropPoints)
        QVERIFY2(!isBackdrop(rekeyed.pixel(p)), "the backdrop should show the new background");
    QVERIFY(colourDistance(rekeyed.pixel(body), QColor(added.pixel(body))) < 30);
    const QRect upperBackdrop(shown.left() + 2, shown.top() + 2, shown.width() - 4, shown.height() / 8);
    QVERIFY2(meanDifference(keyed, rekeyed, upperBackdrop) > 20, "the backdrop should change with the background");

    QVERIFY(app.key(QStringLiteral("Escape")));
    QCOMPARE(app.waitForExit(), 0);
    QCOMPARE(testsupport::fileBytes(photo), photoBytes);
    for (auto it = shipped.cbegin(); it != shipped.cend(); ++it)
        QCOMPARE(testsupport::fileBytes(it.key()), it.value());
}

QTEST_GUILESS_MAIN(TestIntakeEndToEnd)
#include "tst_intake_e2e.moc"
