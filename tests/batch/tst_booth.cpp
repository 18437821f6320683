// SPDX-License-Identifier: MIT
// plendra-batch's booth options as a booth runs them: the backdrop colour
// found in each photo (-c auto) and its refusal of a photo with no backdrop;
// several backgrounds from one keying, each composite byte for byte a run
// with that background alone; the overlay; print sizes; the cut-out with
// them; a watch writing every composite of a photo; and their usage errors.
#include "keying/backdropcolour.h"
#include "keying/finishing.h"
#include "tests/batch/batchtooltest.h"
#include "tests/support/boothscenes.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QThread>

#include <csignal>

using batchtest::entriesOf;
using batchtest::runTool;
using batchtest::ToolRun;

namespace {

QString hexColour(QRgb c)
{
    return QStringLiteral("#%1").arg(c & 0xFFFFFF, 6, 16, QLatin1Char('0')).toUpper();
}

QJsonObject jsonFor(const ToolRun& run, const QString& name)
{
    for (const QString& line : run.outputLines()) {
        const QJsonObject o = QJsonDocument::fromJson(line.toUtf8()).object();
        if (o.value(QStringLiteral("name")).toString() == name)
            return o;
    }
    return QJsonObject();
}

// A frame: opaque red band at the top, half-transparent white band at the
// bottom, clear in between.
QImage framePicture(int w, int h)
{
    QImage frame(w, h, QImage::Format_ARGB32);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x)
            frame.setPixel(x, y, y < h / 4 ? qRgba(200, 0, 0, 255) : y >= 3 * h / 4 ? qRgba(255, 255, 255, 128) : 0u);
    }
    return frame;
}

} // namespace

class TestBooth : public batchtest::ToolTestCase
{
    Q_OBJECT

private:
    QImage background() const override { return testsupport::backgroundPicture(300, 200, 7); }

    // Three backgrounds of different base names and a frame, written once.
    QStringList m_backgrounds;
    QString m_frame;

    // Booth photos: a green subject in the middle and a blue one on the side.
    QString boothFolder(const QString& name, const QString& suffix)
    {
        const QString in = folder(name);
        boothscenes::SceneRecipe green;
        green.seed = 41;
        boothscenes::SceneRecipe blue;
        blue.blue = true;
        blue.placement = boothscenes::Placement::Side;
        blue.width = 320;
        blue.height = 400;
        blue.seed = 42;
        if (!testsupport::writeImage(boothscenes::makeScene(green).photo, in + QStringLiteral("/guest1.") + suffix)
            || !testsupport::writeImage(boothscenes::makeScene(blue).photo, in + QStringLiteral("/guest2.") + suffix))
            return QString();
        return in;
    }

private slots:
    void init()
    {
        if (!m_backgrounds.isEmpty())
            return;
        const QString bg = folder(QStringLiteral("backgrounds"));
        m_backgrounds = {bg + QStringLiteral("/beach.jpg"), bg + QStringLiteral("/city.png"), bg + QStringLiteral("/stars.jpg")};
        for (int i = 0; i < 3; ++i)
            QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(400 - 50 * i, 300, 20 + quint32(i)), m_backgrounds[i]));
        m_frame = bg + QStringLiteral("/frame.png");
        QVERIFY(testsupport::writeImage(framePicture(90, 60), m_frame));
    }

    // -c auto keys each photo with the colour found in it: the same bytes as
    // a run given that colour, which --json reports.
    void autoKeyIsTheColourFoundInEachPhoto()
    {
        const QString in = boothFolder(QStringLiteral("auto-in"), QStringLiteral("png"));
        QVERIFY(!in.isEmpty());
        const QString out = folder(QStringLiteral("auto-out"));
        const ToolRun run = runTool({QStringLiteral("-b"), m_background, QStringLiteral("-c"), QStringLiteral("auto"),
                                     QStringLiteral("--json"), QStringLiteral("-o"), out, in});
        QCOMPARE(run.exitCode, 0);
        for (const QString& name : {QStringLiteral("guest1.png"), QStringLiteral("guest2.png")}) {
            const keying::BackdropEstimate found = keying::estimateBackdrop(QImage(in + QLatin1Char('/') + name));
            QVERIFY(found.found);
            const QJsonObject o = jsonFor(run, name);
            QCOMPARE(o.value(QStringLiteral("keyColour")).toString(), hexColour(found.colour));
            const QString fixed = folder(QStringLiteral("fixed-out"));
            const ToolRun same = runTool({QStringLiteral("-b"), m_background, QStringLiteral("-c"), hexColour(found.colour),
                                          QStringLiteral("-o"), fixed, in + QLatin1Char('/') + name});
            QCOMPARE(same.exitCode, 0);
            QCOMPARE(testsupport::fileBytes(out + QLatin1Char('/') + name), testsupport::fileBytes(fixed + QLatin1Char('/') + name));
        }
    }

    // A photo with no backdrop: one line naming it, exit status 1, nothing
    // written for it; the booth's other photo still keyed.
    void autoKeyRefusesAPhotoWithoutBackdrop()
    {
        const QString in = boothFolder(QStringLiteral("refuse-in"), QStringLiteral("png"));
        QVERIFY(!in.isEmpty());
        QVERIFY(QFile::remove(in + QStringLiteral("/guest2.png")));
        QVERIFY(testsupport::writeImage(boothscenes::noBackdropPhoto(boothscenes::NoBackdrop::Indoor, 400, 300, 3),
                                        in + QStringLiteral("/lobby.png")));
        const QString out = folder(QStringLiteral("refuse-out"));
        for (const bool transparent : {false, true}) {
            QStringList args{QStringLiteral("-c"), QStringLiteral("auto"), QStringLiteral("-o"), out, in};
            args << (transparent ? QStringList{QStringLiteral("--transparent")} : QStringList{QStringLiteral("-b"), m_background});
            const ToolRun run = runTool(args);
            QCOMPARE(run.exitCode, 1);
            const QStringList errors = run.errorLines().filter(QStringLiteral("lobby.png"));
            QCOMPARE(errors.size(), 1);
            QVERIFY2(errors.first().endsWith(QStringLiteral(": no green or blue backdrop found")), qPrintable(errors.first()));
            QVERIFY(QFile::exists(out + QStringLiteral("/guest1.png")));
            QVERIFY(!QFile::exists(out + QStringLiteral("/lobby.png")));
        }
    }

    // Each composite of a run with three backgrounds is, byte for byte, the
    // composite a run with that background alone writes; with one they keep
    // the photo's name.
    void severalBackgroundsEqualSingleRuns_data()
    {
        QTest::addColumn<QStringList>("key");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QStringList>("extra");
        const QStringList click{QStringLiteral("-k"), QStringLiteral("5,5")};
        const QStringList colour{QStringLiteral("-c"), QStringLiteral("#3CC850")};
        const QStringList found{QStringLiteral("-c"), QStringLiteral("auto")};
        QTest::newRow("click, jpg") << click << "jpg" << QStringList();
        QTest::newRow("colour, png") << colour << "png" << QStringList();
        QTest::newRow("auto, jpg") << found << "jpg" << QStringList();
        QTest::newRow("auto, png, size and overlay") << found << "png"
                                                     << QStringList{QStringLiteral("--size"), QStringLiteral("300x200"),
                                                                    QStringLiteral("--overlay"), QStringLiteral("FRAME")};
        QTest::newRow("click, jpg, size, overlay, quality") << click << "jpg"
            << QStringList{QStringLiteral("--size"), QStringLiteral("120x180"), QStringLiteral("--overlay"),
                           QStringLiteral("FRAME"), QStringLiteral("-q"), QStringLiteral("80")};
        QTest::newRow("colour, png in, jpg out") << colour << "png" << QStringList{QStringLiteral("-f"), QStringLiteral("jpg")};
        // Keyed softly: one soft cut-out laid on each background.
        QTest::newRow("soft, click, png") << click << "png" << QStringList{QStringLiteral("--soft")};
        QTest::newRow("soft, auto, jpg, size and overlay") << found << "jpg"
            << QStringList{QStringLiteral("--soft"), QStringLiteral("--size"), QStringLiteral("300x200"),
                           QStringLiteral("--overlay"), QStringLiteral("FRAME")};
    }

    void severalBackgroundsEqualSingleRuns()
    {
        QFETCH(QStringList, key);
        QFETCH(QString, suffix);
        QFETCH(QStringList, extra);
        extra.replaceInStrings(QStringLiteral("FRAME"), m_frame);
        const QString in = boothFolder(QStringLiteral("several-in"), suffix);
        QVERIFY(!in.isEmpty());
        const QString out = folder(QStringLiteral("several-out"));
        QStringList args = key + extra + QStringList{QStringLiteral("--json"), QStringLiteral("-o"), out, in};
        for (const QString& b : std::as_const(m_backgrounds))
            args << QStringLiteral("-b") << b;
        const ToolRun run = runTool(args);
        QVERIFY2(run.exitCode == 0, run.standardError.constData());
        const QString outSuffix = extra.contains(QStringLiteral("-f")) ? QStringLiteral("jpg") : suffix;
        QStringList expected;
        for (const QString& photo : {QStringLiteral("guest1"), QStringLiteral("guest2")})
            for (const QString& b : {QStringLiteral("beach"), QStringLiteral("city"), QStringLiteral("stars")})
                expected << photo + QLatin1Char('_') + b + QLatin1Char('.') + outSuffix;
        expected.sort();
        QCOMPARE(entriesOf(out), expected);
        // JSON names every composite of the photo.
        const QJsonArray outputs = jsonFor(run, QStringLiteral("guest1.") + suffix).value(QStringLiteral("outputs")).toArray();
        QCOMPARE(outputs.size(), 3);
        QCOMPARE(outputs.at(1).toString(), out + QStringLiteral("/guest1_city.") + outSuffix);
        for (const QString& b : std::as_const(m_backgrounds)) {
            const QString alone = folder(QStringLiteral("alone"));
            const ToolRun single = runTool(key + extra + QStringList{QStringLiteral("-b"), b, QStringLiteral("-o"), alone, in});
            QVERIFY2(single.exitCode == 0, single.standardError.constData());
            const QString base = QFileInfo(b).completeBaseName();
            for (const QString& photo : {QStringLiteral("guest1"), QStringLiteral("guest2")}) {
                const QByteArray one = testsupport::fileBytes(alone + QLatin1Char('/') + photo + QLatin1Char('.') + outSuffix);
                QVERIFY(!one.isEmpty());
                QVERIFY2(testsupport::fileBytes(out + QLatin1Char('/') + photo + QLatin1Char('_') + base + QLatin1Char('.') + outSuffix) == one,
                         qPrintable(photo + QLatin1Char('_') + base));
            }
        }
    }

    // --size: every composite has the print size; --overlay: the frame's
    // opaque band is the frame's colour, its clear middle the composite.
    void sizeAndOverlayFinishTheComposite()
    {
        const QString in = boothFolder(QStringLiteral("finish-in"), QStringLiteral("png"));
        QVERIFY(!in.isEmpty());
        const QString plain = folder(QStringLiteral("plain"));
        const QString out = folder(QStringLiteral("finished"));
        QCOMPARE(runTool({QStringLiteral("-b"), m_background, QStringLiteral("-c"), QStringLiteral("auto"), QStringLiteral("-o"), plain, in}).exitCode, 0);
        for (const QSize size : {QSize(300, 200), QSize(200, 300)}) {
            const ToolRun run = runTool({QStringLiteral("-b"), m_background, QStringLiteral("-c"), QStringLiteral("auto"),
                                         QStringLiteral("--size"), QStringLiteral("%1x%2").arg(size.width()).arg(size.height()),
                                         QStringLiteral("--overlay"), m_frame, QStringLiteral("-o"), out, in});
            QCOMPARE(run.exitCode, 0);
            for (const QString& name : {QStringLiteral("guest1.png"), QStringLiteral("guest2.png")}) {
                const QImage got(out + QLatin1Char('/') + name);
                QCOMPARE(got.size(), size);
                QCOMPARE(got.pixel(size.width() / 2, 2), qRgb(200, 0, 0));
                // The clear middle: the plain composite, covered and cropped.
                const QImage want = keying::coverAndCrop(QImage(plain + QLatin1Char('/') + name).convertToFormat(QImage::Format_RGB32), size);
                QCOMPARE(got.pixel(size.width() / 2, size.height() / 2), want.pixel(size.width() / 2, size.height() / 2));
                const QRgb half = got.pixel(size.width() / 2, size.height() - 3);
                const QRgb under = want.pixel(size.width() / 2, size.height() - 3);
                QVERIFY(qAbs(qRed(half) - (128 + qRed(under) * 127 / 255)) <= 2);
            }
        }
    }

    // --transparent with several backgrounds: one cut-out per photo, under
    // the photo's name; --size finishes it too.
    void cutOutIgnoresBackgroundsAndTakesTheSize()
    {
        const QString in = boothFolder(QStringLiteral("cut-in"), QStringLiteral("jpg"));
        QVERIFY(!in.isEmpty());
        const QString out = folder(QStringLiteral("cut-out"));
        QStringList args{QStringLiteral("--transparent"), QStringLiteral("-c"), QStringLiteral("auto"),
                         QStringLiteral("--size"), QStringLiteral("180x120"), QStringLiteral("-o"), out, in};
        for (const QString& b : std::as_const(m_backgrounds))
            args << QStringLiteral("-b") << b;
        const ToolRun run = runTool(args);
        QVERIFY2(run.exitCode == 0, run.standardError.constData());
        QCOMPARE(entriesOf(out), (QStringList{QStringLiteral("guest1.png"), QStringLiteral("guest2.png")}));
        const QImage cut(out + QStringLiteral("/guest1.png"));
        QCOMPARE(cut.size(), QSize(180, 120));
        QVERIFY(cut.hasAlphaChannel());
        QCOMPARE(qAlpha(cut.pixel(2, 2)), 0);           // backdrop at the corner
        QCOMPARE(qAlpha(cut.pixel(90, 110)), 255);      // the subject's body
    }

    void usageErrorsAreOneLineAndExitTwo_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("reason");
        const QString size = QStringLiteral("the size must be WxH");
        for (const QString& bad : {QStringLiteral("0x100"), QStringLiteral("100x"), QStringLiteral("abc"),
                                  QStringLiteral("-5x5"), QStringLiteral("20000x20000"), QStringLiteral("100x100x3")})
            QTest::addRow("size %s", qPrintable(bad)) << QStringList{QStringLiteral("--size"), bad} << size;
        QTest::newRow("missing overlay") << QStringList{QStringLiteral("--overlay"), QStringLiteral("MISSING")}
                                         << QStringLiteral("cannot read the overlay");
        QTest::newRow("overlay not a picture") << QStringList{QStringLiteral("--overlay"), QStringLiteral("TEXT")}
                                               << QStringLiteral("cannot read the overlay");
        QTest::newRow("empty overlay name") << QStringList{QStringLiteral("--overlay"), QString()}
                                            << QStringLiteral("--overlay FILE");
        QTest::newRow("two backgrounds of one base name") << QStringList{QStringLiteral("-b"), QStringLiteral("OTHERBEACH")}
                                                          << QStringLiteral("two backgrounds are named beach");
        QTest::newRow("bad key colour") << QStringList{QStringLiteral("-c"), QStringLiteral("automatic")}
                                        << QStringLiteral("or auto");
        QTest::newRow("a second background unreadable") << QStringList{QStringLiteral("-b"), QStringLiteral("TEXT")}
                                                        << QStringLiteral("cannot read the background");
    }

    void usageErrorsAreOneLineAndExitTwo()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, reason);
        const QString in = boothFolder(QStringLiteral("usage-in"), QStringLiteral("jpg"));
        const QString out = folder(QStringLiteral("usage-out"));
        const QString other = folder(QStringLiteral("other"));
        QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(50, 40, 9), other + QStringLiteral("/beach.png")));
        const QString text = other + QStringLiteral("/text.png");
        QFile f(text);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write("not a picture\n") > 0);
        f.close();
        args.replaceInStrings(QStringLiteral("MISSING"), other + QStringLiteral("/missing.png"));
        args.replaceInStrings(QStringLiteral("TEXT"), text);
        args.replaceInStrings(QStringLiteral("OTHERBEACH"), other + QStringLiteral("/beach.png"));
        QStringList all{QStringLiteral("-b"), m_backgrounds.first()};
        if (!args.contains(QStringLiteral("-c")))
            all << QStringLiteral("-c") << QStringLiteral("auto");
        all << args << QStringLiteral("-o") << out << in;
        const ToolRun run = runTool(all);
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.errorLines().size(), 2);
        QVERIFY2(run.errorLines().first().contains(reason), run.standardError.constData());
        QVERIFY(run.errorLines().at(1).startsWith(QStringLiteral("Usage: plendra-batch")));
        QCOMPARE(entriesOf(out), QStringList());
    }

    // A watch with several backgrounds writes every composite of a photo and
    // records it once all are written: a second watch of the same folders
    // keys nothing again.
    void watchWritesEveryCompositeBeforeRecordingThePhoto()
    {
        const QString in = folder(QStringLiteral("watch-in"));
        const QString out = folder(QStringLiteral("watch-out"));
        QStringList args{QStringLiteral("--watch"), QStringLiteral("--settle"), QStringLiteral("400"),
                         QStringLiteral("-c"), QStringLiteral("auto"), QStringLiteral("-o"), out};
        for (const QString& b : std::as_const(m_backgrounds))
            args << QStringLiteral("-b") << b;
        args << in;
        // One composite cannot be written at first: a folder holds its name.
        QVERIFY(QDir().mkpath(out + QStringLiteral("/guest_city.jpg")));
        {
            batchtest::RunningTool watch(args);
            QVERIFY(watch.started());
            QThread::msleep(300);
            QVERIFY(testsupport::writeImage(boothscenes::makeScene(boothscenes::SceneRecipe()).photo, in + QStringLiteral("/guest.jpg")));
            QVERIFY2(watch.waitForError(QStringLiteral("trying again"), 30000), qPrintable(watch.errors()));
            QVERIFY(QFile::exists(out + QStringLiteral("/guest_beach.jpg")));
            QCOMPARE(watch.count(QStringLiteral("keyed ") + in), 0);
            // The output works again: the photo is written whole and recorded.
            QVERIFY(QDir(out + QStringLiteral("/guest_city.jpg")).removeRecursively());
            QVERIFY2(watch.waitForLine(QStringLiteral("keyed ") + in, 90000), qPrintable(watch.errors()));
            for (const QString& b : {QStringLiteral("beach"), QStringLiteral("city"), QStringLiteral("stars")})
                QVERIFY(!QImage(out + QStringLiteral("/guest_") + b + QStringLiteral(".jpg")).isNull());
            QCOMPARE(watch.stop(SIGINT), 0);
        }
        batchtest::RunningTool again(args);
        QVERIFY(again.started());
        QVERIFY2(again.waitForLine(QStringLiteral("skipped ")), qPrintable(again.errors()));
        QCOMPARE(again.count(QStringLiteral("keyed ") + in), 0);
        QCOMPARE(again.stop(SIGINT), 0);
    }
};

QTEST_MAIN(TestBooth)
#include "tst_booth.moc"
