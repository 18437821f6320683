// SPDX-License-Identifier: MIT
// The keying helpers the window's flow does not call: the colour test, the
// tolerance keyer with its size checks, the dark-or-light region estimate and
// the font size for a text over a photo; engine functions and the window's
// members that hand them the background and the placement choice.
#include "state/globals.h"
#include "keying/alternatives.h"
#include "mainwindow/dialog.h"
#include "tests/keying/keyingoracle.h"
#include "tests/keying/keyingtestdata.h"
#include "tests/fixture/windowfixture.h"

#include <QApplication>
#include <QFile>
#include <QFontMetrics>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(QImage::Format)

namespace {

QRgb rgb(int r, int g, int b) { return qRgb(r, g, b); }

// Reads outside an image warn once per pixel; the tests that do so on purpose
// keep those warnings out of the log.
class QuietOutOfRangeReads
{
public:
    QuietOutOfRangeReads() { previous = qInstallMessageHandler(&QuietOutOfRangeReads::handle); }
    ~QuietOutOfRangeReads() { qInstallMessageHandler(previous); }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        if (message.startsWith(QLatin1String("QImage::pixel: coordinate")) || message.startsWith(QLatin1String("QImage::setPixel:")))
            return;
        previous(type, context, message);
    }
    static inline QtMessageHandler previous = nullptr;
};

// A picture `light` everywhere but the rectangle `dark`.
QImage lightWithDark(int width, int height, const QRect& dark)
{
    QImage img(width, height, QImage::Format_RGB32);
    img.fill(qRgb(200, 200, 200));
    for (int y = dark.top(); y <= dark.bottom(); ++y)
        for (int x = dark.left(); x <= dark.right(); ++x)
            img.setPixel(x, y, qRgb(20, 30, 40));
    return img;
}

int lineWidth(const QFont& font, const QString& line)
{
    return QFontMetrics(font).boundingRect(line).width();
}

QFont arial(int pixelSize)
{
    QFont f(QStringLiteral("Arial"));
    f.setPixelSize(pixelSize);
    return f;
}

// The window needs its sample photos beside it; children get the folder made
// by the parent through the environment, so nothing is left behind when they stop.
const char* const kSampleFolderVariable = "PLENDRA_KEYING_TEST_SAMPLES";

void useSampleFolder(const QString& folder)
{
    MyGlobal::appDir = folder;
    MyGlobal::xyClicked = QPoint(0, 0);
}

// In a child: the window on the parent's sample folder, holding a 10 x 10
// background, keys a green photo of `size` with the tolerance keyer.
void keyGreenPhotoAgainst10x10(QSize size)
{
    useSampleFolder(qEnvironmentVariable(kSampleFolderVariable));
    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    if (!dFixture.ok())
        return;
    Dialog& d = *dFixture.dialog;
    DialogTestAccess::background(d) = QImage(10, 10, QImage::Format_RGB32);
    QImage img(size, QImage::Format_RGB32);
    img.fill(Qt::green);
    d.MaskOut2(img, qRgb(0, 255, 0));
}

} // namespace

PLENDRA_CHILD_SCENARIO("maskout2-unequal-height")
{
    keyGreenPhotoAgainst10x10(QSize(10, 11));
}

PLENDRA_CHILD_SCENARIO("maskout2-unequal-width")
{
    keyGreenPhotoAgainst10x10(QSize(12, 10));
}

class TestAlternatives : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void isChange_data();
    void isChange();
    void maskOut2MatchesOracle_data();
    void maskOut2MatchesOracle();
    void maskOut2ToleranceIs15PerChannel();
    void dialogMaskOut2KeysAgainstItsBackground();
    void dialogMaskOutKeysAgainstItsBackground();
    void maskOut2StopsOnUnequalHeight();
    void maskOut2StopsOnUnequalWidth();

    void approxPixelCounts_data();
    void approxPixelCounts();
    void approxPixelOutsideImageCountsOutOfRangeValue();
    void approximateColorSamplesEachRegion_data();
    void approximateColorSamplesEachRegion();
    void approximateColorTopLeftIsColumns0To99Rows0To39();
    void approximateColorTieIsNotDark();
    void approximateColorIgnoresOtherPlacements_data();
    void approximateColorIgnoresOtherPlacements();
    void approximateColorCountsRowsOutsideShortImage();
    void dialogApproximateColorUsesPlacement();

    void calcFontStartsAtTwoThirdsForLongLine();
    void calcFontStartSize_data();
    void calcFontStartSize();
    void calcFontLongestLineDecidesFirstAmongEquals();
    void calcFontShrinksInStepsOfThree();
    void calcFontNeverFittingTextEndsAtOnePixel();
    void dialogCalcFontDelegates();

private:
    // A studio shot keyed by the window's routine `keyInWindow`, with the key
    // read at its corner, against a background handed to the window: the
    // same bytes as the oracle `byPixel` gives (which keys something), and
    // the window's background left as it was.
    void checkWindowKeying(void (Dialog::*keyInWindow)(QImage&, unsigned int),
                           void (*byPixel)(QImage&, const QImage&, QRgb), quint32 seed);

    QTemporaryDir m_dir;
    QString m_samples;
};

void TestAlternatives::initTestCase()
{
    QVERIFY(m_dir.isValid());
    qputenv("HOME", QFile::encodeName(m_dir.path() + QStringLiteral("/home")));
    m_samples = m_dir.path() + QStringLiteral("/samples");
    QVERIFY(testsupport::makeSampleFolder(m_samples));
    useSampleFolder(m_samples);
}

void TestAlternatives::isChange_data()
{
    QTest::addColumn<QRgb>("a");
    QTest::addColumn<QRgb>("b");
    QTest::addColumn<bool>("changed");
    QTest::newRow("each channel 14 apart") << rgb(16, 32, 48) << rgb(30, 46, 62) << false;
    QTest::newRow("red 15 apart") << rgb(16, 32, 48) << rgb(31, 46, 62) << true;
    QTest::newRow("green 15 apart") << rgb(16, 32, 48) << rgb(30, 47, 62) << true;
    QTest::newRow("blue 15 apart") << rgb(16, 32, 48) << rgb(30, 46, 63) << true;
    QTest::newRow("red 15 below") << rgb(31, 46, 62) << rgb(16, 32, 48) << true;
    QTest::newRow("same colour") << rgb(1, 2, 3) << rgb(1, 2, 3) << false;
    QTest::newRow("alpha ignored") << qRgba(1, 2, 3, 0) << qRgba(1, 2, 3, 255) << false;
    QTest::newRow("black and white") << rgb(0, 0, 0) << rgb(255, 255, 255) << true;
}

void TestAlternatives::isChange()
{
    QFETCH(QRgb, a);
    QFETCH(QRgb, b);
    QFETCH(bool, changed);
    QCOMPARE(keying::isChange(a, b), changed);
    QCOMPARE(!oracle::closeColours(a, b), changed);
}

void TestAlternatives::maskOut2MatchesOracle_data()
{
    keyingdata::addFormatPairRows({
        {QImage::Format_RGB32, "RGB32"},
        {QImage::Format_ARGB32, "ARGB32"},
        {QImage::Format_ARGB32_Premultiplied, "ARGB32_Premultiplied"},
        {QImage::Format_RGB888, "RGB888"},
        {QImage::Format_Grayscale8, "Grayscale8"},
        {QImage::Format_Indexed8, "Indexed8"},
    });
}

void TestAlternatives::maskOut2MatchesOracle()
{
    QFETCH(QImage::Format, photoFormat);
    QFETCH(QImage::Format, backgroundFormat);
    QuietOutOfRangeReads quiet; // palette photos cannot take most colours
    for (QRgb key : {qRgb(40, 180, 60), qRgb(128, 128, 128), qRgb(40, 70, 200)}) {
        const QImage photo = keyingdata::mixedPicture(31, 17, key, key).convertToFormat(photoFormat);
        const QImage bkg = testsupport::randomImage(31, 17, QImage::Format_ARGB32, 5).convertToFormat(backgroundFormat);
        QImage expected = photo.copy();
        oracle::maskOut2(expected, bkg, key);
        QImage img = photo.copy();
        keying::maskOut2(img, bkg, key);
        QString where;
        QVERIFY2(keyingdata::samePixels(img, expected, &where), qPrintable(where));
    }
}

void TestAlternatives::maskOut2ToleranceIs15PerChannel()
{
    const QRgb key = qRgb(100, 100, 100);
    QImage img(4, 1, QImage::Format_RGB32);
    img.setPixel(0, 0, qRgb(114, 86, 114)); // 14 off in each channel: replaced
    img.setPixel(1, 0, qRgb(115, 100, 100)); // red 15 off: stays
    img.setPixel(2, 0, qRgb(100, 100, 85));  // blue 15 off: stays
    img.setPixel(3, 0, qRgba(100, 100, 100, 0));
    QImage bkg(4, 1, QImage::Format_ARGB32);
    bkg.fill(qRgba(1, 2, 3, 0x40));
    keying::maskOut2(img, bkg, key);
    QCOMPARE(img.pixel(0, 0), qRgb(1, 2, 3)); // an opaque photo stays opaque
    QCOMPARE(img.pixel(1, 0), qRgb(115, 100, 100));
    QCOMPARE(img.pixel(2, 0), qRgb(100, 100, 85));
    QCOMPARE(img.pixel(3, 0), qRgb(1, 2, 3));
    // No dominance or darkness rules: a grey key keys grey.
    QImage argb(1, 1, QImage::Format_ARGB32);
    argb.setPixel(0, 0, qRgba(100, 100, 100, 0xFF));
    keying::maskOut2(argb, bkg, key);
    QCOMPARE(argb.pixel(0, 0), qRgba(1, 2, 3, 0x40));
}

void TestAlternatives::dialogMaskOut2KeysAgainstItsBackground()
{
    checkWindowKeying(&Dialog::MaskOut2, &oracle::maskOut2, 7);
}

void TestAlternatives::dialogMaskOutKeysAgainstItsBackground()
{
    checkWindowKeying(&Dialog::MaskOut, &oracle::maskOut, 9);
}

void TestAlternatives::checkWindowKeying(void (Dialog::*keyInWindow)(QImage&, unsigned int),
                                         void (*byPixel)(QImage&, const QImage&, QRgb), quint32 seed)
{
    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(dFixture.ok());
    Dialog& d = *dFixture.dialog;
    const QImage bkg = testsupport::backgroundPicture(120, 90, seed);
    DialogTestAccess::background(d) = bkg;
    const QImage photo = testsupport::studioShot(120, 90, QColor(40, 180, 60), seed + 1);
    const QRgb key = photo.pixel(3, 3);
    QImage expected = photo.copy();
    byPixel(expected, bkg, key);
    QVERIFY(expected != photo);
    QImage img = photo.copy();
    (d.*keyInWindow)(img, key);
    QVERIFY(keyingdata::samePixels(img, expected));
    QCOMPARE(DialogTestAccess::background(d), bkg);
}

namespace {

void expectAssertion(const char* scenario, const QString& condition, const QString& samples)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QString::fromLatin1(kSampleFolderVariable), samples);
    const testsupport::ChildRun run = testsupport::runChildScenario(QString::fromLatin1(scenario), env);
    QVERIFY(run.started);
    QVERIFY2(run.crashed, run.standardError.constData());
    const int line = testsupport::sourceLineOf(QStringLiteral("mainwindow/dialog_alternatives.cpp"),
                                               QStringLiteral("PLENDRA_ASSERT(\"dialog\", ") + condition + QStringLiteral(");"));
    QVERIFY(line > 0);
    const QByteArray expected = "dialog:" + QByteArray::number(line) + ": failed assertion `" + condition.toUtf8() + "'\n";
    // The assertion's line is the last thing the child writes.
    QVERIFY2(run.standardError.endsWith(expected), run.standardError.constData());
}

} // namespace

void TestAlternatives::maskOut2StopsOnUnequalHeight()
{
    expectAssertion("maskout2-unequal-height", QStringLiteral("img.height() == m_bkg.height()"), m_samples);
}

void TestAlternatives::maskOut2StopsOnUnequalWidth()
{
    expectAssertion("maskout2-unequal-width", QStringLiteral("img.width() == m_bkg.width()"), m_samples);
}

void TestAlternatives::approxPixelCounts_data()
{
    QTest::addColumn<QRgb>("pixel");
    QTest::addColumn<bool>("light");
    QTest::newRow("181 grey is light") << rgb(181, 181, 181) << true;
    QTest::newRow("180 red, sum 690 is light") << rgb(180, 255, 255) << true;
    QTest::newRow("sum 400 is dark") << rgb(180, 110, 110) << false;
    QTest::newRow("sum 401 is light") << rgb(181, 110, 110) << true;
    QTest::newRow("180 grey, sum 540 is light") << rgb(180, 180, 180) << true;
    QTest::newRow("black is dark") << rgb(0, 0, 0) << false;
}

void TestAlternatives::approxPixelCounts()
{
    QFETCH(QRgb, pixel);
    QFETCH(bool, light);
    QImage img(3, 2, QImage::Format_RGB32);
    img.fill(Qt::black);
    img.setPixel(2, 1, pixel);
    long darkCount = 5;
    long lightCount = 7;
    keying::approxPixel(img, 2, 1, darkCount, lightCount);
    QCOMPARE(darkCount, light ? 5L : 6L);
    QCOMPARE(lightCount, light ? 8L : 7L);

    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(dFixture.ok());
    Dialog& d = *dFixture.dialog;
    darkCount = 0;
    lightCount = 0;
    d.approxPixel(img, 2, 1, darkCount, lightCount);
    QCOMPARE(darkCount, light ? 0L : 1L);
    QCOMPARE(lightCount, light ? 1L : 0L);
}

void TestAlternatives::approxPixelOutsideImageCountsOutOfRangeValue()
{
    QuietOutOfRangeReads quiet;
    QImage img(2, 2, QImage::Format_RGB32);
    img.fill(Qt::white);
    long darkCount = 0;
    long lightCount = 0;
    // The image class answers 12345 (0x003039: sum 105) outside its pixels: dark.
    keying::approxPixel(img, 5, 0, darkCount, lightCount);
    keying::approxPixel(img, 0, -1, darkCount, lightCount);
    QCOMPARE(darkCount, 2L);
    QCOMPARE(lightCount, 0L);
}

void TestAlternatives::approximateColorSamplesEachRegion_data()
{
    QTest::addColumn<int>("pos");
    QTest::addColumn<QRect>("region");
    // 300 x 200: thirds at 100 and 200; middle band rows 80..119.
    QTest::newRow("top left") << 33 << QRect(0, 0, 100, 40);
    QTest::newRow("top centre") << 36 << QRect(100, 0, 100, 40);
    QTest::newRow("top right") << 34 << QRect(200, 0, 100, 40);
    QTest::newRow("middle left") << 129 << QRect(0, 80, 100, 40);
    QTest::newRow("centre") << 132 << QRect(100, 80, 100, 40);
    QTest::newRow("middle right") << 130 << QRect(200, 80, 100, 40);
    QTest::newRow("bottom left") << 65 << QRect(0, 160, 100, 40);
    QTest::newRow("bottom centre") << 68 << QRect(100, 160, 100, 40);
    QTest::newRow("bottom right") << 66 << QRect(200, 160, 100, 40);
}

void TestAlternatives::approximateColorSamplesEachRegion()
{
    QFETCH(int, pos);
    QFETCH(QRect, region);
    const QImage darkRegion = lightWithDark(300, 200, region);
    QVERIFY(keying::approximateColor(darkRegion, pos));
    // Everything dark but the region: the region alone decides.
    QImage lightRegion = darkRegion;
    lightRegion.invertPixels();
    QVERIFY(!keying::approximateColor(lightRegion, pos));
    // Just over half of the region dark, the rest light: dark wins.
    const QRect firstHalf(region.left(), region.top(), region.width() / 2 + 1, region.height());
    QVERIFY(keying::approximateColor(lightWithDark(300, 200, firstHalf), pos));
}

void TestAlternatives::approximateColorTopLeftIsColumns0To99Rows0To39()
{
    const int pos = Qt::AlignTop | Qt::AlignLeft; // 0x21
    // Rows 0..19 dark, 20..39 light: a tie, not dark.
    QVERIFY(!keying::approximateColor(lightWithDark(300, 200, QRect(0, 0, 100, 20)), pos));
    // A dark row 40 is outside the region: still a tie.
    QImage img = lightWithDark(300, 200, QRect(0, 0, 100, 20));
    for (int x = 0; x < 300; ++x)
        img.setPixel(x, 40, qRgb(0, 0, 0));
    QVERIFY(!keying::approximateColor(img, pos));
    // Dark column 100 is outside as well.
    for (int y = 0; y < 200; ++y)
        img.setPixel(100, y, qRgb(0, 0, 0));
    QVERIFY(!keying::approximateColor(img, pos));
    // One more dark pixel inside (row 39, column 99) tips it.
    img.setPixel(99, 39, qRgb(0, 0, 0));
    QVERIFY(keying::approximateColor(img, pos));
}

void TestAlternatives::approximateColorTieIsNotDark()
{
    QVERIFY(!keying::approximateColor(lightWithDark(300, 200, QRect(0, 0, 50, 40)), 33));
    QVERIFY(keying::approximateColor(lightWithDark(300, 200, QRect(0, 0, 51, 40)), 33));
}

void TestAlternatives::approximateColorIgnoresOtherPlacements_data()
{
    QTest::addColumn<int>("pos");
    QTest::addColumn<bool>("dark");
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << false;
    QTest::newRow("0x20") << 0x20 << false;
    QTest::newRow("0x84 | 0x01") << (0x84 | 0x01) << false;
    QTest::newRow("0x24 | 0x40") << (0x24 | 0x40) << false;
    QTest::newRow("-1") << -1 << false;
    QTest::newRow("1000") << 1000 << false;
    QTest::newRow("0x84, the one placement looked at") << 0x84 << true;
}

void TestAlternatives::approximateColorIgnoresOtherPlacements()
{
    QFETCH(int, pos);
    QFETCH(bool, dark);
    QImage black(300, 200, QImage::Format_RGB32);
    black.fill(Qt::black);
    QCOMPARE(keying::approximateColor(black, pos), dark);
}

void TestAlternatives::approximateColorCountsRowsOutsideShortImage()
{
    QuietOutOfRangeReads quiet;
    // 30 rows of light, then 10 rows outside counted dark: light wins.
    QImage img(300, 30, QImage::Format_RGB32);
    img.fill(Qt::white);
    QVERIFY(!keying::approximateColor(img, 33));
    // 10 rows of light and 30 outside: dark wins.
    QImage shorter(300, 10, QImage::Format_RGB32);
    shorter.fill(Qt::white);
    QVERIFY(keying::approximateColor(shorter, 33));
    QVERIFY(keying::approximateColor(shorter, 65)); // bottom band starts above row 0
}

void TestAlternatives::dialogApproximateColorUsesPlacement()
{
    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(dFixture.ok());
    Dialog& d = *dFixture.dialog;
    const QImage img = lightWithDark(300, 200, QRect(200, 160, 100, 40)); // dark bottom right only
    QVERIFY(!d.approximateColor(img)); // no placement chosen yet: nothing sampled
    QVERIFY(QMetaObject::invokeMethod(&d, "pos22"));
    QVERIFY(d.approximateColor(img));
    QVERIFY(QMetaObject::invokeMethod(&d, "pos00"));
    QVERIFY(!d.approximateColor(img));
}

void TestAlternatives::calcFontStartsAtTwoThirdsForLongLine()
{
    QImage img(640, 480, QImage::Format_RGB32);
    const QString line = QStringLiteral("abcdefghijklmnopqrstuvwxy"); // 25 characters
    QVERIFY(lineWidth(arial(26), line) - 640 <= 20); // fits at once
    const QFont font = keying::calcFont(img, line);
    QCOMPARE(font.pixelSize(), 26);
    QCOMPARE(font.family(), QStringLiteral("Arial"));
    QVERIFY(!font.italic());
}

void TestAlternatives::calcFontStartSize_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("size");
    QTest::newRow("640 wide, short line") << 640 << QStringLiteral("Hello") << 40;
    QTest::newRow("20 characters is not long") << 640 << QStringLiteral("abcdefghijklmnopqrst") << 40;
    QTest::newRow("21 characters is long") << 640 << QStringLiteral("abcdefghijklmnopqrstu") << 26;
    QTest::newRow("narrow photo gets 6") << 64 << QStringLiteral("a") << 6;
    QTest::newRow("100 wide, 21 characters: 4 becomes 6") << 100 << QStringLiteral("iiiiiiiiiiiiiiiiiiiii") << 6;
    QTest::newRow("empty text") << 320 << QString() << 20;
    QTest::newRow("only line feeds") << 320 << QStringLiteral("\n\n") << 20;
}

void TestAlternatives::calcFontStartSize()
{
    QFETCH(int, width);
    QFETCH(QString, text);
    QFETCH(int, size);
    QImage img(width, 10, QImage::Format_RGB32);
    QCOMPARE(keying::calcFont(img, text).pixelSize(), size);
}

void TestAlternatives::calcFontLongestLineDecidesFirstAmongEquals()
{
    // Two lines of 8 characters, the narrow one first: it alone is measured, so
    // the wide one may overhang by more than 20 pixels.
    const QString narrow = QStringLiteral("iiiiiiii");
    const QString wide = QStringLiteral("WWWWWWWW");
    const int width = 160; // start size 10
    QVERIFY(lineWidth(arial(10), narrow) - width <= 20);
    QImage img(width, 50, QImage::Format_RGB32);
    QCOMPARE(keying::calcFont(img, narrow + QStringLiteral("\n\nab\n") + wide).pixelSize(), 10);
    // The other order measures the wide line, which must shrink.
    const QString wider(30, QLatin1Char('W'));
    QVERIFY(lineWidth(arial(10), wider) - width > 20);
    QVERIFY(keying::calcFont(img, QStringLiteral("ab\n") + wider).pixelSize() < 10);
}

void TestAlternatives::calcFontShrinksInStepsOfThree()
{
    QImage img(320, 100, QImage::Format_RGB32); // start size 20, 13 for a long line
    const QString line = QStringLiteral("A long caption that overhangs a small photo by far, and then some more words");
    const int start = (2 * (320 / 16)) / 3;
    QVERIFY(lineWidth(arial(start), line) - 320 > 20);
    const int size = keying::calcFont(img, line).pixelSize();
    QVERIFY(size < start);
    QCOMPARE((start - size) % 3, 0);
    QVERIFY(lineWidth(arial(size), line) - 320 <= 20);
    QVERIFY(lineWidth(arial(size + 3), line) - 320 > 20);
}

void TestAlternatives::calcFontNeverFittingTextEndsAtOnePixel()
{
    QImage img(16, 16, QImage::Format_RGB32); // start 1, raised to 6
    const QString line(400, QLatin1Char('W'));
    QVERIFY(lineWidth(arial(1), line) - 16 > 20);
    const QFont font = keying::calcFont(img, line);
    QCOMPARE(font.pixelSize(), 1);
}

void TestAlternatives::dialogCalcFontDelegates()
{
    widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(dFixture.ok());
    Dialog& d = *dFixture.dialog;
    QImage img(640, 480, QImage::Format_RGB32);
    QCOMPARE(d.calcFont(img, QStringLiteral("abcdefghijklmnopqrstuvwxy")).pixelSize(), 26);
    QCOMPARE(d.calcFont(img, QStringLiteral("abcdefghijklmnopqrstuvwxy")), keying::calcFont(img, QStringLiteral("abcdefghijklmnopqrstuvwxy")));
}

PLENDRA_TEST_MAIN(TestAlternatives)
#include "tst_alternatives.moc"
