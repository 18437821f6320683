// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the hostile-input tests of every way a file enters the
// window: a case folder holding the sample folder and the corpus with
// snapshots taken before the case runs, windows built on it in a child that is
// expected to stop on a named assertion, and the reading of a child's standard
// error. Windows in this process come from the window fixture.

#include "tests/fixture/windowfixture.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/testsupport.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QMap>
#include <QPoint>
#include <QProcessEnvironment>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class Dialog;

namespace hostiletest {

// Environment a parent hands its child scenario.
inline constexpr char kAppDirVariable[] = "PLENDRA_HOSTILE_APP_DIR";
inline constexpr char kPathVariable[] = "PLENDRA_HOSTILE_PATH";
inline constexpr char kSecondPathVariable[] = "PLENDRA_HOSTILE_SECOND_PATH";
inline constexpr char kKindVariable[] = "PLENDRA_HOSTILE_KIND";

// The assertions a hostile file may end the program with.
QString refreshAssertionPattern();   // the preview refresh's "!pix.isNull()"
QString sizeCheckAssertionPattern(); // on_listWidget_clicked's size check, line 884

// One case's folders: "app" is the folder beside the bundle (samples and
// "Bkg"), "corpus" the hostile files, "child-tmp" the temporary folder of the
// child processes (their homes land there and go with the case). Snapshots of
// the case folder and of this process's home, taken by takeSnapshots() once
// the inputs are in place, show afterwards that no input changed and that
// nothing was written but into the home's output folder.
class HostileCase
{
public:
    // `samples`: write the usual sample photos and "Bkg" (a.jpg, b.png).
    explicit HostileCase(bool samples = true);

    bool ok() const { return m_ok; }
    QString root() const { return m_root.path(); }
    QString appDir() const { return m_root.path() + QStringLiteral("/app"); }
    QString corpusDir() const { return m_root.path() + QStringLiteral("/corpus"); }
    const QList<testsupport::HostileEntry>& corpus() const { return m_corpus; }
    testsupport::HostileEntry entry(int index) const { return m_corpus.at(index); }

    void takeSnapshots();
    bool snapshotsTaken() const { return m_snapshotsTaken; }
    // Every difference since takeSnapshots() that is not allowed: paths below
    // the case folder (relative to it) other than `changedByTheTest`, and paths
    // below a home (this process's or a child's) outside its output folder
    // and Qt's own file-dialog settings.
    QStringList unexpectedChanges(const QStringList& changedByTheTest = {}) const;

    // The environment for a child scenario on this case.
    QProcessEnvironment childEnvironment() const;
    // Runs the child scenario `name` on this case, handing it `path` and
    // `secondPath` (kPathVariable, kSecondPathVariable) when they are given.
    testsupport::ChildRun runChild(const QString& name, const QString& path = {}, const QString& secondPath = {}) const;

private:
    QTemporaryDir m_root;
    bool m_ok = false;
    QList<testsupport::HostileEntry> m_corpus;
    QMap<QString, QByteArray> m_caseBefore;
    QMap<QString, QByteArray> m_homeBefore;
    bool m_snapshotsTaken = false;
};

// The base of the hostile intake test cases: a fresh case before each test;
// after it, once the test has taken the snapshots, no change in the case
// folder or a home but those the test allowed, and the process-wide state
// put back. With `opensLog`, the shared log is opened around each test as
// main() opens it (the drop and change handlers write to it).
class HostileIntakeTestCase : public widgettest::WindowTestCase
{
    Q_OBJECT

public:
    explicit HostileIntakeTestCase(bool opensLog = false) { m_opensLog = opensLog; }

protected:
    HostileCase& hostileCase() { return *m_case; }
    // The case's copy of the corpus entry of the running data row (see
    // addCorpusRows).
    testsupport::HostileEntry rowEntry() const;
    // Paths below the case folder (relative to it) that the test changes.
    void allowChanges(const QStringList& changedByTheTest) { m_allowedChanges += changedByTheTest; }

protected slots:
    void init();
    void cleanup();

private:
    std::unique_ptr<HostileCase> m_case;
    QStringList m_allowedChanges;
};

// The same, for test cases whose window writes to the shared log.
class LoggedHostileIntakeTestCase : public HostileIntakeTestCase
{
public:
    LoggedHostileIntakeTestCase() : HostileIntakeTestCase(true) {}
};

// The image as the preview holds it, once turned into a pixmap.
QImage asShown(const QImage& image);

// A background as the window fits it to a photo of `size`.
QImage fittedTo(const QImage& background, const QSize& size);

// Checks that the window holds `photo` as its foreground and shows it in the
// preview.
void checkPhotoShown(Dialog& d, const QImage& photo);
// Checks that the photo file `path` is chosen: the current selection, held and
// shown as in checkPhotoShown, with the background fitted to its size.
void checkPhotoChosen(Dialog& d, const QString& path);

// The corpus as made once for this test program (empty when it could not be
// made); each case works on its own copy.
const QList<testsupport::HostileEntry>& corpusEntries();

// The corpus rows of a data-driven test: column "index" (of the corpus) and
// "kind" (HostileKind as int), one row per entry named after it.
void addCorpusRows();

// Copies a corpus entry to `destination` (a folder entry becomes an empty folder).
bool placeEntry(const testsupport::HostileEntry& entry, const QString& destination);

// The window (as widgettest::openWindow opens it) in a child scenario, on the folder named by kAppDirVariable.
std::unique_ptr<Dialog> openChildWindow();

// What a child scenario reports to its parent, on standard error as
// "child: <text>".
void childReport(const QString& text);
// The "child: " lines of a run, without the prefix.
QStringList childReports(const testsupport::ChildRun& run);
// Empty when the child aborted on exactly one failed assertion matching
// `assertionPattern` as the last line of its standard error and printed
// nothing besides Qt's messages, the image libraries' complaints about the
// file and its own reports (so no sanitizer report);
// otherwise what was wrong.
QString stoppedOnlyBy(const testsupport::ChildRun& run, const QString& assertionPattern);
// Checks that the child stopped as stoppedOnlyBy says, on the preview
// refresh's assertion, after reporting exactly `reports`.
void checkStoppedAtRefresh(const testsupport::ChildRun& run, const QStringList& reports);
// Empty when the child ended normally with nothing but Qt's messages and its
// own reports on standard error.
QString endedCleanly(const testsupport::ChildRun& run);

} // namespace hostiletest
