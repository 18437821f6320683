// SPDX-License-Identifier: MIT
#include "batch/folderscan.h"

#include "intake/imagetypes.h"

#include <QFile>

#include <cerrno>
#include <dirent.h>

namespace batch {

bool scanPhotoEntries(const QString& folder, QList<FolderEntry>* entries, int* error)
{
    entries->clear();
    DIR* dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir) {
        if (error)
            *error = errno;
        return false;
    }
    while (const dirent* e = ::readdir(dir)) {
        const QByteArray name(e->d_name);
        if (looksLikePhotoName(name))
            entries->append(FolderEntry{name, quint64(e->d_ino)});
    }
    ::closedir(dir);
    return true;
}

bool looksLikePhotoName(const QByteArray& name)
{
    // Looked at for every entry of a polled folder at every read: the
    // suffix (plain ASCII, so a name that is not UTF-8 still shows it) is
    // compared as bytes.
    static const QList<QByteArray> suffixes = [] {
        QList<QByteArray> out;
        for (const QString& filter : kWatchedFolderNameFilters)
            out << filter.mid(2).toLatin1(); // "*.jpg" -> "jpg"
        return out;
    }();
    const qsizetype dot = name.lastIndexOf('.');
    return !name.startsWith('.') && dot > 0 && suffixes.contains(name.mid(dot + 1).toLower());
}

bool qtCanAddress(const QByteArray& name)
{
    return QFile::encodeName(QFile::decodeName(name)) == name;
}

QString printableName(const QByteArray& name)
{
    QString out;
    for (int i = 0; i < name.size();) {
        // The longest run of valid UTF-8 from here, else one escaped byte.
        int length = 1;
        const auto c = static_cast<unsigned char>(name[i]);
        if (c >= 0xC0)
            length = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : 2;
        const QByteArray piece = name.mid(i, length);
        if (c >= 0x20 && c < 0x7F) {
            out += QLatin1Char(char(c));
            ++i;
        } else if (c >= 0xC0 && piece.size() == length && qtCanAddress(piece)) {
            out += QString::fromUtf8(piece);
            i += length;
        } else {
            out += QStringLiteral("\\x%1").arg(c, 2, 16, QLatin1Char('0'));
            ++i;
        }
    }
    return out;
}

QString unaddressableProblem(const QString& folder, const QByteArray& name)
{
    return QStringLiteral("%1/%2: not keyed: its name is not valid UTF-8, and Qt cannot open such a name; rename it")
        .arg(folder, printableName(name));
}

} // namespace batch
