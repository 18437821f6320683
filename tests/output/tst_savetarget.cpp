// SPDX-License-Identifier: MIT
// Where "Save Image" writes: the output folder, a literal "/", and the photo's
// own file name, whatever the names hold.

#include "output/savetarget.h"
#include "tests/support/testsupport.h"

#include <QTest>

class TestSaveTarget : public QObject
{
    Q_OBJECT

private slots:
    void targetIsOutputFolderSlashPhotoName_data();
    void targetIsOutputFolderSlashPhotoName();
};

void TestSaveTarget::targetIsOutputFolderSlashPhotoName_data()
{
    QTest::addColumn<QString>("outputDir");
    QTest::addColumn<QString>("photoPath");
    QTest::addColumn<QString>("target");

    QTest::newRow("plain") << "/home/u/Documents/Plendra" << "/shoot/1green.JPG" << "/home/u/Documents/Plendra/1green.JPG";
    QTest::newRow("suffix kept as it is") << "/out" << "/in/key.TIFF" << "/out/key.TIFF";
    QTest::newRow("blank in both") << "/my out" << "/my shoot/a b.JPG" << "/my out/a b.JPG";
    QTest::newRow("quote and backslash in the name") << "/out" << "/in/say \"hi\" \\ there.png"
                                                     << "/out/say \"hi\" \\ there.png";
    QTest::newRow("trailing slash not cleaned") << "/out/" << "/in/x.png" << "/out//x.png";
    QTest::newRow("photo without a folder") << "/out" << "x.png" << "/out/x.png";
    QTest::newRow("relative photo path") << "/out" << "../in/y.jpg" << "/out/y.jpg";
    QTest::newRow("empty output folder") << "" << "/in/x.png" << "/x.png";
    QTest::newRow("no photo") << "/out" << "" << "/out/";
    QTest::newRow("photo path ending in a slash") << "/out" << "/in/" << "/out/";
    QTest::newRow("no suffix") << "/out" << "/in/README" << "/out/README";
    QTest::newRow("non-ASCII letters") << "/Ausgabe" << QStringLiteral("/in/Grün über Weiß.jpg")
                                       << QStringLiteral("/Ausgabe/Grün über Weiß.jpg");
}

void TestSaveTarget::targetIsOutputFolderSlashPhotoName()
{
    QFETCH(QString, outputDir);
    QFETCH(QString, photoPath);
    QFETCH(QString, target);
    QCOMPARE(saveTarget(outputDir, photoPath), target);
}

PLENDRA_TEST_MAIN(TestSaveTarget)
#include "tst_savetarget.moc"
