// SPDX-License-Identifier: MIT
// The desktop opener starts the user's own programs: it gets the environment
// the program was started with, not what the program set for itself later.
#include "output/opener.h"
#include "state/launchenvironment.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class TestOpenerEnvironment : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QStringList recordedEnvironment() const
    {
        QFile record(m_dir.path() + QStringLiteral("/environment.txt"));
        if (!record.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLocal8Bit(record.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QFile script(m_dir.path() + QStringLiteral("/xdg-open"));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nenv > \"$(dirname \"$0\")/environment.txt\"\n");
        script.close();
        QVERIFY(script.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
        qputenv("PATH", m_dir.path().toLocal8Bit() + ':' + qgetenv("PATH"));
        qputenv("PLENDRA_USER_SETTING", "kept");
        qunsetenv("QT_FONT_DPI");
        qunsetenv("QT_SCALE_FACTOR");
    }

    void withoutARememberedEnvironmentTheCurrentOneIsHandedOn()
    {
        QCOMPARE(launchEnvironment().value(QStringLiteral("PLENDRA_USER_SETTING")), QStringLiteral("kept"));
    }

    void whatTheProgramSetsAfterStartDoesNotReachTheOpener()
    {
        rememberLaunchEnvironment();
        qputenv("QT_FONT_DPI", "72");
        qputenv("QT_SCALE_FACTOR", "2");
        qputenv("PLENDRA_USER_SETTING", "changed");
        // A second call keeps the first environment.
        rememberLaunchEnvironment();

        openOnDesktop(m_dir.path());
        const QStringList seen = recordedEnvironment();
        QVERIFY2(!seen.isEmpty(), "the opener did not run");
        QVERIFY(seen.contains(QStringLiteral("PLENDRA_USER_SETTING=kept")));
        QCOMPARE(seen.filter(QRegularExpression(QStringLiteral("^QT_(FONT_DPI|SCALE_FACTOR)="))), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestOpenerEnvironment)
#include "tst_openerenvironment.moc"
