// SPDX-License-Identifier: MIT
#include "state/globals.h"
#include "state/imagelimits.h"
#include "output/outputfolder.h"
#include "mainwindow/dialog.h"

#include <QApplication>
#include <QDir>
#include <QLoggingCategory>

int main(int argc, char* argv[])
{
    // The window's fixed geometry was drawn for point sizes rendered at 72 dots
    // per inch, as on macOS; other desktops render points larger and would
    // clip the labels. A user's own setting still wins.
    if (!qEnvironmentVariableIsSet("QT_FONT_DPI"))
        qputenv("QT_FONT_DPI", "72");
    QApplication app(argc, argv);
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
