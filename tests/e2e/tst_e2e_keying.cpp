// SPDX-License-Identifier: MIT
// The built program on a virtual screen: a click on the green backdrop of the
// preview replaces it with the chosen background.
#include "tests/support/desktopsession.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using testsupport::windowplaces::kPreview;

namespace {

// Of the pixels of `rect` that are backdrop blue in `before`, the share still
// (nearly) the same in `after`: the backdrop the click left in place. The
// beach has blue sky and sea of its own, so plain blueness says nothing.
double blueLeftInPlace(const QImage& before, const QImage& after, const QRect& rect)
{
    long blue = 0, kept = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const QRgb b = before.pixel(x, y);
            if (!(qBlue(b) > 80 && qBlue(b) > qRed(b) * 1.3 && qBlue(b) > qGreen(b) * 1.3))
                continue;
            ++blue;
            const QRgb a = after.pixel(x, y);
            if (qAbs(qRed(a) - qRed(b)) <= 6 && qAbs(qGreen(a) - qGreen(b)) <= 6 && qAbs(qBlue(a) - qBlue(b)) <= 6)
                ++kept;
        }
    }
    return blue ? double(kept) / blue : 1.0;
}

QString keep(const QString& name)
{
    const QString dir = QStringLiteral(PLENDRA_BUILD_DIR) + QStringLiteral("/screenshots");
    QDir().mkpath(dir);
    return dir + QLatin1Char('/') + name;
}

} // namespace

class TestEndToEndKeying : public QObject
{
    Q_OBJECT

private slots:
    void clickOnTheGreenBackdropShowsTheBackground()
    {
        QTemporaryDir home;
        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());

        const QImage before = app.windowShot(keep(QStringLiteral("keying-before.png")));
        QVERIFY(!before.isNull());
        const double greenBefore = testsupport::greenShare(before, kPreview);
        QVERIFY2(greenBefore > 0.35, qPrintable(QString::number(greenBefore)));

        // The sample's backdrop fills the upper-left part of the photo.
        QVERIFY(app.click(kPreview.topLeft() + QPoint(70, 90)));
        // This shot is also the README's picture, docs/screenshot.png.
        const QImage after = app.windowShot(keep(QStringLiteral("keying-after.png")));
        const double greenAfter = testsupport::greenShare(after, kPreview);
        QVERIFY2(greenAfter < greenBefore / 4, qPrintable(QString("%1 -> %2").arg(greenBefore).arg(greenAfter)));
        // Outside the preview nothing changed.
        QCOMPARE(after.copy(0, 0, 817, 60), before.copy(0, 0, 817, 60));

        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
        QCOMPARE(QDir(home.path() + "/Documents/Plendra").entryList(QDir::Files), QStringList());
    }

    void clickOnTheBlueSamplesBackdropShowsTheBackground()
    {
        QTemporaryDir home;
        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());

        // The blue sample is the second thumbnail of FOREGROUNDS.
        QVERIFY(app.click(QPoint(95, 220)));
        const QImage chosen = app.windowShot(keep(QStringLiteral("blue-chosen.png")));
        const double blueBefore = testsupport::blueShare(chosen, kPreview);
        QVERIFY2(blueBefore > 0.35, qPrintable(QString::number(blueBefore)));

        QVERIFY(app.click(kPreview.topLeft() + QPoint(70, 90)));
        const QImage keyed = app.windowShot(keep(QStringLiteral("blue-keyed.png")));
        const double left = blueLeftInPlace(chosen, keyed, kPreview);
        QVERIFY2(left < 0.1, qPrintable(QString::number(left)));

        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
    }
};

QTEST_GUILESS_MAIN(TestEndToEndKeying)
#include "tst_e2e_keying.moc"
