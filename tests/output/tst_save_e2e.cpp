// SPDX-License-Identifier: MIT
// The built program on a virtual screen: click the backdrop, press "Save
// Image", and find the composite in Documents/Plendra with the desktop opener
// called on the folder and then on the file.
#include "keying/keymask.h"
#include "tests/output/outputtestsupport.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGraphicsView>
#include <QImageReader>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>

namespace {

// Where the window lays out the preview and "Save Image" (window-relative).
const QRect kPreview(200, 80, 421, 351);
const QRect kSaveImage(310, 470, 161, 34);
// A backdrop point near the preview's top left corner.
const QPoint kBackdropInPreview(20, 20);

struct Result
{
    int exitCode = -1;
    QString out;
};

Result runTool(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    Result r;
    if (!p.waitForStarted(10000) || !p.waitForFinished(30000))
        return r;
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = QString::fromLocal8Bit(p.readAllStandardOutput()).trimmed();
    return r;
}

double meanDifference(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        for (int col = 0; col < x.width(); ++col) {
            const QRgb p = x.pixel(col, row);
            const QRgb q = y.pixel(col, row);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * x.width() * x.height());
}

} // namespace

class SaveEndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    void keyAndSaveInTheRunningProgram()
    {
        const QString buildDir = QStringLiteral(PLENDRA_BUILD_DIR);
        QTemporaryDir home;
        QVERIFY(home.isValid());
        outputtest::RecordingOpener opener;
        QVERIFY(opener.isValid());

        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home.path());
        env.insert(QStringLiteral("PATH"), QString::fromLocal8Bit(opener.pathWithOpenerFirst()));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        QProcess program;
        program.setProcessEnvironment(env);
        program.setWorkingDirectory(buildDir);
        program.setProgram(QStringLiteral(PLENDRA_BUNDLE_EXE));
        program.start();
        QVERIFY2(program.waitForStarted(20000), qPrintable(program.errorString()));
        auto stop = qScopeGuard([&] {
            program.terminate();
            if (!program.waitForFinished(5000)) {
                program.kill();
                program.waitForFinished(5000);
            }
        });

        QString window;
        QElapsedTimer waited;
        waited.start();
        while (window.isEmpty() && waited.elapsed() < 30000) {
            const Result found = runTool(QStringLiteral("xdotool"),
                                         {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                                          QStringLiteral("^Plendra - photo v1\\.3$")});
            if (found.exitCode == 0 && !found.out.isEmpty())
                window = found.out.split(QLatin1Char('\n')).first();
            else
                QTest::qWait(200);
        }
        QVERIFY2(!window.isEmpty(), "the window \"Plendra - photo v1.3\" did not appear");
        const QString output = home.path() + QStringLiteral("/Documents/Plendra");
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(output).isDir(), 10000);
        QTest::qWait(500); // let the first paint finish
        const auto before = outputtest::listTree(home.path());

        const QPoint backdrop = kPreview.topLeft() + kBackdropInPreview;
        const QPoint save = kSaveImage.center();
        for (const QPoint& at : {backdrop, save}) {
            const Result clicked = runTool(QStringLiteral("xdotool"),
                                           {QStringLiteral("mousemove"), QStringLiteral("--window"), window,
                                            QString::number(at.x()), QString::number(at.y()), QStringLiteral("click"),
                                            QStringLiteral("1")});
            QCOMPARE(clicked.exitCode, 0);
            QTest::qWait(300);
        }

        const QString target = output + QStringLiteral("/1green.JPG");
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(target) && opener.calls().size() >= 2, 15000);
        QTest::qWait(300);
        const QString screenshot = QCoreApplication::applicationDirPath() + QStringLiteral("/output_save_e2e.png");
        QCOMPARE(runTool(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), screenshot}).exitCode, 0);

        const QList<QStringList> expectedCalls{{output}, {target}};
        QCOMPARE(opener.calls(), expectedCalls);
        QCOMPARE(outputtest::changedEntries(before, outputtest::listTree(home.path())),
                 QStringList{QStringLiteral("Documents/Plendra/1green.JPG")});

        // The file: a JPEG of the sample's size holding the keyed composite.
        QImageReader reader(target);
        QCOMPARE(reader.format(), QByteArray("jpeg"));
        const QImage saved = reader.read();
        QVERIFY2(!saved.isNull(), qPrintable(reader.errorString()));
        QImage photo(buildDir + QStringLiteral("/1green.JPG"));
        QVERIFY(!photo.isNull());
        QCOMPARE(saved.size(), photo.size());

        // The same keying worked out here: first background by name, scaled
        // to the photo, key colour under the click (the view's frame offsets
        // the viewport, and the whole view stands for the whole photo).
        QDir backgrounds(buildDir + QStringLiteral("/Bkg"));
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
        QVERIFY2(meanDifference(expected, photo) > 10.0, "the click keyed nothing");
        const double off = meanDifference(saved, expected);
        QVERIFY2(off < 4.0, qPrintable(QStringLiteral("saved file differs from the composite by %1").arg(off)));
    }
};

PLENDRA_TEST_MAIN(SaveEndToEndTest)
#include "tst_save_e2e.moc"
