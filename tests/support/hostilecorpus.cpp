// SPDX-License-Identifier: MIT
#include "tests/support/hostilecorpus.h"

#include "tests/support/foldertree.h"
#include "tests/support/testsupport.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QProcess>
#include <QSet>
#include <QtEndian>

#include <zlib.h>

namespace testsupport {

namespace {

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

// A PNG chunk with its length and checksum.
QByteArray pngChunk(const char* type, const QByteArray& data)
{
    QByteArray chunk;
    QByteArray length(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), length.data());
    chunk += length;
    QByteArray body = QByteArray(type, 4) + data;
    chunk += body;
    QByteArray crc(4, '\0');
    qToBigEndian<quint32>(quint32(crc32(0, reinterpret_cast<const Bytef*>(body.constData()), uInt(body.size()))),
                          crc.data());
    chunk += crc;
    return chunk;
}

// A well-formed PNG header that claims a picture far beyond any memory, with
// a few bytes of pixel data: a reader that believes the header first would
// try to allocate 40 gigabytes.
QByteArray pngClaiming(quint32 width, quint32 height)
{
    QByteArray header(13, '\0');
    qToBigEndian<quint32>(width, header.data());
    qToBigEndian<quint32>(height, header.data() + 4);
    header[8] = 8; // bit depth
    header[9] = 2; // RGB
    QByteArray rows(64, '\0');
    QByteArray compressed(256, '\0');
    uLongf size = uLongf(compressed.size());
    compress(reinterpret_cast<Bytef*>(compressed.data()), &size, reinterpret_cast<const Bytef*>(rows.constData()),
             uLong(rows.size()));
    compressed.truncate(int(size));
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", header) + pngChunk("IDAT", compressed)
        + pngChunk("IEND", QByteArray());
}

// ImageMagick writes what Qt cannot: CMYK JPEGs and multi-page TIFFs.
bool convert(const QStringList& arguments)
{
    QProcess run;
    run.start(QStringLiteral("convert"), arguments);
    return run.waitForFinished(60000) && run.exitStatus() == QProcess::NormalExit && run.exitCode() == 0;
}

} // namespace

QList<HostileEntry> makeHostileCorpus(const QString& folder, bool* ok)
{
    bool allMade = QDir().mkpath(folder);
    QList<HostileEntry> corpus;
    const auto add = [&](const QString& name, const QString& file, HostileKind kind, bool made) {
        corpus.append({name, folder + QLatin1Char('/') + file, kind});
        allMade = allMade && made;
    };

    const QImage shot = studioShot(160, 120, QColor(40, 180, 60), 77);
    for (const char* suffix : {"jpg", "png", "tif", "bmp", "xpm"}) {
        const QString file = QStringLiteral("empty.") + QLatin1String(suffix);
        add(QStringLiteral("zero-byte .") + QLatin1String(suffix), file, HostileKind::Unreadable,
            writeBytes(folder + QLatin1Char('/') + file, QByteArray()));
    }
    for (const auto& [format, file] : {std::pair{"JPEG", "truncated.jpg"}, std::pair{"PNG", "truncated.png"},
                                       std::pair{"TIFF", "truncated.tif"}}) {
        const QByteArray whole = encoded(shot, format);
        // A cut-off JPEG still decodes, its missing part grey; the others do not.
        const HostileKind kind = QByteArray(format) == "JPEG" ? HostileKind::Image : HostileKind::Unreadable;
        add(QStringLiteral("truncated ") + QLatin1String(format), QLatin1String(file), kind,
            !whole.isEmpty() && writeBytes(folder + QLatin1Char('/') + QLatin1String(file), whole.left(whole.size() * 2 / 5)));
    }
    add(QStringLiteral("text named photo.png"), QStringLiteral("photo.png"), HostileKind::Unreadable,
        writeBytes(folder + QStringLiteral("/photo.png"), "These are my holiday notes, not a picture.\n"));
    add(QStringLiteral("folder album_png"), QStringLiteral("album_png"), HostileKind::Folder,
        QDir().mkpath(folder + QStringLiteral("/album_png")));
    add(QStringLiteral("folder x.jpg"), QStringLiteral("x.jpg"), HostileKind::Folder,
        QDir().mkpath(folder + QStringLiteral("/x.jpg")));
    add(QStringLiteral("PNG claiming 100000 x 100000"), QStringLiteral("huge.png"), HostileKind::Unreadable,
        writeBytes(folder + QStringLiteral("/huge.png"), pngClaiming(100000, 100000)));

    QImage one(1, 1, QImage::Format_RGB32);
    one.fill(qRgb(40, 180, 60));
    add(QStringLiteral("1 x 1 photo"), QStringLiteral("one.png"), HostileKind::Image, one.save(folder + QStringLiteral("/one.png")));
    add(QStringLiteral("16-bit PNG"), QStringLiteral("deep.png"), HostileKind::Image,
        shot.convertToFormat(QImage::Format_RGBA64).save(folder + QStringLiteral("/deep.png")));
    add(QStringLiteral("grayscale JPEG"), QStringLiteral("gray.jpg"), HostileKind::Image,
        shot.convertToFormat(QImage::Format_Grayscale8).save(folder + QStringLiteral("/gray.jpg")));
    add(QStringLiteral("CMYK JPEG"), QStringLiteral("cmyk.jpg"), HostileKind::Image,
        shot.save(folder + QStringLiteral("/cmyk-source.png"))
            && convert({folder + QStringLiteral("/cmyk-source.png"), QStringLiteral("-colorspace"), QStringLiteral("CMYK"),
                        folder + QStringLiteral("/cmyk.jpg")})
            && QFile::remove(folder + QStringLiteral("/cmyk-source.png")));
    add(QStringLiteral("paletted PNG"), QStringLiteral("palette.png"), HostileKind::Image,
        shot.convertToFormat(QImage::Format_Indexed8).save(folder + QStringLiteral("/palette.png")));
    add(QStringLiteral("XPM"), QStringLiteral("picture.xpm"), HostileKind::Image,
        shot.convertToFormat(QImage::Format_Indexed8).save(folder + QStringLiteral("/picture.xpm")));
    QImage alpha = shot.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < alpha.height(); ++y)
        for (int x = 0; x < alpha.width() / 2; ++x)
            alpha.setPixel(x, y, qRgba(40, 180, 60, x * 255 / (alpha.width() / 2)));
    add(QStringLiteral("PNG with alpha"), QStringLiteral("alpha.png"), HostileKind::Image, alpha.save(folder + QStringLiteral("/alpha.png")));
    add(QStringLiteral("multi-page TIFF"), QStringLiteral("pages.tif"), HostileKind::Image,
        shot.save(folder + QStringLiteral("/page1.png")) && backgroundPicture(160, 120, 5).save(folder + QStringLiteral("/page2.png"))
            && convert({folder + QStringLiteral("/page1.png"), folder + QStringLiteral("/page2.png"), folder + QStringLiteral("/pages.tif")})
            && QFile::remove(folder + QStringLiteral("/page1.png")) && QFile::remove(folder + QStringLiteral("/page2.png")));
    add(QStringLiteral("blanks in the name"), QStringLiteral("my holiday photo.jpg"), HostileKind::Image,
        shot.save(folder + QStringLiteral("/my holiday photo.jpg")));
    add(QStringLiteral("non-ASCII name"), QStringLiteral("Größe été ñandú 写真.png"), HostileKind::Image,
        shot.save(folder + QStringLiteral("/Größe été ñandú 写真.png")));
    const QString longName = QString(246, QLatin1Char('L')) + QStringLiteral(".png");
    add(QStringLiteral("250-character name"), longName, HostileKind::Image, shot.save(folder + QLatin1Char('/') + longName));

    if (ok)
        *ok = allMade;
    return corpus;
}

QList<HostileEntry> entriesOfKind(const QList<HostileEntry>& corpus, HostileKind kind)
{
    QList<HostileEntry> chosen;
    for (const HostileEntry& entry : corpus) {
        if (entry.kind == kind)
            chosen.append(entry);
    }
    return chosen;
}

QMap<QString, QByteArray> snapshotTree(const QString& root)
{
    QMap<QString, QByteArray> snapshot;
    const QString base = QDir(root).absolutePath();
    QDirIterator it(base, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        const QString relative = path.mid(base.size() + 1);
        if (info.isDir() && !info.isSymLink()) {
            snapshot.insert(relative, QByteArrayLiteral("folder"));
            continue;
        }
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            snapshot.insert(relative, QByteArrayLiteral("unreadable"));
            continue;
        }
        QCryptographicHash digest(QCryptographicHash::Sha256);
        digest.addData(&file);
        snapshot.insert(relative, digest.result().toHex());
    }
    return snapshot;
}

QStringList treeDifferences(const QMap<QString, QByteArray>& before, const QMap<QString, QByteArray>& after)
{
    return differingKeys(before, after);
}

} // namespace testsupport
