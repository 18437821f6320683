// SPDX-License-Identifier: MIT
#include "bench/qualitysets.h"

#include "tools/groundtruth/mattescore.h"
#include "tools/groundtruth/subjects.h"

#include <QDir>
#include <QThreadPool>

#include <cstdio>

namespace quality {

namespace {

// Two subjects of every kind in each set; the sets never share a seed.
constexpr int kSubjectsPerKind = 2;
constexpr std::uint64_t kTuningSeeds = 1000;
constexpr std::uint64_t kHeldOutSeeds = 5000;

} // namespace

std::vector<BenchPhoto> benchPhotos(PhotoSet set, const QString& mattingFolder)
{
    using namespace groundtruth;
    std::vector<BenchPhoto> photos;
    const std::uint64_t base = set == PhotoSet::Tuning ? kTuningSeeds : kHeldOutSeeds;
    // The held-out subjects are a little larger, so that nothing tuned can
    // lean on the frame's size.
    const QSize size = set == PhotoSet::Tuning ? QSize(640, 480) : QSize(720, 540);
    struct Order { SubjectKind kind; std::uint64_t seed; };
    std::vector<Order> orders;
    for (int i = 0; i < kSubjectsPerKind; ++i) {
        for (SubjectKind kind : kAllSubjectKinds) {
            const std::uint64_t seed = base + orders.size();
            orders.push_back({kind, seed});
            BenchPhoto p;
            p.name = QStringLiteral("%1-%2").arg(subjectKindName(kind)).arg(seed);
            p.seed = seed;
            photos.push_back(p);
        }
    }
    QThreadPool* pool = QThreadPool::globalInstance();
    for (size_t i = 0; i < orders.size(); ++i) {
        pool->start([&photos, &orders, i, size] {
            photos[i].truth = std::make_shared<TrueMatte>(makeSubject(orders[i].kind, orders[i].seed, size));
        });
    }
    pool->waitForDone();

    if (set == PhotoSet::HeldOut) {
        const QDir folder(mattingFolder);
        const QStringList real = {QStringLiteral("lemur"), QStringLiteral("dandelion")};
        for (int i = 0; i < real.size(); ++i) {
            auto m = loadMatte(folder.filePath(real[i] + QStringLiteral(".foreground.png")),
                               folder.filePath(real[i] + QStringLiteral(".alpha.png")));
            if (!m) {
                std::fprintf(stderr, "%s: no readable %s.foreground.png and %s.alpha.png; the real photo is left out\n",
                             qPrintable(mattingFolder), qPrintable(real[i]), qPrintable(real[i]));
                continue;
            }
            BenchPhoto p;
            p.name = real[i];
            p.seed = base + 900 + static_cast<std::uint64_t>(i);
            p.real = true;
            p.truth = std::make_shared<TrueMatte>(std::move(*m));
            photos.push_back(p);
        }
    }
    return photos;
}

} // namespace quality
