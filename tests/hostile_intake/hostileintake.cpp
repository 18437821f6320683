// SPDX-License-Identifier: MIT
#include "tests/hostile_intake/hostileintake.h"

#include "mainwindow/dialog.h"
#include "state/globals.h"
#include "tests/fixture/windowfixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QRegularExpression>
#include <QTest>

#include <cstdio>
#include <cstring>

namespace hostiletest {

namespace {

// Every Qt message of a child starts so, which tells it from anything else
// (a sanitizer's report, a stray print) on its standard error.
constexpr char kQtMessagePrefix[] = "Qt message: ";
constexpr char kChildPrefix[] = "child: ";

// The corpus is generated once per test program (it runs ImageMagick) and
// copied into each case.
const QList<testsupport::HostileEntry>& masterCorpus()
{
    static QTemporaryDir dir;
    static bool made = false;
    static QList<testsupport::HostileEntry> corpus = testsupport::makeHostileCorpus(dir.path() + QStringLiteral("/corpus"), &made);
    static const QList<testsupport::HostileEntry> none;
    return made ? corpus : none;
}

// Paths a home may gain while the program runs: its output folder, and the
// settings file where Qt's own file dialog keeps its last folder and history.
bool allowedInHome(const QString& relative)
{
    return relative == QLatin1String("Documents") || relative == QLatin1String("Documents/Plendra")
        || relative.startsWith(QLatin1String("Documents/Plendra/")) || relative == QLatin1String(".config")
        || relative == QLatin1String(".config/QtProject.conf");
}

QString stripChildTemp(const QString& relative, bool* isChildHome)
{
    // child-tmp/<home folder>/<path in that home>
    const QString prefix = QStringLiteral("child-tmp/");
    *isChildHome = relative.startsWith(prefix) || relative == QLatin1String("child-tmp");
    const int slash = relative.indexOf(QLatin1Char('/'), prefix.size());
    return slash < 0 ? QString() : relative.mid(slash + 1);
}

QStringList stderrLines(const testsupport::ChildRun& run)
{
    QStringList lines = QString::fromUtf8(run.standardError).split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

// libpng and libtiff, under Qt's image plugins, print their complaints about
// a broken file to standard error themselves, not through Qt's messages.
bool imageLibraryMessage(const QString& line)
{
    static const QRegularExpression pattern(QStringLiteral("^(libpng (error|warning): |TIFF[A-Za-z]*: )"));
    return pattern.match(line).hasMatch();
}

QString strayLines(const QStringList& lines)
{
    QStringList stray;
    for (const QString& line : lines) {
        if (!line.startsWith(QLatin1String(kQtMessagePrefix)) && !line.startsWith(QLatin1String(kChildPrefix))
            && !imageLibraryMessage(line))
            stray << line;
    }
    return stray.join(QLatin1Char('\n'));
}

} // namespace

QImage asShown(const QImage& image)
{
    return QPixmap::fromImage(image).toImage();
}

QImage fittedTo(const QImage& background, const QSize& size)
{
    return background.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

void checkPhotoShown(Dialog& d, const QImage& photo)
{
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
    QVERIFY(testsupport::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
}

void checkPhotoChosen(Dialog& d, const QString& path)
{
    QCOMPARE(MyGlobal::CurSelection, path);
    const QImage photo(path);
    checkPhotoShown(d, photo);
    QCOMPARE(DialogTestAccess::background(d).size(), photo.size());
}

const QList<testsupport::HostileEntry>& corpusEntries()
{
    return masterCorpus();
}

QString refreshAssertionPattern()
{
    return QStringLiteral("^dialog:[0-9]+: failed assertion `!pix\\.isNull\\(\\)'$");
}

QString sizeCheckAssertionPattern()
{
    return QStringLiteral("^dialog:884: failed assertion `m_bkg\\.height\\(\\) == m_foreground\\.height\\(\\) && "
                          "m_bkg\\.width\\(\\) == m_foreground\\.width\\(\\)'$");
}

HostileCase::HostileCase(bool samples)
{
    if (!m_root.isValid())
        return;
    bool ok = QDir().mkpath(appDir()) && QDir().mkpath(corpusDir()) && QDir().mkpath(m_root.path() + QStringLiteral("/child-tmp"));
    if (samples)
        ok = testsupport::makeSampleFolder(appDir()) && ok;
    const QList<testsupport::HostileEntry>& master = masterCorpus();
    ok = !master.isEmpty() && ok;
    for (const testsupport::HostileEntry& entry : master) {
        testsupport::HostileEntry copy = entry;
        copy.path = corpusDir() + QLatin1Char('/') + QFileInfo(entry.path).fileName();
        ok = placeEntry(entry, copy.path) && ok;
        m_corpus.append(copy);
    }
    m_ok = ok;
}

void HostileCase::takeSnapshots()
{
    m_caseBefore = testsupport::snapshotTree(m_root.path());
    m_homeBefore = testsupport::snapshotTree(QDir::homePath());
    m_snapshotsTaken = true;
}

QStringList HostileCase::unexpectedChanges(const QStringList& changedByTheTest) const
{
    QStringList unexpected;
    const QStringList inCase = testsupport::treeDifferences(m_caseBefore, testsupport::snapshotTree(m_root.path()));
    for (const QString& relative : inCase) {
        bool childHome = false;
        const QString inHome = stripChildTemp(relative, &childHome);
        if (childHome ? !(inHome.isEmpty() || allowedInHome(inHome)) : !changedByTheTest.contains(relative))
            unexpected << relative;
    }
    const QStringList inHome = testsupport::treeDifferences(m_homeBefore, testsupport::snapshotTree(QDir::homePath()));
    for (const QString& relative : inHome) {
        if (!allowedInHome(relative))
            unexpected << QStringLiteral("~/") + relative;
    }
    return unexpected;
}

QProcessEnvironment HostileCase::childEnvironment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QLatin1String(kQtMessagePrefix) + QStringLiteral("%{type}: %{message}"));
    // The child's own temporary home is made here and goes with the case,
    // even when the child ends on an assertion and cannot remove it.
    env.insert(QStringLiteral("TMPDIR"), m_root.path() + QStringLiteral("/child-tmp"));
    env.insert(QLatin1String(kAppDirVariable), appDir());
    return env;
}

testsupport::ChildRun HostileCase::runChild(const QString& name, const QString& path, const QString& secondPath) const
{
    QProcessEnvironment env = childEnvironment();
    if (!path.isEmpty())
        env.insert(QLatin1String(kPathVariable), path);
    if (!secondPath.isEmpty())
        env.insert(QLatin1String(kSecondPathVariable), secondPath);
    return testsupport::runChildScenario(name, env);
}

void checkStoppedAtRefresh(const testsupport::ChildRun& run, const QStringList& reports)
{
    const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
    QVERIFY2(why.isEmpty(), qPrintable(why));
    QCOMPARE(childReports(run), reports);
}

testsupport::HostileEntry HostileIntakeTestCase::rowEntry() const
{
    QFETCH(int, index);
    return m_case->entry(index);
}

void HostileIntakeTestCase::init()
{
    WindowTestCase::init();
    m_allowedChanges.clear();
    m_case = std::make_unique<HostileCase>();
    QVERIFY(m_case->ok());
}

void HostileIntakeTestCase::cleanup()
{
    if (m_case && m_case->snapshotsTaken())
        QCOMPARE(m_case->unexpectedChanges(m_allowedChanges), QStringList());
    m_case.reset();
    WindowTestCase::cleanup();
}

void addCorpusRows()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("kind");
    const QList<testsupport::HostileEntry>& master = masterCorpus();
    QVERIFY2(!master.isEmpty(), "the hostile corpus could not be made");
    for (int i = 0; i < master.size(); ++i)
        QTest::newRow(qPrintable(master.at(i).name)) << i << int(master.at(i).kind);
}

bool placeEntry(const testsupport::HostileEntry& entry, const QString& destination)
{
    if (entry.kind == testsupport::HostileKind::Folder)
        return QDir().mkpath(destination);
    return QFile::copy(entry.path, destination);
}

std::unique_ptr<Dialog> openChildWindow()
{
    auto dialog = widgettest::openWindow(qEnvironmentVariable(kAppDirVariable));
    childReport(dialog ? QStringLiteral("window open") : QStringLiteral("window not shown"));
    return dialog;
}

void childReport(const QString& text)
{
    std::fprintf(stderr, "%s%s\n", kChildPrefix, text.toUtf8().constData());
    std::fflush(stderr);
}

QStringList childReports(const testsupport::ChildRun& run)
{
    QStringList reports;
    for (const QString& line : stderrLines(run)) {
        if (line.startsWith(QLatin1String(kChildPrefix)))
            reports << line.mid(int(std::strlen(kChildPrefix)));
    }
    return reports;
}

QString stoppedOnlyBy(const testsupport::ChildRun& run, const QString& assertionPattern)
{
    const QString all = QString::fromUtf8(run.standardError);
    if (!run.started)
        return QStringLiteral("the child did not start");
    if (!run.crashed)
        return QStringLiteral("the child ended normally (exit code %1):\n%2").arg(run.exitCode).arg(all);
    QStringList lines = stderrLines(run);
    if (lines.isEmpty())
        return QStringLiteral("the child aborted without a word");
    const QString last = lines.takeLast();
    if (!QRegularExpression(assertionPattern).match(last).hasMatch())
        return QStringLiteral("the last line is not the assertion:\n") + all;
    const QString stray = strayLines(lines);
    if (!stray.isEmpty())
        return QStringLiteral("the child printed more than the assertion:\n") + stray;
    return QString();
}

QString endedCleanly(const testsupport::ChildRun& run)
{
    if (!run.started)
        return QStringLiteral("the child did not start");
    if (run.crashed || run.exitCode != 0)
        return QStringLiteral("the child failed (crash %1, exit code %2):\n%3")
            .arg(run.crashed)
            .arg(run.exitCode)
            .arg(QString::fromUtf8(run.standardError));
    const QString stray = strayLines(stderrLines(run));
    if (!stray.isEmpty())
        return QStringLiteral("the child printed more than Qt's messages:\n") + stray;
    return QString();
}

} // namespace hostiletest
