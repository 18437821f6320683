// SPDX-License-Identifier: MIT
// The process-wide state before anything touches it.
#include "state/globals.h"
#include "state/version.h"
#include "output/outputchoices.h"

#include <QFont>
#include <QTest>

class TestGlobals : public QObject
{
    Q_OBJECT

private slots:
    void initialValues()
    {
        QCOMPARE(MyGlobal::appDir, QString());
        QCOMPARE(MyGlobal::HotFolder_FG, QString());
        QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
        QCOMPARE(MyGlobal::outputDir, QString());
        QCOMPARE(MyGlobal::log.fileName(), QStringLiteral("/tmp/log.txt"));
        QVERIFY(!MyGlobal::log.isOpen());
        QCOMPARE(MyGlobal::CurSelection, QString());
        QCOMPARE(MyGlobal::CurSelectionBk, QString());
        QCOMPARE(MyGlobal::LasHotFile, QString());
        QCOMPARE(MyGlobal::Cur_wmpos, 132);
        QCOMPARE(MyGlobal::Cur_wmText, QStringLiteral("Text"));
        QCOMPARE(MyGlobal::LoadPresets, true);
        QCOMPARE(MyGlobal::PrevSize, QSize(415, 345));
        QCOMPARE(MyGlobal::PrevSize2, QSize(355, 286));
    }

    void textOverlaySettings()
    {
        QCOMPARE(UserSettings::m_clr, QColor(Qt::black));
        QCOMPARE(UserSettings::m_font.family(), QStringLiteral("Arial"));
        // Only the family is chosen; size, weight and style are the defaults.
        QCOMPARE(UserSettings::m_font.resolveMask() & (QFont::SizeResolved | QFont::WeightResolved | QFont::StyleResolved), 0u);
        QCOMPARE(UserSettings::m_font.weight(), QFont::Normal);
        QVERIFY(!UserSettings::m_font.italic());
        QCOMPARE(UserSettings::m_size, QSize(320, 240));
        QCOMPARE(UserSettings::m_usedefault, true);
        QCOMPARE(UserSettings::m_transparency, 127);
        QCOMPARE(Defaults::m_font, QFont());
        QVERIFY(!Defaults::m_clr.isValid());
    }

    void sizeAndFormatTables()
    {
        const int sizes[5][3] = {{0, -1, -1}, {1, 640, 480}, {2, 320, 240}, {3, 240, 160}, {4, 120, 120}};
        for (int i = 0; i < kOutputSizeCount; ++i) {
            QCOMPARE(OutputSizes[i].index, sizes[i][0]);
            QCOMPARE(OutputSizes[i].width, sizes[i][1]);
            QCOMPARE(OutputSizes[i].height, sizes[i][2]);
        }
        const char* names[6] = {"JPG", "PNG", "TIFF", "BMP", "PPM", "XPM"};
        for (int i = 0; i < kOutputFormatCount; ++i) {
            QCOMPARE(OutputFormats[i].flag, i == 0 ? 0 : 1);
            QCOMPARE(QByteArray(OutputFormats[i].name), QByteArray(names[i]));
        }
    }

    void version()
    {
        QCOMPARE(QByteArray(kPlendraVersion), QByteArray("1.3"));
    }
};

QTEST_GUILESS_MAIN(TestGlobals)
#include "tst_globals.moc"
