// SPDX-License-Identifier: MIT
// Writes made ground truth to look at: for each subject kind and seed, the
// true foreground and alpha, and the photo under every condition.
//   plendra_groundtruth OUTDIR [SEED...]
#include "tools/groundtruth/shooting.h"
#include "tools/groundtruth/subjects.h"

#include <QDir>
#include <QCoreApplication>
#include <QImage>

#include <cmath>
#include <cstdio>

using namespace groundtruth;

namespace {

QImage alphaImage(const TrueMatte& m)
{
    QImage img(m.width, m.height, QImage::Format_Grayscale8);
    for (int y = 0; y < m.height; ++y) {
        uchar* row = img.scanLine(y);
        for (int x = 0; x < m.width; ++x)
            row[x] = static_cast<uchar>(std::lround(m.alphaAt(x, y) * 255.0f));
    }
    return img;
}

QImage foregroundImage(const TrueMatte& m)
{
    QImage img(m.width, m.height, QImage::Format_RGB32);
    for (int y = 0; y < m.height; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < m.width; ++x) {
            const Rgb& c = m.foreground[static_cast<size_t>(y) * m.width + x];
            row[x] = qRgb(std::lround(c.r * 255), std::lround(c.g * 255), std::lround(c.b * 255));
        }
    }
    return img;
}

} // namespace

int main(int argc, char** argv)
{
    // The JPEG writer is a plug-in, found through the application object.
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTDIR [SEED...]\n", argv[0]);
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    if (!QDir().mkpath(out)) {
        std::fprintf(stderr, "%s: cannot make the folder\n", argv[1]);
        return 1;
    }
    std::vector<std::uint64_t> seeds;
    for (int i = 2; i < argc; ++i)
        seeds.push_back(QByteArray(argv[i]).toULongLong());
    if (seeds.empty())
        seeds.push_back(1);
    int failed = 0;
    for (std::uint64_t seed : seeds) {
        for (SubjectKind kind : kAllSubjectKinds) {
            const TrueMatte m = makeSubject(kind, seed, QSize(640, 480));
            const QString name = out + QStringLiteral("/%1-%2").arg(subjectKindName(kind)).arg(seed);
            bool ok = alphaImage(m).save(name + QStringLiteral(".alpha.png"))
                && foregroundImage(m).save(name + QStringLiteral(".foreground.png"));
            for (const Condition& c : allConditions())
                ok = shoot(m, c, seed).save(name + QLatin1Char('.') + conditionTag(c) + QStringLiteral(".png")) && ok;
            std::printf("%s %s\n", qPrintable(name), ok ? "written" : "NOT written");
            failed += ok ? 0 : 1;
        }
    }
    return failed ? 1 : 0;
}
