// SPDX-License-Identifier: MIT
// The built program on a virtual screen: a click on the green backdrop of the
// preview replaces it with the chosen background.
#include "tests/support/desktopsession.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The preview, in window coordinates.
const QRect kPreview(200, 80, 421, 351);

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
        const QImage after = app.windowShot(keep(QStringLiteral("keying-after.png")));
        const double greenAfter = testsupport::greenShare(after, kPreview);
        QVERIFY2(greenAfter < greenBefore / 4, qPrintable(QString("%1 -> %2").arg(greenBefore).arg(greenAfter)));
        // Outside the preview nothing changed.
        QCOMPARE(after.copy(0, 0, 817, 60), before.copy(0, 0, 817, 60));

        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
        QCOMPARE(QDir(home.path() + "/Documents/Plendra").entryList(QDir::Files), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestEndToEndKeying)
#include "tst_e2e_keying.moc"
