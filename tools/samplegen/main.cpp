// SPDX-License-Identifier: MIT
// Writes every sample picture of the product into a resources folder:
// the two keying samples, the "Bkg" backgrounds, the window icon, the logo and
// the button glyphs. Deterministic: the same bytes on every run. Afterwards it
// keys the two photos as read back from disk and prints how well they key.

#include "backgrounds.h"
#include "canvas.h"
#include "glyphs.h"
#include "selfcheck.h"
#include "studiophoto.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>

#include <cstdio>

using namespace samplegen;

namespace {

bool write(const QImage& img, const QString& path, const char* format, int quality)
{
    if (!saveImage(img, path, format, quality)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    std::printf("wrote %s (%d x %d, %lld bytes)\n", qPrintable(path), img.width(), img.height(),
                static_cast<long long>(QFileInfo(path).size()));
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    // Fonts need a GUI application; no window is ever shown.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    const QStringList args = app.arguments();
    if (args.size() < 2 || args.size() > 3) {
        std::fprintf(stderr, "usage: %s <resources folder> [<folder for keyed previews>]\n",
                     qPrintable(QFileInfo(args.value(0)).fileName()));
        return 2;
    }
    const QDir res(args.at(1));
    const QString viewDir = args.size() > 2 ? args.at(2) : QCoreApplication::applicationDirPath();
    if (!res.exists() || !res.mkpath(QStringLiteral("Bkg")) || !QDir().mkpath(viewDir)) {
        std::fprintf(stderr, "cannot use %s\n", qPrintable(args.at(1)));
        return 2;
    }

    bool ok = true;
    ok &= write(makeIcon(), res.filePath(QStringLiteral("icon.png")), "PNG", 0);
    ok &= write(makeLogo(), res.filePath(QStringLiteral("w_logo.png")), "PNG", 0);
    ok &= write(makePlusGlyph(), res.filePath(QStringLiteral("+.png")), "PNG", 0);
    ok &= write(makeMinusGlyph(), res.filePath(QStringLiteral("-.png")), "PNG", 0);
    ok &= write(makeApplyGlyph(), res.filePath(QStringLiteral("Apply.png")), "PNG", 0);

    const std::vector<Background> backgrounds = makeBackgrounds();
    for (const Background& b : backgrounds)
        ok &= write(b.image, res.filePath(QStringLiteral("Bkg/") + b.fileName), b.format, b.quality);

    const StudioPhoto green = makeGreenScreenPhoto();
    ok &= write(green.image, res.filePath(QStringLiteral("1green.JPG")), "JPEG", 90);
    const StudioPhoto blue = makeBlueScreenPhoto();
    ok &= write(blue.image, res.filePath(QStringLiteral("blue1.JPG")), "JPEG", 90);
    if (!ok)
        return 1;

    // Key the photos as the program will see them: read back from disk.
    std::printf("keying check (previews in %s):\n", qPrintable(viewDir));
    bool keysWell = true;
    const QImage view = backgrounds.front().image;
    for (const auto& [name, photo] : {std::pair<QString, const StudioPhoto*>{QStringLiteral("1green.JPG"), &green},
                                      {QStringLiteral("blue1.JPG"), &blue}}) {
        const QImage loaded(res.filePath(name));
        const QImage bkg = view.scaled(loaded.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
        keysWell &= checkKeying(name, loaded, photo->truth, bkg, viewDir);
    }
    if (!keysWell) {
        std::printf("some clicks missed the keying targets\n");
        return 3;
    }
    return 0;
}
