// SPDX-License-Identifier: MIT
// "Save Image" never destroys a good file: a save that fails (a full disk, a
// folder that refuses writing) leaves the earlier composite of that name, or
// no file, and never part of one nor a temporary file; a save that works
// writes exactly the bytes the image writer gives.
#include "mainwindow/dialog.h"
#include "state/globals.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/recordingopener.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {

// A point on the backdrop of the generated studio shots, in the preview.
const QPoint kBackdrop(20, 20);

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// Random pixels do not compress: a 640 x 480 one is about a megabyte as PNG.
QImage incompressible(quint32 seed)
{
    return testsupport::randomImage(640, 480, QImage::Format_RGB32, seed);
}

// Lists `photo` in FOREGROUNDS by a drop, chooses it, keys it with a click on
// the backdrop and presses "Save Image".
void keyAndSave(Dialog& d, const QString& photo)
{
    const widgettest::WindowWidgets ui(d);
    widgettest::dropFile(ui.listWidget, photo);
    widgettest::clickRow(ui.listWidget, ui.listWidget->count() - 1);
    widgettest::pressAt(ui.graphicsView->viewport(), Qt::LeftButton, kBackdrop);
    QTest::mouseClick(ui.Run, Qt::LeftButton);
}

} // namespace

// In a child that cannot override file permissions: a good composite is in
// the output folder, the folder is made read-only, and the photo is saved
// again with other pixels.
PLENDRA_CHILD_SCENARIO("resave-into-read-only-folder")
{
    widgettest::resetGlobals();
    const QString work = qEnvironmentVariable("PLENDRA_ATOMIC_WORK");
    const QString output = work + QStringLiteral("/out");
    widgettest::Window w;
    if (!w.ok()) {
        std::puts("no window");
        return;
    }
    MyGlobal::outputDir = output;
    keyAndSave(*w.dialog, work + QStringLiteral("/pics/shot.png"));
    std::puts(entriesOf(output) == QStringList{QStringLiteral("shot.png")} ? "only the earlier file" : "other entries");
    std::fflush(stdout);
}

class SaveAtomicTest : public widgettest::WindowTestCase
{
    Q_OBJECT

private:
    testsupport::RecordingOpener m_opener;
    QTemporaryDir m_work;

    QString pic(const QString& name) const { return m_work.path() + QStringLiteral("/pics/") + name; }

private slots:
    void initTestCase()
    {
        QVERIFY(m_opener.isValid());
        m_opener.putFirstOnPath();
        QVERIFY(m_work.isValid());
    }
    void savedBytesAreTheWritersBytes_data();
    void savedBytesAreTheWritersBytes();
    void firstSaveOnAFullDiskLeavesNothing();
    void failedResaveOnAFullDiskKeepsTheEarlierFile();
    void readOnlyFolderKeepsTheEarlierFile();
};

void SaveAtomicTest::savedBytesAreTheWritersBytes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("JPEG") << QStringLiteral("shot.JPG") << QByteArray("jpeg");
    QTest::newRow("PNG") << QStringLiteral("shot.png") << QByteArray("png");
    QTest::newRow("TIFF") << QStringLiteral("shot.tif") << QByteArray("tiff");
    QTest::newRow("BMP") << QStringLiteral("shot.bmp") << QByteArray("bmp");
}

void SaveAtomicTest::savedBytesAreTheWritersBytes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, format);
    QTemporaryDir out;
    QTemporaryDir direct;
    QVERIFY(testsupport::writeImage(testsupport::studioShot(240, 180, QColor(40, 180, 60), 7), pic(name)));
    widgettest::Window w;
    QVERIFY(w.ok());
    MyGlobal::outputDir = out.path();
    keyAndSave(*w.dialog, pic(name));

    // The composite as the window holds it, written straight to a file by
    // the image writer at its default quality.
    const QString reference = direct.filePath(name);
    QVERIFY(DialogTestAccess::preview(*w.dialog).toImage().save(reference, nullptr, -1));
    const QByteArray saved = testsupport::fileBytes(out.filePath(name));
    QVERIFY(!saved.isEmpty());
    QCOMPARE(saved, testsupport::fileBytes(reference));
    QCOMPARE(QImageReader::imageFormat(out.filePath(name)), format);
    QCOMPARE(entriesOf(out.path()), QStringList{name});
}

void SaveAtomicTest::firstSaveOnAFullDiskLeavesNothing()
{
    testsupport::SmallDisk disk(256);
    if (!disk.mounted())
        QSKIP(qPrintable(disk.why()));
    QVERIFY(testsupport::writeImage(incompressible(1), pic(QStringLiteral("noise.png"))));
    widgettest::Window w;
    QVERIFY(w.ok());
    MyGlobal::outputDir = disk.path();
    m_opener.forgetCalls();
    keyAndSave(*w.dialog, pic(QStringLiteral("noise.png")));

    QCOMPARE(entriesOf(disk.path()), QStringList());
    // Nothing is said; the folder and the (missing) file are still shown.
    const QList<QStringList> shown{{disk.path()}, {disk.path() + QStringLiteral("/noise.png")}};
    QCOMPARE(m_opener.calls(), shown);
    QVERIFY(widgettest::WindowWidgets(*w.dialog).Run->isEnabled());
}

void SaveAtomicTest::failedResaveOnAFullDiskKeepsTheEarlierFile()
{
    testsupport::SmallDisk disk(256);
    if (!disk.mounted())
        QSKIP(qPrintable(disk.why()));
    const QString photo = pic(QStringLiteral("resave.png"));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 8), photo));
    widgettest::Window w;
    QVERIFY(w.ok());
    MyGlobal::outputDir = disk.path();
    keyAndSave(*w.dialog, photo);
    const QString target = disk.path() + QStringLiteral("/resave.png");
    const QByteArray good = testsupport::fileBytes(target);
    QVERIFY(!good.isEmpty());

    // The same photo file now holds a picture too large for the disk.
    QVERIFY(testsupport::writeImage(incompressible(2), photo));
    keyAndSave(*w.dialog, photo);
    QCOMPARE(testsupport::fileBytes(target), good);
    QCOMPARE(entriesOf(disk.path()), QStringList{QStringLiteral("resave.png")});
}

void SaveAtomicTest::readOnlyFolderKeepsTheEarlierFile()
{
    const QString output = m_work.path() + QStringLiteral("/out");
    QVERIFY(QDir().mkpath(output));
    const QString photo = pic(QStringLiteral("shot.png"));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(200, 150, QColor(40, 70, 200), 9), photo));
    // An earlier composite of that name, with other bytes than a new save's.
    const QString target = output + QStringLiteral("/shot.png");
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(200, 150, 10), target));
    const QByteArray earlier = testsupport::fileBytes(target);
    QVERIFY(QFile::setPermissions(output, QFile::ReadOwner | QFile::ExeOwner));

    QTemporaryDir childTmp(m_work.path() + QStringLiteral("/tmp-XXXXXX"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PLENDRA_ATOMIC_WORK"), m_work.path());
    env.insert(QStringLiteral("TMPDIR"), childTmp.path());
    const testsupport::ChildRun run =
        testsupport::runChildScenarioWithoutFileOverrides(QStringLiteral("resave-into-read-only-folder"), env);
    QVERIFY(QFile::setPermissions(output, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    QVERIFY(run.started);
    QVERIFY2(!run.crashed && run.exitCode == 0, run.standardError.constData());
    QVERIFY2(run.standardOutput.contains("only the earlier file"), run.standardOutput.constData());
    QCOMPARE(testsupport::fileBytes(target), earlier);
    QCOMPARE(entriesOf(output), QStringList{QStringLiteral("shot.png")});
}

PLENDRA_TEST_MAIN(SaveAtomicTest)
#include "tst_saveatomic.moc"
