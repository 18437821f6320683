// SPDX-License-Identifier: MIT
#include "tests/hostile_intake/hostilewatch.h"

#include "dialogs/preset.h"
#include "mainwindow/dialog.h"
#include "state/globals.h"
#include "tests/fixture/windowfixture.h"

#include <QAbstractItemModel>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>

#include <algorithm>

namespace hostiletest {

using testsupport::HostileKind;
using widgettest::itemTexts;

QDateTime minutesIn(int minutes)
{
    return QDateTime(QDate(2021, 6, 1), QTime(9, 0)).addSecs(60 * minutes);
}

bool setModified(const QString& path, const QDateTime& when)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.setFileTime(when, QFileDevice::FileModificationTime);
}

// Gives the corpus files of `folder` distinct times in corpus order, with
// `newest` (a file name) the newest of all; returns the listed names of the
// folder (files with an image ending), oldest first.
QStringList orderByTime(const HostileCase& c, const QString& folder, const QString& newest, bool* ok)
{
    QList<QPair<QDateTime, QString>> files;
    int minute = 0;
    for (const testsupport::HostileEntry& entry : c.corpus()) {
        if (entry.kind == HostileKind::Folder)
            continue;
        const QString name = QFileInfo(entry.path).fileName();
        const QDateTime when = name == newest ? minutesIn(1000) : minutesIn(++minute);
        *ok = setModified(folder + QLatin1Char('/') + name, when) && *ok;
        files.append({when, name});
    }
    std::sort(files.begin(), files.end());
    QStringList names;
    for (const auto& file : std::as_const(files))
        names << file.second;
    return names;
}

// Presses "PreSets" (shown for the test), picks `folder` with "Browse" in Qt's
// own folder dialog and closes the Preset window from its title bar.
bool choosePresetFolder(Dialog& d, const QString& folder)
{
    auto handled = std::make_shared<bool>(false);
    widgettest::ModalAnswerer::answerNext([folder, handled](QWidget* modal) {
        auto* preset = qobject_cast<Preset*>(modal);
        if (!preset)
            return false;
        auto seen = std::make_shared<widgettest::FileDialogSeen>();
        widgettest::answerFileDialog({folder}, seen);
        widgettest::clickButton(preset->findChild<QPushButton*>(QStringLiteral("Browse")));
        preset->close();
        *handled = seen->answered;
        return true;
    });
    QPushButton* presets = widgettest::WindowWidgets(d).Presets;
    presets->show();
    widgettest::clickButton(presets);
    return *handled && MyGlobal::HotFolder_FG == folder;
}

// Reports the file name of each item FOREGROUNDS gains.
void reportListedNames(Dialog& d)
{
    QListWidget* list = widgettest::WindowWidgets(d).listWidget;
    QObject::connect(list->model(), &QAbstractItemModel::rowsInserted, list, [list](const QModelIndex&, int first, int) {
        childReport(QStringLiteral("listed ") + QFileInfo(list->item(first)->text()).fileName());
    });
}

// Removes `path` as soon as FOREGROUNDS lists it: between the listing and the
// loading of the photo.
void removeWhenListed(Dialog& d, const QString& path)
{
    QListWidget* list = widgettest::WindowWidgets(d).listWidget;
    QObject::connect(list->model(), &QAbstractItemModel::rowsInserted, list, [list, path](const QModelIndex&, int first, int) {
        if (list->item(first)->text() == path && QFile::remove(path))
            childReport(QStringLiteral("removed once listed"));
    });
}

QString readLog()
{
    MyGlobal::log.flush();
    QFile log(QStringLiteral("/tmp/log.txt"));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

bool writeOlderAndNewer(const QString& older, const QString& newer)
{
    return testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), older)
        && testsupport::writeImage(testsupport::studioShot(120, 90, QColor(40, 70, 200), 4), newer)
        && setModified(older, minutesIn(0)) && setModified(newer, minutesIn(5));
}

int rowOf(const QListWidget* list, const QString& text)
{
    return itemTexts(list).lastIndexOf(text);
}

int dropAndFindRow(QListWidget* list, const QString& path)
{
    if (!widgettest::dropUrls(list->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10)))
        return -1;
    return rowOf(list, path);
}

} // namespace hostiletest
