// SPDX-License-Identifier: MIT
#include "app/desktopscale.h"
#include "state/globals.h"
#include "state/imagelimits.h"
#include "state/launchenvironment.h"
#include "output/outputfolder.h"
#include "mainwindow/dialog.h"

#include <QApplication>
#include <QDir>
#include <QLoggingCategory>

int main(int argc, char* argv[])
{
    // Before anything is set for this window alone: the programs it starts
    // get the user's environment as it was.
    rememberLaunchEnvironment();
    // Points at 72 dpi, as the fixed layout was drawn for, times the desktop's
    // scale, so that a 2x screen scales the whole window.
    drawPointsAt72DpiTimesDesktopScale();
    QApplication app(argc, argv);
    // Docks and task bars on Wayland and X11 group the window with the
    // desktop entry of this name.
    QGuiApplication::setDesktopFileName(QStringLiteral("org.plendra.Plendra"));
    allowLargePhotos();
    // The window keeps slots named after controls it does not show (an output
    // folder button, a size box); Qt would warn about each at every start.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.core.qmetaobject.connectslotsbyname=false"));

    MyGlobal::log.open(QIODevice::WriteOnly); // truncates; a log that cannot be opened is no reason to stop

    // The sample photos and "Bkg" lie beside the bundle:
    // Plendra.app/Contents/MacOS/Plendra is three folders below them.
    MyGlobal::appDir = QDir(QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../../.."))).absolutePath();

    setUpOutputFolder();

    Dialog window;
    window.show();
    return window.exec();
}
