// SPDX-License-Identifier: MIT
#include "tests/output/savecheck.h"

#include "keying/keymask.h"
#include "tests/support/desktopsession.h"
#include "tests/support/foldertree.h"
#include "tests/support/recordingopener.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QGraphicsView>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

namespace outputtest {

using testsupport::changedEntries;
using testsupport::listTree;
using testsupport::RecordingOpener;

using namespace testsupport::windowplaces;

namespace {

// A backdrop point near the preview's top left corner.
const QPoint kBackdropInPreview(20, 20);

// The composite the click should give: first background by name, scaled to
// the photo, key colour under the click (the view's frame offsets the
// viewport, and the whole view stands for the whole photo).
void checkComposite(const QString& samplesDir, const QString& target)
{
    QImageReader reader(target);
    QCOMPARE(reader.format(), QByteArray("jpeg"));
    const QImage saved = reader.read();
    QVERIFY2(!saved.isNull(), qPrintable(reader.errorString()));
    QImage photo(samplesDir + QStringLiteral("/1green.JPG"));
    QVERIFY(!photo.isNull());
    QCOMPARE(saved.size(), photo.size());

    QDir backgrounds(samplesDir + QStringLiteral("/Bkg"));
    backgrounds.setNameFilters({QStringLiteral("*.PNG"), QStringLiteral("*.JPG"), QStringLiteral("*.png"),
                                QStringLiteral("*.jpg")});
    const QStringList names = backgrounds.entryList();
    QVERIFY(!names.isEmpty());
    const QImage background = QImage(backgrounds.filePath(names.first()))
                                  .scaled(photo.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
    QGraphicsView sameStyle;
    const QPoint inViewport = kBackdropInPreview - QPoint(sameStyle.frameWidth(), sameStyle.frameWidth());
    const QRgb key = photo.pixel(photo.width() * inViewport.x() / kPreview.width(),
                                 photo.height() * inViewport.y() / kPreview.height());
    QImage expected = photo;
    keying::maskOut(expected, background, key);
    QVERIFY2(testsupport::meanDifference(expected, photo) > 10.0, "the click keyed nothing");
    const double off = testsupport::meanDifference(saved, expected);
    QVERIFY2(off < 4.0, qPrintable(QStringLiteral("saved file differs from the composite by %1").arg(off)));
}

} // namespace

void checkKeyAndSave(const ProgramUnderTest& under)
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    RecordingOpener opener;
    QVERIFY(opener.isValid());

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PATH"), QString::fromLocal8Bit(opener.pathWithOpenerFirst()));
    testsupport::DesktopSession app(home.path(), env);
    if (!under.program.isEmpty())
        app.useProgram(under.program, under.workingDirectory);
    QVERIFY2(app.start(), "the window \"Plendra - photo v1.3\" did not appear");
    const QString output = home.path() + QStringLiteral("/Documents/Plendra");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(output).isDir(), 10000);
    const auto before = listTree(home.path());

    QVERIFY(app.click(kPreview.topLeft() + kBackdropInPreview));
    QVERIFY(app.click(kSaveImage.center()));

    const QString target = output + QStringLiteral("/1green.JPG");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(target) && opener.calls().size() >= 2, 15000);
    QTest::qWait(300);
    QVERIFY(!app.screenshot(under.screenshotPath).isNull());

    const QList<QStringList> expectedCalls{{output}, {target}};
    QCOMPARE(opener.calls(), expectedCalls);
    QCOMPARE(changedEntries(before, listTree(home.path())), QStringList{QStringLiteral("Documents/Plendra/1green.JPG")});
    checkComposite(under.samplesDir, target);
}

} // namespace outputtest
