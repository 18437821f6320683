// SPDX-License-Identifier: MIT
#include "batch/journal.h"

#include "keying/atomicfile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace batch {

namespace {

const QString kJournalPrefix = QStringLiteral(".plendra-journal");
// Superseded lines allowed beyond the live ones before the file is rewritten.
constexpr qint64 kSlack = 1024;

QByteArray checksum(const QByteArray& body)
{
    return QCryptographicHash::hash(body, QCryptographicHash::Md5).toHex().left(8);
}

QByteArray encodedText(const QString& text)
{
    return text.toUtf8().toPercentEncoding();
}

// "CHECKSUM J1 dev inode size mtime ctime hash recorded photo output\n"
QByteArray lineFor(const QString& photo, const JournalEntry& e)
{
    const PhotoIdentity& id = e.identity;
    const QByteArray body = "J1 " + QByteArray::number(id.device) + ' ' + QByteArray::number(id.inode) + ' '
        + QByteArray::number(id.size) + ' ' + QByteArray::number(id.modifiedNs) + ' '
        + QByteArray::number(id.changedNs) + ' ' + e.contentHash.toHex() + ' ' + QByteArray::number(e.recordedMs)
        + ' ' + encodedText(photo) + ' ' + encodedText(e.output);
    return checksum(body) + ' ' + body + '\n';
}

// The entry of a whole, intact line; false for anything else (a line cut
// short by a crash, or damaged).
bool parseLine(const QByteArray& line, QString* photo, JournalEntry* e)
{
    const int space = line.indexOf(' ');
    if (space != 8 || checksum(line.mid(9)) != line.left(8))
        return false;
    const QList<QByteArray> f = line.mid(9).split(' ');
    if (f.size() != 10 || f[0] != "J1")
        return false;
    bool ok[7] = {};
    e->identity.device = f[1].toULongLong(&ok[0]);
    e->identity.inode = f[2].toULongLong(&ok[1]);
    e->identity.size = f[3].toLongLong(&ok[2]);
    e->identity.modifiedNs = f[4].toLongLong(&ok[3]);
    e->identity.changedNs = f[5].toLongLong(&ok[4]);
    e->contentHash = QByteArray::fromHex(f[6]);
    e->recordedMs = f[7].toLongLong(&ok[5]);
    ok[6] = !f[8].isEmpty();
    *photo = QString::fromUtf8(QByteArray::fromPercentEncoding(f[8]));
    e->output = QString::fromUtf8(QByteArray::fromPercentEncoding(f[9]));
    return std::all_of(std::begin(ok), std::end(ok), [](bool b) { return b; });
}

// Photos are known by their absolute path, however the folder was named.
QString keyOf(const QString& photo)
{
    return QDir::cleanPath(QDir::current().absoluteFilePath(photo));
}

} // namespace

Journal::Journal(const QString& outputFolder, const QString& fileName, std::function<bool(const QString&)> owns)
    : m_folder(outputFolder), m_path(outputFolder + QLatin1Char('/') + fileName), m_owns(std::move(owns))
{
}

Journal::~Journal()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

QString Journal::fileNameFor(int shard, int shards)
{
    return shards == 1 ? kJournalPrefix : QStringLiteral("%1-%2-of-%3").arg(kJournalPrefix).arg(shard).arg(shards);
}

bool Journal::open(QString* why)
{
    const QStringList names = QDir(m_folder).entryList({kJournalPrefix + QLatin1Char('*')}, QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        if (m_folder + QLatin1Char('/') + name != m_path)
            readFile(m_folder + QLatin1Char('/') + name, false);
    }
    readFile(m_path, true);
    m_fd = ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (m_fd < 0) {
        *why = QStringLiteral("cannot open the journal %1: %2").arg(m_path, qt_error_string(errno));
        return false;
    }
    // A line cut short, or many superseded ones: written again whole (on a
    // full disk, with the first record that finds room).
    if (m_rewriteDue || m_lines > 2 * m_entries.size() + kSlack) {
        QString notNow;
        rewrite(&notNow);
    }
    return true;
}

void Journal::readFile(const QString& path, bool own)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray all = file.readAll();
    const QList<QByteArray> lines = all.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        const bool last = i == lines.size() - 1;
        if (last && lines[i].isEmpty())
            break;
        QString photo;
        JournalEntry e;
        // The last line without its end is one a crash cut short.
        if (last || !parseLine(lines[i], &photo, &e)) {
            m_rewriteDue = m_rewriteDue || own;
            continue;
        }
        if (own)
            ++m_lines;
        const auto known = m_entries.constFind(photo);
        if (known == m_entries.cend() || known->recordedMs <= e.recordedMs)
            m_entries.insert(photo, e);
    }
}

std::optional<JournalEntry> Journal::entry(const QString& photo) const
{
    const auto it = m_entries.constFind(keyOf(photo));
    if (it == m_entries.cend())
        return std::nullopt;
    return *it;
}

bool Journal::record(const QString& photo, const JournalEntry& entry, QString* why)
{
    JournalEntry e = entry;
    if (e.recordedMs == 0)
        e.recordedMs = QDateTime::currentMSecsSinceEpoch();
    const QString key = keyOf(photo);
    m_entries.insert(key, e);
    if (m_rewriteDue || fileWasRemoved() || m_lines + 1 > 2 * m_entries.size() + kSlack)
        return rewrite(why);
    if (!append(lineFor(key, e), why)) {
        m_rewriteDue = true;
        return false;
    }
    ++m_lines;
    return true;
}

bool Journal::append(const QByteArray& line, QString* why)
{
    // One write per line: with O_APPEND it lands whole at the end, and the
    // sync makes it outlast a power cut.
    if (m_fd < 0 || ::write(m_fd, line.constData(), size_t(line.size())) != ssize_t(line.size())
        || (::fdatasync(m_fd) != 0 && errno != EINVAL)) {
        *why = QStringLiteral("cannot add to the journal %1: %2").arg(m_path, qt_error_string(errno));
        return false;
    }
    return true;
}

bool Journal::rewrite(QString* why)
{
    QByteArray all;
    qint64 lines = 0;
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
        if (m_owns(it.key())) {
            all += lineFor(it.key(), it.value());
            ++lines;
        }
    }
    keying::WriteFailure failure;
    if (!keying::writeFileWhole(m_path, all, &failure)) {
        m_rewriteDue = true;
        *why = QStringLiteral("cannot write the journal %1: %2").arg(m_path, failure.why);
        return false;
    }
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    m_lines = lines;
    m_rewriteDue = m_fd < 0;
    if (m_fd < 0)
        *why = QStringLiteral("cannot open the journal %1: %2").arg(m_path, qt_error_string(errno));
    return m_fd >= 0;
}

bool Journal::fileWasRemoved() const
{
    struct stat s = {};
    return m_fd < 0 || ::fstat(m_fd, &s) != 0 || s.st_nlink == 0;
}

} // namespace batch
