// SPDX-License-Identifier: MIT
#pragma once

// Helpers shared by Plendra's tests that need no widget: generated photos and
// sample folders, image comparisons, temporary homes, and child processes for
// the checks that end the program. The window's tests add the window fixture
// (tests/fixture/windowfixture.h) on top.

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>

namespace testsupport {

// A synthetic studio shot: a noisy backdrop of `backdrop` colour with a dark,
// person-like subject in the middle (so keying has something to keep).
QImage studioShot(int width, int height, QColor backdrop, quint32 seed = 1);
// A smooth, colourful picture to key against.
QImage backgroundPicture(int width, int height, quint32 seed = 2);
// Random pixels, every channel uniform over 0..255, in the given format.
QImage randomImage(int width, int height, QImage::Format format, quint32 seed);

// Writes `image` to `path` (format from the suffix), creating folders; fails the
// calling test through the return value when it cannot be written.
bool writeImage(const QImage& image, const QString& path, int quality = 95);

// Fills `folder` like the folder beside the bundle: "1green.JPG", "blue1.JPG"
// and a "Bkg" folder holding the given background file names (each written as
// a picture of `width` x `height`). Returns false when anything failed.
bool makeSampleFolder(const QString& folder, const QStringList& backgroundNames = {QStringLiteral("a.jpg"), QStringLiteral("b.png")},
                      int width = 320, int height = 240);

// Empties `home` (hidden entries too) and makes the output folder that
// start-up makes in it, "Documents/Plendra"; returns that folder's path.
QString emptyHomeWithOutputFolder(const QString& home);

// Mean of the absolute channel differences of two images of the same size,
// compared as 32-bit RGB (0 when equal, 255 at most).
double meanDifference(const QImage& a, const QImage& b);

// Equal size and equal pixels, compared in one format.
bool samePixels(const QImage& a, const QImage& b);

// The bytes of a file, to show afterwards that nothing wrote to it.
QByteArray fileBytes(const QString& path);

// The number of the first line of the program's source file `file` (a path
// below the source folder) that holds `text`, or 0.
int sourceLineOf(const QString& file, const QString& text);

// Runs this test program again as a child that only calls the scenario
// registered under `name`, and reports how it ended.
struct ChildRun
{
    bool started = false;
    bool crashed = false;       // ended by a signal (abort included)
    int exitCode = 0;
    QByteArray standardError;
    QByteArray standardOutput;
};
ChildRun runChildScenario(const QString& name, const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());
// Like runChildScenario, but the child cannot bypass file permissions: run as
// root (as in CI), it loses the capabilities that override them (through
// setpriv), so a file without read permission really cannot be read and a
// read-only folder really cannot be written. Run as another user, the child
// starts as runChildScenario starts it.
ChildRun runChildScenarioWithoutFileOverrides(const QString& name,
                                              const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());

// Registers a scenario for runChildScenario (use PLENDRA_CHILD_SCENARIO).
bool registerChildScenario(const char* name, std::function<void()> body);
// Called by the test main: runs the scenario named by "--child <name>" and
// returns true when the arguments asked for one.
bool runRequestedChildScenario(int argc, char** argv, int* exitCode);

} // namespace testsupport

#define PLENDRA_CHILD_SCENARIO_CAT2(a, b) a##b
#define PLENDRA_CHILD_SCENARIO_CAT(a, b) PLENDRA_CHILD_SCENARIO_CAT2(a, b)
#define PLENDRA_CHILD_SCENARIO(name)                                                                         \
    static void PLENDRA_CHILD_SCENARIO_CAT(childScenario_, __LINE__)();                                     \
    static const bool PLENDRA_CHILD_SCENARIO_CAT(childScenarioRegistered_, __LINE__) =                        \
        testsupport::registerChildScenario(name, &PLENDRA_CHILD_SCENARIO_CAT(childScenario_, __LINE__));      \
    static void PLENDRA_CHILD_SCENARIO_CAT(childScenario_, __LINE__)()

namespace testsupport {
// Points HOME at a fresh temporary folder (and drops the XDG folders that would
// override it), so that nothing a test does, Qt's own file-dialog history
// included, reaches the real home. Kept alive for the whole test run.
class IsolatedHome;
IsolatedHome* isolateHome();
} // namespace testsupport

// The application a test program runs in: a widget test (one that links Qt's
// widgets) gets a QApplication, any other test a QGuiApplication, as QTEST_MAIN
// chooses.
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#define PLENDRA_TEST_APPLICATION QApplication
#else
#include <QGuiApplication>
#define PLENDRA_TEST_APPLICATION QGuiApplication
#endif

// Like QTEST_MAIN, with an isolated home; a run with "--child <name>" executes
// that scenario instead of the tests.
#define PLENDRA_TEST_MAIN(TestObject)                                                                        \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        if (!testsupport::isolateHome())                                                                     \
            return 2;                                                                                        \
        PLENDRA_TEST_APPLICATION app(argc, argv);                                                            \
        int childExit = 0;                                                                                   \
        if (testsupport::runRequestedChildScenario(argc, argv, &childExit))                                  \
            return childExit;                                                                                \
        TestObject tc;                                                                                       \
        QTEST_SET_MAIN_SOURCE_PATH                                                                           \
        return QTest::qExec(&tc, argc, argv);                                                                \
    }
