// SPDX-License-Identifier: MIT
// Tries values of the soft keyer's knobs on the quality bench's TUNING set
// only (never the held-out set), calling the keyer in-process so that a knob
// can be swept without rebuilding. Per condition and value it prints mean
// alpha SAD, edge-band alpha MSE and composite MSE, as the quality bench does.
//
//   plendra_soft_tuning [knob=value ...] [sweep=knob:v1,v2,...]
//
// Knobs are the members of keying::SoftTuning (redWeight, maxShare, ...).
#include "bench/qualitysets.h"
#include "keying/softkey_tuning.h"
#include "tools/groundtruth/mattescore.h"
#include "tools/groundtruth/shooting.h"

#include <QGuiApplication>
#include <QMutex>
#include <QStringList>
#include <QThreadPool>

#include <cstdio>
#include <map>

using namespace groundtruth;

namespace {

float* knob(keying::SoftTuning& t, const QString& name)
{
    const std::map<QString, float*> knobs = {
        {"redWeight", &t.redWeight},       {"maxShare", &t.maxShare},       {"opaqueBelow", &t.opaqueBelow},
        {"clearAbove", &t.clearAbove},     {"recoverFrom", &t.recoverFrom}, {"minPlateDifference", &t.minPlateDifference},
        {"spillMax", &t.spillMax},         {"sureDifference", &t.sureDifference}, {"sureTolerance", &t.sureTolerance},
        {"plateKeep", &t.plateKeep},       {"subjectBelow", &t.subjectBelow}, {"subjectShare", &t.subjectShare},
        {"plateOutlier", &t.plateOutlier}, {"opaqueGrain", &t.opaqueGrain}, {"clearGrain", &t.clearGrain}, {"clearLevels", &t.clearLevels}, {"subjectLowest", &t.subjectLowest}, {"subjectReach", &t.subjectReach},
    };
    const auto it = knobs.find(name);
    return it == knobs.end() ? nullptr : it->second;
}

struct Shot
{
    QString name;
    std::shared_ptr<const TrueMatte> truth;
    QImage photo;
    QRgb key;
};

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    keying::SoftTuning base;
    QString sweepName;
    bool perPhoto = false;
    QString keep;
    QList<float> sweepValues{0};
    for (const QString& arg : app.arguments().mid(1)) {
        const QStringList kv = arg.split(QLatin1Char('='));
        if (kv.size() == 2 && kv[0] == QStringLiteral("sweep")) {
            const QStringList nv = kv[1].split(QLatin1Char(':'));
            sweepName = nv.value(0);
            sweepValues.clear();
            for (const QString& v : nv.value(1).split(QLatin1Char(',')))
                sweepValues << v.toFloat();
            if (!knob(base, sweepName))
                return 2;
        } else if (arg == QStringLiteral("perphoto")) {
            perPhoto = true;
        } else if (kv.size() == 2 && kv[0] == QStringLiteral("keep")) {
            keep = kv[1];
        } else if (kv.size() == 2 && knob(base, kv[0])) {
            *knob(base, kv[0]) = kv[1].toFloat();
        } else {
            std::fprintf(stderr, "unknown knob %s\n", qPrintable(arg));
            return 2;
        }
    }
    const std::vector<quality::BenchPhoto> photos = quality::benchPhotos(quality::PhotoSet::Tuning, QStringLiteral("/nonexistent"));
    const std::vector<Condition> conditions = allConditions();
    // Shots per condition, as the bench shoots them, the key where it clicks.
    std::vector<std::vector<Shot>> shots(conditions.size());
    for (size_t c = 0; c < conditions.size(); ++c) {
        for (const quality::BenchPhoto& p : photos) {
            const auto click = keyPointFor(*p.truth);
            if (!click)
                continue;
            Shot s;
            s.name = p.name;
            s.truth = p.truth;
            s.photo = shoot(*p.truth, conditions[c], p.seed);
            s.key = s.photo.pixel(*click);
            shots[c].push_back(std::move(s));
        }
    }
    std::printf("%zu tuning photos\n", photos.size());
    for (const float value : sweepValues) {
        keying::SoftOptions options;
        options.tuning = base;
        options.threads = 1;
        if (!sweepName.isEmpty())
            *knob(options.tuning, sweepName) = value;
        double allSad = 0, allComp = 0;
        for (size_t c = 0; c < conditions.size(); ++c) {
            QMutex lock;
            double sad = 0, edge = 0, comp = 0;
            for (const Shot& s : shots[c]) {
                QThreadPool::globalInstance()->start([&, sp = &s] {
                    const QImage cut = keying::softCutOut(sp->photo, sp->key, options);
                    const auto scores = MatteJudge(*sp->truth).score(keyedFromImage(cut));
                    QMutexLocker hold(&lock);
                    if (!keep.isEmpty()) {
                        const QString tag = keep + QLatin1Char('/') + conditionTag(conditions[c]) + QLatin1Char('-') + sp->name;
                        sp->photo.save(tag + QStringLiteral(".photo.png"));
                        cut.save(tag + QStringLiteral(".cut.png"));
                    }
                    if (scores && perPhoto)
                        std::printf("    %-28s %-12s SAD %6.3f  comp %6.3f\n", qPrintable(conditionName(conditions[c])),
                                    qPrintable(sp->name), scores->sad, scores->compositeMse);
                    if (scores) {
                        sad += scores->sad;
                        edge += scores->edgeMse;
                        comp += scores->compositeMse;
                    }
                });
            }
            QThreadPool::globalInstance()->waitForDone();
            const double n = double(shots[c].size());
            std::printf("%s=%-6g %-28s SAD %6.3f  edge %6.3f  comp %6.3f\n", qPrintable(sweepName), value,
                        qPrintable(conditionName(conditions[c])), sad / n, edge / n, comp / n);
            allSad += sad / n;
            allComp += comp / n;
        }
        std::printf("%s=%-6g %-28s SAD %6.3f                comp %6.3f\n\n", qPrintable(sweepName), value, "mean",
                    allSad / conditions.size(), allComp / conditions.size());
    }
    return 0;
}
