// SPDX-License-Identifier: MIT
// plendra-batch's options come from one table: the parser takes every option
// of it, --help lists each with its words, the built manual page says the
// same, and the built tool needs no widget library.
#include "batch/batchoptions.h"
#include "batch/optiontable.h"
#include "tests/batch/batchtooltest.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

namespace {

// A value each option accepts.
QString sampleValue(const batch::OptionEntry& o)
{
    if (o.valueName == QLatin1String("X,Y"))
        return QStringLiteral("1,2");
    if (o.valueName == QLatin1String("COLOUR"))
        return QStringLiteral("#20C040");
    if (o.valueName == QLatin1String("FMT"))
        return QStringLiteral("png");
    if (o.valueName == QLatin1String("WxH"))
        return QStringLiteral("1800x1200");
    if (o.valueName == QLatin1String("K/N"))
        return QStringLiteral("1/2");
    if (o.valueName == QLatin1String("N") || o.valueName == QLatin1String("MS"))
        return QStringLiteral("7");
    return QStringLiteral("x.jpg");
}

QString builtManualPage()
{
    QFile page(QStringLiteral(PLENDRA_BUILD_DIR "/packaging/man/plendra-batch.1"));
    return page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
}

} // namespace

class TestOptionTable : public QObject
{
    Q_OBJECT

private slots:
    void everyOptionIsTakenByItsNames()
    {
        for (const batch::OptionEntry& o : batch::optionTable()) {
            for (const QString& name : o.names) {
                QStringList args{QStringLiteral("plendra-batch"), (name.size() == 1 ? "-" : "--") + name};
                if (!o.valueName.isEmpty())
                    args << sampleValue(o);
                const batch::ParsedCommandLine p = batch::parseCommandLine(args);
                QVERIFY2(!p.standardError.contains(QStringLiteral("nknown option")), qPrintable(name));
                QVERIFY2(!p.standardError.contains(QStringLiteral("Missing value")), qPrintable(name));
            }
        }
    }

    void helpListsEveryOptionWithItsWords()
    {
        const QString help = batch::helpText();
        const QStringList lines = help.split(QLatin1Char('\n'));
        QCOMPARE(lines.first(), batch::usageLine());
        for (const batch::OptionEntry& o : batch::optionTable()) {
            const QString longName = QStringLiteral("--") + o.names.last();
            const QRegularExpression line(QStringLiteral("^  (-%1, |    )%2%3 +%4$")
                                              .arg(QRegularExpression::escape(o.names.first()),
                                                   QRegularExpression::escape(longName),
                                                   o.valueName.isEmpty() ? QString()
                                                                         : QLatin1Char(' ') + QRegularExpression::escape(o.valueName),
                                                   QRegularExpression::escape(o.description)));
            QCOMPARE(lines.filter(line).size(), 1);
        }
        // Descriptions line up in one column.
        const QStringList optionLines = lines.filter(QRegularExpression(QStringLiteral("^  (-\\w, |    )--")));
        QCOMPARE(optionLines.size(), batch::optionTable().size());
        for (const QString& l : optionLines)
            QVERIFY2(l.at(25) == QLatin1Char(' ') && l.at(26) != QLatin1Char(' '), qPrintable(l));
    }

    void theManualPageSaysWhatHelpSays()
    {
        const QString page = builtManualPage();
        QVERIFY(!page.isEmpty());
        QVERIFY(page.contains(QStringLiteral(".SH OPTIONS\n") + batch::manualOptions() + QStringLiteral(".SH EXIT STATUS")));
        for (const batch::OptionEntry& o : batch::optionTable()) {
            // Each option's sentence, roff's escaped hyphens read back.
            QString sentence = o.description;
            sentence[0] = sentence[0].toUpper();
            QVERIFY2(page.contains(QLatin1Char('\n') + sentence + QStringLiteral(".\n")) ||
                         QString(page).replace(QStringLiteral("\\-"), QStringLiteral("-")).contains(
                             QLatin1Char('\n') + sentence + QStringLiteral(".\n")),
                     qPrintable(o.names.last()));
            QVERIFY2(page.contains(QStringLiteral("\\-\\-") + QString(o.names.last()).replace(QLatin1Char('-'), QStringLiteral("\\-"))),
                     qPrintable(o.names.last()));
        }
        QVERIFY(!page.contains(QStringLiteral("(options: written here")));
    }

    void theToolNeedsNoWidgets()
    {
#ifndef Q_OS_LINUX
        QSKIP("ldd is a Linux tool");
#endif
        QProcess ldd;
        ldd.start(QStringLiteral("ldd"), {batchtest::toolPath()});
        QVERIFY(ldd.waitForFinished(30000));
        QCOMPARE(ldd.exitCode(), 0);
        const QString libraries = QString::fromLocal8Bit(ldd.readAllStandardOutput());
        QVERIFY(libraries.contains(QStringLiteral("libQt6Core")));
        QVERIFY2(!libraries.contains(QStringLiteral("libQt6Widgets")), qPrintable(libraries));
    }
};

PLENDRA_TEST_MAIN(TestOptionTable)
#include "tst_optiontable.moc"
