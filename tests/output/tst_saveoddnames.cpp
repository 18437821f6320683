// SPDX-License-Identifier: MIT
// "Save Image" with an output folder whose path holds a blank and a photo
// whose name holds a double quote and a backslash: the composite is written
// under the photo's exact name, and the desktop opener gets the two paths
// appended unquoted to its command line, cut into arguments at the blanks.
#include "state/globals.h"
#include "mainwindow/dialog.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/recordingopener.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QGraphicsView>
#include <QImageReader>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

class SaveOddNamesTest : public widgettest::WindowTestCase
{
    Q_OBJECT

private:
    testsupport::RecordingOpener m_opener;

private slots:
    void initTestCase()
    {
        QVERIFY(m_opener.isValid());
        m_opener.putFirstOnPath();
    }

    void blankInFolderQuoteAndBackslashInName();
};

void SaveOddNamesTest::blankInFolderQuoteAndBackslashInName()
{
    QTemporaryDir work;
    QVERIFY(work.isValid());
    const QString base = work.path();
    // The expected command lines below are written for a base path that the
    // opener's command line leaves in one piece.
    QVERIFY2(!base.contains(QLatin1Char(' ')) && !base.contains(QLatin1Char('"')), qPrintable(base));

    const QString output = base + QStringLiteral("/my shots/out");
    QVERIFY(QDir().mkpath(output));
    const QString name = QStringLiteral("a\"b\\c.png"); // a"b\c.png
    const QString photo = base + QStringLiteral("/pics/") + name;
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 5), photo));
    QCOMPARE(QFileInfo(photo).fileName(), name);

    widgettest::Window w;
    QVERIFY(w.ok());
    MyGlobal::outputDir = output;
    auto* foregrounds = w.dialog->findChild<QListWidget*>(QStringLiteral("listWidget"));
    auto* saveImage = w.dialog->findChild<QPushButton*>(QStringLiteral("Run"));
    QVERIFY(foregrounds && saveImage);

    // The photo comes in by a drop and is chosen by a click on its item.
    QVERIFY(widgettest::dropFiles(foregrounds->viewport(), {photo}));
    QCOMPARE(foregrounds->count(), 3);
    QCOMPARE(foregrounds->item(2)->text(), photo);
    widgettest::clickRow(foregrounds, 2);
    QCOMPARE(MyGlobal::CurSelection, photo);

    m_opener.forgetCalls();
    QTest::mouseClick(saveImage, Qt::LeftButton);

    // Written under the photo's own name, quote and backslash included, in
    // the folder with the blank, and nowhere else.
    const QString target = output + QLatin1Char('/') + name;
    QVERIFY(QFileInfo(target).isFile());
    QCOMPARE(QDir(output).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{name});
    QCOMPARE(QDir(base + QStringLiteral("/my shots")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("out")});
    QCOMPARE(QDir(base).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList({QStringLiteral("my shots"), QStringLiteral("pics")}));
    // A PNG, as its suffix says, holding the unkeyed photo (no key point yet).
    QImageReader reader(target);
    QCOMPARE(reader.format(), QByteArray("png"));
    const QImage saved = reader.read();
    QVERIFY2(!saved.isNull(), qPrintable(reader.errorString()));
    QVERIFY(testsupport::samePixels(saved, QImage(photo)));

    // The opener is called on the folder, then on the file. The blank cuts
    // each path in two. In the file's path the lone double quote opens a
    // quoted stretch that runs to the end of the line: the quote itself is
    // dropped, and the backslash is an ordinary character that stays.
    const QList<QStringList> expected{
        {base + QStringLiteral("/my"), QStringLiteral("shots/out")},
        {base + QStringLiteral("/my"), QStringLiteral("shots/out/ab\\c.png")}, // .../ab\c.png
    };
    QCOMPARE(m_opener.calls(), expected);
    // That is exactly how Qt cuts a command line into a program and its
    // arguments.
    const QString opener = testsupport::openerName();
    QCOMPARE(QProcess::splitCommand(opener + QLatin1Char(' ') + output), QStringList{opener} + expected.at(0));
    QCOMPARE(QProcess::splitCommand(opener + QLatin1Char(' ') + target), QStringList{opener} + expected.at(1));

    // After the save the first photo is current again and "Save Image" is enabled.
    QCOMPARE(foregrounds->currentRow(), 0);
    QVERIFY(saveImage->isEnabled());
}

PLENDRA_TEST_MAIN(SaveOddNamesTest)
#include "tst_saveoddnames.moc"
