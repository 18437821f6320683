// SPDX-License-Identifier: MIT
#pragma once

// Files made to be hostile to an image program: empty, truncated, lying about
// their type or size, odd formats and odd names. Generated afresh by each test
// in a temporary folder; nothing of it is committed.

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace testsupport {

// What a hostile entry is, and so what the program can make of it.
enum class HostileKind {
    Unreadable,     // no image can be read from it (empty, truncated, text, a folder...)
    Image,          // a readable image, however odd (a cut-off JPEG decodes, grey below the cut)
    Folder,         // a folder whose name looks like an image file
};

struct HostileEntry
{
    QString name;      // what the case is, for test row names
    QString path;      // absolute path of the file or folder
    HostileKind kind;
};

// Writes the corpus into `folder` and returns its entries. `ok` tells whether
// every entry could be made (a test fails on false). Cases:
//   zero-byte .jpg .png .tif .bmp .xpm; truncated JPEG, PNG and TIFF; a text
//   file named photo.png; folders album_png and x.jpg; a PNG whose header
//   claims 100000 x 100000 pixels; a 1 x 1 photo; a 16-bit PNG; grayscale and
//   CMYK JPEGs; a paletted PNG and an XPM; a PNG with alpha; a multi-page
//   TIFF; names with blanks, with non-ASCII letters and of 250 characters.
QList<HostileEntry> makeHostileCorpus(const QString& folder, bool* ok);

// The entries of `corpus` whose kind is `kind`.
QList<HostileEntry> entriesOfKind(const QList<HostileEntry>& corpus, HostileKind kind);

// Every file and folder below `root`: relative path -> content digest of a
// file, "folder" for a folder. Two snapshots are equal when nothing below
// `root` was added, removed or changed in content.
QMap<QString, QByteArray> snapshotTree(const QString& root);
// Relative paths that differ between two snapshots.
QStringList treeDifferences(const QMap<QString, QByteArray>& before, const QMap<QString, QByteArray>& after);

} // namespace testsupport
