// SPDX-License-Identifier: MIT
// Scales the program's one icon picture to the sizes desktops ask for, at
// build time, so that the picture is kept once in the sources.
//
//   plendra_iconsizes hicolor SOURCE OUTDIR NAME SIZE...
//       writes OUTDIR/<S>x<S>/apps/NAME.png for each size (the icon theme's shape)
//   plendra_iconsizes iconset SOURCE OUTDIR
//       writes the macOS iconset (icon_16x16.png ... icon_512x512@2x.png)
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QString>
#include <QStringList>

#include <cstdio>

namespace {

// Smooth scaling, downwards or upwards, keeping the picture square.
bool writeScaled(const QImage& source, int size, const QString& path)
{
    if (size <= 0 || size > 4096)
        return false;
    const QImage scaled = source.scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return QDir().mkpath(QFileInfo(path).path()) && scaled.save(path, "PNG");
}

bool writeHicolor(const QImage& source, const QString& outDir, const QString& name, const QStringList& sizes)
{
    for (const QString& text : sizes) {
        bool ok = false;
        const int size = text.toInt(&ok);
        const QString path = QStringLiteral("%1/%2x%2/apps/%3.png").arg(outDir).arg(size).arg(name);
        if (!ok || !writeScaled(source, size, path)) {
            std::fprintf(stderr, "plendra_iconsizes: cannot write size %s to %s\n", qPrintable(text), qPrintable(outDir));
            return false;
        }
    }
    return true;
}

// The iconset that Apple's iconutil turns into an .icns: each size once and
// at twice the pixels.
bool writeIconset(const QImage& source, const QString& outDir)
{
    for (int size : {16, 32, 128, 256, 512}) {
        const QString base = QStringLiteral("%1/icon_%2x%2").arg(outDir).arg(size);
        if (!writeScaled(source, size, base + QStringLiteral(".png"))
            || !writeScaled(source, 2 * size, base + QStringLiteral("@2x.png"))) {
            std::fprintf(stderr, "plendra_iconsizes: cannot write the iconset to %s\n", qPrintable(outDir));
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    const bool hicolor = args.size() >= 5 && args[0] == QLatin1String("hicolor");
    const bool iconset = args.size() == 3 && args[0] == QLatin1String("iconset");
    if (!hicolor && !iconset) {
        std::fprintf(stderr, "usage: plendra_iconsizes hicolor SOURCE OUTDIR NAME SIZE... | iconset SOURCE OUTDIR\n");
        return 2;
    }
    const QImage source(args[1]);
    if (source.isNull()) {
        std::fprintf(stderr, "plendra_iconsizes: %s: not a readable picture\n", qPrintable(args[1]));
        return 1;
    }
    const bool written = hicolor ? writeHicolor(source, args[2], args[3], args.mid(4)) : writeIconset(source, args[2]);
    return written ? 0 : 1;
}
