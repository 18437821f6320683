// SPDX-License-Identifier: MIT
#include "output/opener.h"

#include "state/launchenvironment.h"

#include <QProcess>
#include <QStringList>

namespace {

// Debian has a command named "open" that does something else entirely, so
// only macOS uses that name.
#ifdef Q_OS_MACOS
const QString kDesktopOpener = QStringLiteral("open");
#else
const QString kDesktopOpener = QStringLiteral("xdg-open");
#endif

} // namespace

void openOnDesktop(const QString& path)
{
    // Qt 6's execute() no longer takes a whole command line; splitting it
    // here gives the opener the same arguments as before.
    const QStringList words = QProcess::splitCommand(kDesktopOpener + QStringLiteral(" ") + path);
    if (words.isEmpty())
        return;
    // The opener starts the user's own viewer and file manager: it gets the
    // environment the user started us with, not the font resolution and scale
    // this window sets for itself. Like execute(), it waits for the opener.
    QProcess opener;
    opener.setProcessEnvironment(launchEnvironment());
    opener.setProcessChannelMode(QProcess::ForwardedChannels);
    opener.start(words.first(), words.mid(1));
    opener.waitForFinished(-1);
}
