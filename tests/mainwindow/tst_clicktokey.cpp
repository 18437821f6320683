// SPDX-License-Identifier: MIT
// A click in the preview keys the photo; rotation and the fatal checks.
#include "state/globals.h"
#include "mainwindow/dialog.h"
#include "tests/fixture/windowfixture.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QRgb kGrey = qRgb(128, 128, 128);
const QRgb kMarker = qRgb(20, 200, 30);   // a green that keys its neighbour shade
const QRgb kMarkerShade = qRgb(25, 205, 35);

// A grey photo (never keyed by any key) holding one green marker pixel at
// `marker` and a block of a close green shade in a corner far from it. After a
// click, the block is replaced exactly when the key was sampled at the marker.
QImage markerPhoto(QSize size, QPoint marker)
{
    QImage img(size, QImage::Format_RGB32);
    img.fill(kGrey);
    const int bx = marker.x() < size.width() / 2 ? size.width() - 12 : 2;
    const int by = marker.y() < size.height() / 2 ? size.height() - 12 : 2;
    for (int y = by; y < by + 10; ++y)
        for (int x = bx; x < bx + 10; ++x)
            img.setPixel(x, y, kMarkerShade);
    img.setPixel(marker, kMarker);
    return img;
}

bool blockReplaced(const QImage& keyed, QSize size, QPoint marker)
{
    const int bx = marker.x() < size.width() / 2 ? size.width() - 12 : 2;
    const int by = marker.y() < size.height() / 2 ? size.height() - 12 : 2;
    return keyed.pixel(bx + 5, by + 5) != kMarkerShade;
}

// 400 x 300: the left half a green backdrop, the right half a blue one.
QImage greenAndBlueHalves()
{
    QImage photo(400, 300, QImage::Format_RGB32);
    for (int y = 0; y < 300; ++y)
        for (int x = 0; x < 400; ++x)
            photo.setPixel(x, y, x < 200 ? qRgb(40, 180, 60) : qRgb(40, 60, 200));
    return photo;
}

// Children for the fatal checks: they build the window from the folder given
// in the environment and do what ends the program.
void openWindowFromEnvironment()
{
    MyGlobal::appDir = qEnvironmentVariable("PLENDRA_TEST_APPDIR");
}

} // namespace

PLENDRA_CHILD_SCENARIO("clickWithoutBackground")
{
    openWindowFromEnvironment();
    widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false)); // its "Bkg" folder is empty: no background is loaded
    if (!windowFixture.ok())
        return;
    Dialog& window = *windowFixture.dialog;
    QMetaObject::invokeMethod(&window, "GVClicked", Q_ARG(int, 30), Q_ARG(int, 40));
}

PLENDRA_CHILD_SCENARIO("clickOnUnreadablePhoto")
{
    openWindowFromEnvironment();
    widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    if (!windowFixture.ok())
        return;
    Dialog& window = *windowFixture.dialog;
    MyGlobal::CurSelection = MyGlobal::appDir + "/gone.JPG";
    QMetaObject::invokeMethod(&window, "GVClicked", Q_ARG(int, 30), Q_ARG(int, 40));
}

PLENDRA_CHILD_SCENARIO("startWithoutSamplePhotos")
{
    openWindowFromEnvironment();
    // Building the window is what stops: the first preview refresh finds no
    // photo to show.
    widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    static_cast<void>(windowFixture);
}

class TestClickToKey : public widgettest::SampleWindowTestCase
{
    Q_OBJECT

private:
    QString writePhoto(const QImage& img, const QString& name)
    {
        const QString path = m_samples.path() + "/" + name;
        return testsupport::writeImage(img, path) ? path : QString();
    }

private slots:
    void clickSamplesThePixelOfTheIntegerMapping_data()
    {
        QTest::addColumn<QSize>("photo");
        QTest::addColumn<QPoint>("click");
        QTest::addColumn<QPoint>("sampled");
        QTest::newRow("1000x800 at (210,175)") << QSize(1000, 800) << QPoint(210, 175) << QPoint(498, 398);
        QTest::newRow("origin") << QSize(1000, 800) << QPoint(0, 0) << QPoint(0, 0);
        // The viewport is smaller than the view widget that divides, so its
        // last pixel still maps inside the photo.
        QTest::newRow("bottom-right viewport pixel") << QSize(1000, 800) << QPoint(418, 348)
                                                     << QPoint(1000 * 418 / 421, 800 * 348 / 351);
        QTest::newRow("odd sizes") << QSize(333, 777) << QPoint(100, 300) << QPoint(333 * 100 / 421, 777 * 300 / 351);
        // A portrait photo leaves empty bands beside the preview; a click in
        // the left band still samples the photo, near its left side.
        QTest::newRow("portrait, left band") << QSize(600, 900) << QPoint(20, 200) << QPoint(600 * 20 / 421, 900 * 200 / 351);
    }

    void clickSamplesThePixelOfTheIntegerMapping()
    {
        QFETCH(QSize, photo);
        QFETCH(QPoint, click);
        QFETCH(QPoint, sampled);
        const QString path = writePhoto(markerPhoto(photo, sampled), "marker.png");
        QVERIFY(!path.isEmpty());

        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        QCOMPARE(ui->graphicsView->size(), QSize(421, 351));
        QVERIFY(ui->graphicsView->viewport()->width() > click.x());
        MyGlobal::CurSelection = path;
        widgettest::pressAt(ui->graphicsView->viewport(), Qt::LeftButton, click);

        const QImage& keyed = DialogTestAccess::foreground(window);
        QCOMPARE(keyed.size(), photo);
        QVERIFY2(blockReplaced(keyed, photo, sampled), "the key was not sampled at the mapped pixel");
        QCOMPARE(MyGlobal::xyClicked, click);
    }

    void clickNextToTheMappedPixelKeysNothing()
    {
        // The same photo, clicked one view pixel further right: that maps to
        // grey, which keys nothing.
        const QSize photo(1000, 800);
        const QString path = writePhoto(markerPhoto(photo, QPoint(498, 398)), "marker2.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        QTest::mousePress(widgettest::WindowWidgets(window).graphicsView->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(211, 175));
        QCOMPARE(DialogTestAccess::foreground(window), QImage(path));
    }

    void everyButtonKeys_data() { widgettest::addMouseButtonRows(); }

    void everyButtonKeys()
    {
        QFETCH(Qt::MouseButton, button);
        const QSize photo(1000, 800);
        const QString path = writePhoto(markerPhoto(photo, QPoint(498, 398)), "marker3.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        QTest::mousePress(widgettest::WindowWidgets(window).graphicsView->viewport(), button, Qt::NoModifier, QPoint(210, 175));
        QVERIFY(blockReplaced(DialogTestAccess::foreground(window), photo, QPoint(498, 398)));
    }

    void keyedPixelsTakeTheBackgroundAndThePreviewShowsThem()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        const QImage original = DialogTestAccess::foreground(window);
        const QImage& bkg = DialogTestAccess::background(window);
        // The sample's backdrop fills the upper-left corner.
        QTest::mousePress(ui->graphicsView->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(40, 40));
        const QImage& keyed = DialogTestAccess::foreground(window);
        QCOMPARE(keyed.pixel(5, 5), bkg.pixel(5, 5));
        QCOMPARE(keyed.pixel(keyed.width() - 3, 4), bkg.pixel(keyed.width() - 3, 4));
        // The dark subject in the middle is kept.
        const QPoint subject(keyed.width() / 2, keyed.height() * 3 / 4);
        QCOMPARE(keyed.pixel(subject), original.pixel(subject));
        // The full-size composite is kept for saving, a fitted copy is shown.
        QCOMPARE(DialogTestAccess::preview(window).toImage().convertToFormat(QImage::Format_RGB32),
                 keyed.convertToFormat(QImage::Format_RGB32));
        const QPixmap shown = widgettest::shownPixmap(DialogTestAccess::scene(window));
        QCOMPARE(shown.size(), keyed.size().scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio));
        QCOMPARE(DialogTestAccess::scene(window)->items().size(), 1);
    }

    void twoClicksDoNotAccumulate()
    {
        const QString path = writePhoto(greenAndBlueHalves(), "halves.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QWidget* viewport = widgettest::WindowWidgets(window).graphicsView->viewport();
        MyGlobal::CurSelection = path;

        QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, QPoint(50, 150));
        const QImage& bkg = DialogTestAccess::background(window);
        QCOMPARE(DialogTestAccess::foreground(window).pixel(10, 10), bkg.pixel(10, 10));
        QCOMPARE(DialogTestAccess::foreground(window).pixel(390, 10), qRgb(40, 60, 200));

        QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, QPoint(350, 150));
        const QImage& keyed = DialogTestAccess::foreground(window);
        // The green half is back as photographed, only the blue half is keyed.
        QCOMPARE(keyed.pixel(10, 10), qRgb(40, 180, 60));
        QCOMPARE(keyed.pixel(390, 10), bkg.pixel(390, 10));
        QCOMPARE(MyGlobal::xyClicked, QPoint(350, 150));
    }

    void shippedSelectorReturnsThePhotoAsStored()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        const QImage bkgBefore = DialogTestAccess::background(window);
        DialogTestAccess::foreground(window).fill(Qt::black); // as if keyed
        QVERIFY(QMetaObject::invokeMethod(&window, "on_Rotation_currentIndexChanged", Q_ARG(QString, QStringLiteral("0"))));
        QCOMPARE(DialogTestAccess::foreground(window), QImage(MyGlobal::CurSelection));
        // Already the right size: the background is the very same image.
        QCOMPARE(DialogTestAccess::background(window).cacheKey(), bkgBefore.cacheKey());
        QCOMPARE(DialogTestAccess::preview(window).toImage().convertToFormat(QImage::Format_RGB32),
                 QImage(MyGlobal::CurSelection).convertToFormat(QImage::Format_RGB32));
    }

    void quarterTurnSwapsTheSizeAndStretchesTheBackground()
    {
        const QString path = writePhoto(testsupport::studioShot(400, 300, QColor(40, 180, 60), 5), "turn.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        QVERIFY(QMetaObject::invokeMethod(&window, "on_Rotation_currentIndexChanged", Q_ARG(QString, QString())));
        const QImage bkg400 = DialogTestAccess::background(window);
        QCOMPARE(bkg400.size(), QSize(400, 300));

        QComboBox* rotation = widgettest::WindowWidgets(window).Rotation;
        rotation->addItem(QStringLiteral("90"));
        rotation->setCurrentIndex(1); // runs the handler, as a user's choice would
        QCOMPARE(DialogTestAccess::foreground(window).size(), QSize(300, 400));
        QCOMPARE(DialogTestAccess::background(window),
                 bkg400.scaled(300, 400, Qt::IgnoreAspectRatio, Qt::FastTransformation));
        QTransform quarter;
        quarter.rotate(90);
        QCOMPARE(DialogTestAccess::foreground(window), QImage(path).transformed(quarter, Qt::FastTransformation));
        QCOMPARE(DialogTestAccess::preview(window).size(), QSize(300, 400));
    }

    void turningAgainDegradesTheBackground()
    {
        const QString path = writePhoto(testsupport::studioShot(400, 300, QColor(40, 180, 60), 6), "turn2.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        QVERIFY(QMetaObject::invokeMethod(&window, "on_Rotation_currentIndexChanged", Q_ARG(QString, QString())));
        DialogTestAccess::background(window) = testsupport::randomImage(400, 300, QImage::Format_RGB32, 9);
        const QImage fresh = DialogTestAccess::background(window);
        QComboBox* rotation = widgettest::WindowWidgets(window).Rotation;
        rotation->addItem(QStringLiteral("90"));
        rotation->setCurrentIndex(1);
        rotation->setCurrentIndex(0);
        const QImage& back = DialogTestAccess::background(window);
        QCOMPARE(back.size(), QSize(400, 300));
        QVERIFY(back != fresh); // stretched twice from its scaled pixels, never reloaded
        QCOMPARE(back, fresh.scaled(300, 400, Qt::IgnoreAspectRatio, Qt::FastTransformation)
                           .scaled(400, 300, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }

    void turningWithAClickResamplesAtTheSameViewPosition()
    {
        // A click low on the left samples green. Turned a quarter, the same
        // view position shows the blue half.
        const QString path = writePhoto(greenAndBlueHalves(), "halves2.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        QTest::mousePress(widgettest::WindowWidgets(window).graphicsView->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(30, 320));
        QCOMPARE(DialogTestAccess::foreground(window).pixel(390, 10), qRgb(40, 60, 200));
        QVERIFY(DialogTestAccess::foreground(window).pixel(10, 290) != qRgb(40, 180, 60));

        QComboBox* rotation = widgettest::WindowWidgets(window).Rotation;
        rotation->addItem(QStringLiteral("90"));
        rotation->setCurrentIndex(1);
        const QImage& turned = DialogTestAccess::foreground(window);
        QCOMPARE(turned.size(), QSize(300, 400));
        // A quarter turn puts the photo's left half at the top: it stays green,
        // and the blue bottom is keyed.
        QCOMPARE(turned.pixel(150, 20), qRgb(40, 180, 60));
        QCOMPARE(turned.pixel(150, 390), DialogTestAccess::background(window).pixel(150, 390));
        QCOMPARE(MyGlobal::xyClicked, QPoint(30, 320));
    }

    void clickAtTheOriginCountsAsNoClick()
    {
        const QSize photo(1000, 800);
        const QString path = writePhoto(markerPhoto(photo, QPoint(0, 0)), "origin.png");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        MyGlobal::CurSelection = path;
        widgettest::pressAt(widgettest::WindowWidgets(window).graphicsView->viewport(), Qt::LeftButton, QPoint(0, 0));
        QVERIFY(blockReplaced(DialogTestAccess::foreground(window), photo, QPoint(0, 0)));
        // Not replayed by a rotation change: the photo comes back unkeyed.
        QVERIFY(QMetaObject::invokeMethod(&window, "on_Rotation_currentIndexChanged", Q_ARG(QString, QStringLiteral("0"))));
        QCOMPARE(DialogTestAccess::foreground(window), QImage(path));
    }

    void clickWithoutABackgroundStopsTheProgram()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {}));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("PLENDRA_TEST_APPDIR", dir.path());
        const testsupport::ChildRun run = testsupport::runChildScenario("clickWithoutBackground", env);
        QVERIFY(run.started);
        QVERIFY(run.crashed);
        const QString condition = "m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width()";
        const int line = testsupport::sourceLineOf("mainwindow/dialog_keying.cpp", "PLENDRA_ASSERT(\"dialog\", m_bkg.height()");
        QVERIFY(line > 0);
        const QString expected = QString("dialog:%1: failed assertion `%2'\n").arg(line).arg(condition);
        QVERIFY2(QString::fromUtf8(run.standardError).endsWith(expected), run.standardError.constData());
    }

    void unreadablePhotoStopsTheProgramAtTheRedraw()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("PLENDRA_TEST_APPDIR", m_samples.path());
        const testsupport::ChildRun run = testsupport::runChildScenario("clickOnUnreadablePhoto", env);
        QVERIFY(run.started);
        QVERIFY(run.crashed);
        const int line = testsupport::sourceLineOf("mainwindow/dialog_keying.cpp", "PLENDRA_ASSERT(\"dialog\", !pix.isNull())");
        QVERIFY(line > 0);
        const QString expected = QString("dialog:%1: failed assertion `!pix.isNull()'\n").arg(line);
        QVERIFY2(QString::fromUtf8(run.standardError).endsWith(expected), run.standardError.constData());
    }

    void missingSamplePhotosStopTheProgramAtTheFirstRedraw()
    {
        QTemporaryDir empty;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("PLENDRA_TEST_APPDIR", empty.path());
        const testsupport::ChildRun run = testsupport::runChildScenario("startWithoutSamplePhotos", env);
        QVERIFY(run.started);
        QVERIFY(run.crashed);
        QVERIFY2(run.standardError.contains("failed assertion `!pix.isNull()'\n"), run.standardError.constData());
        QVERIFY(QRegularExpression("dialog:\\d+: failed assertion `!pix.isNull\\(\\)'\n$")
                    .match(QString::fromUtf8(run.standardError))
                    .hasMatch());
    }
};

PLENDRA_TEST_MAIN(TestClickToKey)
#include "tst_clicktokey.moc"
