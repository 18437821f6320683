// SPDX-License-Identifier: MIT
#pragma once

// The setting of the hostile keying and folder tests, which drive the window:
// input files below one root that no test may change (the samples, and what
// each test case adds), a recording opener first on PATH, an empty home
// holding the output folder that start-up makes before each test, and child
// processes that must stop on a named assertion and leave no file behind.

#include "tests/fixture/windowfixture.h"
#include "tests/support/recordingopener.h"
#include "tests/support/testsupport.h"

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace hostileoutput {

// In a child scenario: the process as the program leaves it at start (photos
// over Qt's allocation limit allowed, the process-wide state at its start
// values), the samples named by PLENDRA_HOSTILE_SAMPLES beside the bundle and
// `outputDir` the output folder (the home's "Documents/Plendra" when empty);
// then the window on them, shown.
std::unique_ptr<widgettest::Window> openChildWindow(const QString& outputDir = QString());

class HostileOutputTestCase : public QObject
{
    Q_OBJECT

protected:
    // Adds the test case's own input files below m_root, after the samples
    // are made and before the inputs are recorded; fails through QVERIFY.
    virtual void addInputs() {}

    QString sample(const QString& name) const { return m_samples + QLatin1Char('/') + name; }

    // Home entries added or changed since init(), besides `allowed`.
    QStringList homeChanges(const QStringList& allowed = {}) const;

    // Runs the child scenario `name` with `env` (the samples folder as
    // PLENDRA_HOSTILE_SAMPLES unless given) in a temporary folder of its own;
    // `filesLeft` (when given) gets what the child left there that is not a
    // folder.
    testsupport::ChildRun runChild(const QString& name, QProcessEnvironment env, QStringList* filesLeft = nullptr,
                                   bool withoutFileOverrides = false) const;

    // Checks that a child ran and stopped on one failed assertion, `expected`,
    // as the last line of its standard error, before it printed "survived",
    // without a sanitizer report, and left no file behind.
    static void checkStoppedOn(const testsupport::ChildRun& run, const QString& expected, const QStringList& filesLeft);

    QTemporaryDir m_root;     // the input files
    QTemporaryDir m_childTmp; // temporary folders of child processes
    QString m_samples;
    testsupport::RecordingOpener m_opener;
    QString m_home;
    QString m_output;
    QMap<QString, QByteArray> m_homeAtStart;

private slots:
    void initTestCase();
    void init();
    // Input files are only ever read.
    void cleanup();

private:
    QMap<QString, QByteArray> m_inputs;
};

} // namespace hostileoutput
