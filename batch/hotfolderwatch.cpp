// SPDX-License-Identifier: MIT
#include "batch/hotfolderwatch.h"

#include "batch/filesystemkind.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

namespace batch {

namespace {

// Photos already in a polled folder looked at on each read, in turn.
constexpr int kLookedAtPerRead = 16;

} // namespace

HotFolderWatch::HotFolderWatch(const QStringList& folders, int settleMs, bool poll,
                               std::function<bool(const QString&)> takes, QObject* parent)
    : QObject(parent), m_settleMs(settleMs), m_forcePoll(poll), m_takes(std::move(takes)), m_tracker(settleMs)
{
    for (const QString& path : folders) {
        Folder f;
        f.path = path;
        m_folders.append(f);
    }
    connect(&m_events, &FolderEvents::completed, this, [this](const QString& folder, const QByteArray& name) {
        if (Folder* f = folderAt(folder))
            seeName(*f, name, true);
    });
    connect(&m_events, &FolderEvents::touched, this, [this](const QString& folder, const QByteArray& name) {
        if (Folder* f = folderAt(folder))
            seeName(*f, name, false);
    });
    connect(&m_events, &FolderEvents::left, this, [this](const QString& folder, const QByteArray& name) {
        const QString path = folder + QLatin1Char('/') + QFile::decodeName(name);
        m_tracker.forget(path);
        emit photoLeft(path);
    });
    connect(&m_events, &FolderEvents::overflowed, this, [this] {
        for (Folder& f : m_folders) {
            if (!f.polled && f.present)
                seeAll(f);
        }
    });
    connect(&m_events, &FolderEvents::folderGone, this, &HotFolderWatch::folderGone);
    connect(&m_tick, &QTimer::timeout, this, &HotFolderWatch::tick);
    // Often enough that a photo is taken soon after it settles, seldom
    // enough that a look costs nothing.
    m_tick.setInterval(std::clamp(settleMs / 4, 50, 500));
}

void HotFolderWatch::start()
{
    for (Folder& f : m_folders) {
        watchFolder(f, true);
        seeAll(f);
    }
    updateTimer();
}

void HotFolderWatch::stop()
{
    m_stopped = true;
    m_tick.stop();
    m_events.disconnect(this);
}

void HotFolderWatch::follow(const QString& path)
{
    m_tracker.follow(path);
    updateTimer();
}

void HotFolderWatch::forget(const QString& path)
{
    m_tracker.forget(path);
}

void HotFolderWatch::watchFolder(Folder& folder, bool announce)
{
    const QString kind = m_forcePoll ? QString() : eventlessFileSystem(folder.path);
    QString why;
    folder.polled = m_forcePoll || !kind.isEmpty() || !m_events.add(folder.path, &why);
    if (!announce || !folder.polled || m_forcePoll)
        return;
    const QString every = QStringLiteral("looking at it every %1 ms").arg(m_tick.interval());
    if (!kind.isEmpty())
        emit notice(QStringLiteral("%1 is on %2, where change events may not arrive: %3").arg(folder.path, kind, every));
    else
        emit notice(QStringLiteral("%1: no change events (%2): %3").arg(folder.path, why, every));
}

// The folder's photo entries; false when it cannot be read (and, when it is
// gone, it is waited for).
bool HotFolderWatch::scan(const Folder& folder, QList<FolderEntry>* entries)
{
    int error = 0;
    if (scanPhotoEntries(folder.path, entries, &error))
        return true;
    if (error == ENOENT || error == ENOTDIR)
        folderGone(folder.path);
    return false;
}

// Everything in the folder, as at the start: whole photos are taken at once.
void HotFolderWatch::seeAll(Folder& folder)
{
    QList<FolderEntry> entries;
    if (!scan(folder, &entries))
        return;
    folder.names.clear();
    folder.turn.clear();
    for (const FolderEntry& e : std::as_const(entries)) {
        if (folder.polled) {
            folder.names.insert(e.name, e.inode);
            folder.turn.append(e.name);
        }
        seeName(folder, e.name, false);
    }
}

QString HotFolderWatch::photoPath(const Folder& folder, const QByteArray& name)
{
    if (!looksLikePhotoName(name))
        return QString();
    if (!qtCanAddress(name)) {
        const QByteArray key = QFile::encodeName(folder.path) + '/' + name;
        if (!m_unaddressable.contains(key) && m_takes(folder.path + QLatin1Char('/') + printableName(name))) {
            m_unaddressable.insert(key);
            emit notice(unaddressableProblem(folder.path, name));
        }
        return QString();
    }
    const QString path = folder.path + QLatin1Char('/') + QFile::decodeName(name);
    return m_takes(path) ? path : QString();
}

void HotFolderWatch::seeName(const Folder& folder, const QByteArray& name, bool complete)
{
    const QString path = photoPath(folder, name);
    if (!path.isEmpty() && !m_stopped)
        emit photoSeen(path, complete);
}

void HotFolderWatch::followName(const Folder& folder, const QByteArray& name, qint64 lingerMs)
{
    const QString path = photoPath(folder, name);
    if (!path.isEmpty())
        m_tracker.follow(path, lingerMs);
}

// One directory read: names new since the last read (or another file under
// an old name) are followed until they settle, and a few photos already
// there are looked at again.
void HotFolderWatch::poll(Folder& folder)
{
    QList<FolderEntry> entries;
    if (!scan(folder, &entries))
        return;
    const qint64 linger = 10LL * m_settleMs;
    bool changed = entries.size() != folder.names.size();
    for (const FolderEntry& e : std::as_const(entries)) {
        const auto known = folder.names.constFind(e.name);
        if (known == folder.names.cend() || *known != e.inode) {
            changed = true;
            followName(folder, e.name, linger);
        }
    }
    if (changed) {
        folder.names.clear();
        folder.turn.clear();
        for (const FolderEntry& e : std::as_const(entries)) {
            folder.names.insert(e.name, e.inode);
            folder.turn.append(e.name);
        }
    }
    for (int i = 0; i < kLookedAtPerRead && !folder.turn.isEmpty(); ++i)
        followName(folder, folder.turn[folder.nextInTurn++ % folder.turn.size()], 0);
    folder.nextInTurn %= qMax(1, int(folder.turn.size()));
}

void HotFolderWatch::tick()
{
    for (Folder& f : m_folders) {
        if (!f.present && QFileInfo(f.path).isDir()) {
            f.present = true;
            watchFolder(f, false);
            emit notice(QStringLiteral("the watched folder %1 is back").arg(f.path));
            seeAll(f);
        } else if (f.present && f.polled) {
            poll(f);
        }
    }
    for (const QString& path : m_tracker.settled()) {
        if (!m_stopped)
            emit photoSeen(path, true);
    }
    updateTimer();
}

void HotFolderWatch::folderGone(const QString& path)
{
    Folder* f = folderAt(path);
    if (!f || !f->present)
        return;
    f->present = false;
    emit notice(QStringLiteral("the watched folder %1 is gone: waiting for it to come back").arg(path));
    updateTimer();
}

void HotFolderWatch::updateTimer()
{
    const bool needed = !m_stopped && (!m_tracker.isEmpty() || std::any_of(m_folders.cbegin(), m_folders.cend(), [](const Folder& f) {
        return f.polled || !f.present;
    }));
    if (needed && !m_tick.isActive())
        m_tick.start();
    else if (!needed)
        m_tick.stop();
}

HotFolderWatch::Folder* HotFolderWatch::folderAt(const QString& path)
{
    for (Folder& f : m_folders) {
        if (f.path == path)
            return &f;
    }
    return nullptr;
}

} // namespace batch
