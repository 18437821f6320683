// SPDX-License-Identifier: MIT
#pragma once

// Helpers shared by Plendra's tests: sample folders of generated photos,
// access to the window's working state, and child processes for the checks
// that end the program.

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPixmap>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>

#include "tests/support/thumbnailwait.h"

class Dialog;
class QGraphicsScene;
class QListWidget;
class QWidget;
class Ui_Dialog;

// Read and write access to the main window's working state, for tests only.
class DialogTestAccess
{
public:
    static QImage& foreground(Dialog& d);
    static QImage& background(Dialog& d);
    static QPixmap& preview(Dialog& d);
    static QGraphicsScene* scene(Dialog& d);
    static Ui_Dialog* ui(Dialog& d);
    static int pos(Dialog& d);
    static int textAlign(Dialog& d);
    static int flag(Dialog& d);
};

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

// Puts the process-wide paths and the key point back to their start values.
void resetGlobals();

// Empties `home` (hidden entries too) and makes the output folder that
// start-up makes in it, "Documents/Plendra"; returns that folder's path.
QString emptyHomeWithOutputFolder(const QString& home);

// Mean of the absolute channel differences of two images of the same size,
// compared as 32-bit RGB (0 when equal, 255 at most).
double meanDifference(const QImage& a, const QImage& b);

// Texts of a list's items, in order.
QStringList itemTexts(const QListWidget* list);

// The scaled pixmap shown by a preview scene (null when it shows none).
QPixmap shownPixmap(QGraphicsScene* scene);

// Presses a mouse button at exactly `at` (QTest takes the origin to mean the
// widget's centre).
void pressAt(QWidget* widget, Qt::MouseButton button, QPoint at);

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

// Like QTEST_MAIN, with an isolated home; a run with "--child <name>" executes
// that scenario instead of the tests.
#define PLENDRA_TEST_MAIN(TestObject)                                                                        \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        if (!testsupport::isolateHome())                                                                     \
            return 2;                                                                                        \
        QApplication app(argc, argv);                                                                        \
        int childExit = 0;                                                                                   \
        if (testsupport::runRequestedChildScenario(argc, argv, &childExit))                                  \
            return childExit;                                                                                \
        TestObject tc;                                                                                       \
        QTEST_SET_MAIN_SOURCE_PATH                                                                           \
        return QTest::qExec(&tc, argc, argv);                                                                \
    }
