// SPDX-License-Identifier: MIT
// The keying-quality bench: every keyer against made and real true mattes,
// green and blue backdrops, clean, with edge spill, and uneven, each condition
// scored on its own (alpha SAD / alpha MSE in the edge band / composite MSE on
// a new background). Anchors with knobs (FFmpeg's keyers, the classic colour
// difference) are tuned per condition on the tuning set; the figures printed
// are on the held-out set, which no tuning ever sees.
//
//   plendra_quality_bench [PLENDRA_BATCH]          the full table (make bench runs it)
//   plendra_quality_bench --tuning --only soft      the soft keyer alone, tuning set only:
//                                                   for working on the soft keyer without
//                                                   ever seeing a held-out figure
// Add --per-photo for each photo's scores, --keep DIR to keep the photos and
// the keyers' outputs. PLENDRA_BATCH defaults to the plendra-batch built
// beside the bench.
#include "bench/qualitykeyers.h"
#include "bench/qualitysets.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThreadPool>

#include <cstdio>
#include <map>

using namespace groundtruth;
using namespace quality;

namespace {

struct Tally
{
    double sad = 0, edge = 0, composite = 0;
    int photos = 0;
    int failures = 0;
    QString firstError;
};

// The settings each keyer is run with under each condition, and what they gave.
struct Plan
{
    std::vector<std::vector<std::vector<int>>> settings; // [condition][keyer] -> settings
    std::vector<std::vector<std::vector<Tally>>> tallies; // same shape
};

Rgb meanAround(const QImage& photo, QPoint p, int radius)
{
    double r = 0, g = 0, b = 0;
    int n = 0;
    for (int y = p.y() - radius; y <= p.y() + radius; ++y) {
        if (y < 0 || y >= photo.height())
            continue;
        const QRgb* row = reinterpret_cast<const QRgb*>(photo.constScanLine(y));
        for (int x = p.x() - radius; x <= p.x() + radius; ++x) {
            if (x < 0 || x >= photo.width())
                continue;
            r += qRed(row[x]);
            g += qGreen(row[x]);
            b += qBlue(row[x]);
            ++n;
        }
    }
    n = std::max(n, 1);
    return Rgb{static_cast<float>(r / n / 255), static_cast<float>(g / n / 255), static_cast<float>(b / n / 255)};
}

void printScores(const char* what, const QString& photo, const QString& keyer, const MatteScores& s)
{
    std::printf("  %-14s %-18s %-34s SAD %8.3f  edge %8.3f  comp %8.3f\n", what, qPrintable(photo),
                qPrintable(keyer), s.sad, s.edgeMse, s.compositeMse);
}

// Keys every photo under every condition with every keyer's planned settings,
// photos spread over the pool.
void runPlan(Plan& plan, const std::vector<BenchPhoto>& photos, const std::vector<Condition>& conditions,
             const std::vector<const Keyer*>& keyers, const QString& workRoot, bool perPhoto)
{
    QMutex lock;
    QThreadPool* pool = QThreadPool::globalInstance();
    for (size_t c = 0; c < conditions.size(); ++c) {
        for (const BenchPhoto& photo : photos) {
            pool->start([&, c] {
                const TrueMatte& truth = *photo.truth;
                const auto click = keyPointFor(truth);
                if (!click) {
                    QMutexLocker hold(&lock);
                    std::fprintf(stderr, "%s: no clear backdrop to click on; left out\n", qPrintable(photo.name));
                    return;
                }
                ShotPhoto shot;
                shot.name = photo.name;
                shot.condition = conditions[c];
                shot.photo = shoot(truth, conditions[c], photo.seed);
                const QString folder = workRoot + QLatin1Char('/') + conditionTag(conditions[c]);
                shot.workDir = folder + QLatin1Char('/') + photo.name;
                QDir().mkpath(shot.workDir);
                shot.photoPath = folder + QLatin1Char('/') + photo.name + QStringLiteral(".png");
                shot.keyPoint = *click;
                shot.keyColour = meanAround(shot.photo, shot.keyPoint, 4);
                const bool written = shot.photo.save(shot.photoPath, "PNG");
                const MatteJudge judge(truth);
                for (size_t k = 0; k < keyers.size(); ++k) {
                    const std::vector<int>& settings = plan.settings[c][k];
                    if (settings.empty())
                        continue;
                    std::vector<KeyResult> results;
                    if (written)
                        results = keyers[k]->key(shot, settings);
                    else
                        results.assign(settings.size(), KeyResult{{}, QStringLiteral("cannot write %1").arg(shot.photoPath)});
                    for (size_t s = 0; s < settings.size(); ++s) {
                        const auto scores = results[s].error.isEmpty() ? judge.score(results[s].matte) : std::nullopt;
                        QMutexLocker hold(&lock);
                        Tally& t = plan.tallies[c][k][s];
                        if (!scores) {
                            ++t.failures;
                            if (t.firstError.isEmpty())
                                t.firstError = results[s].error.isEmpty() ? QStringLiteral("%1: output of another size").arg(photo.name)
                                                                           : results[s].error;
                            continue;
                        }
                        t.sad += scores->sad;
                        t.edge += scores->edgeMse;
                        t.composite += scores->compositeMse;
                        ++t.photos;
                        if (perPhoto && settings.size() == 1)
                            printScores(qPrintable(conditionTag(conditions[c])), photo.name, keyers[k]->id(), *scores);
                    }
                }
            });
        }
    }
    pool->waitForDone();
}

Plan emptyPlan(size_t conditions, size_t keyers)
{
    Plan p;
    p.settings.assign(conditions, std::vector<std::vector<int>>(keyers));
    p.tallies.assign(conditions, std::vector<std::vector<Tally>>(keyers));
    return p;
}

void sizeTallies(Plan& p)
{
    for (size_t c = 0; c < p.settings.size(); ++c)
        for (size_t k = 0; k < p.settings[c].size(); ++k)
            p.tallies[c][k].assign(p.settings[c][k].size(), Tally{});
}

// The setting with the smallest mean composite error over the tuning photos:
// the composite is what the user sees, and it weighs alpha and colour alike.
int bestSetting(const std::vector<int>& settings, const std::vector<Tally>& tallies)
{
    int best = -1;
    double bestError = 0;
    for (size_t s = 0; s < settings.size(); ++s) {
        const Tally& t = tallies[s];
        if (t.photos == 0 || t.failures > 0)
            continue;
        const double e = t.composite / t.photos;
        if (best < 0 || e < bestError) {
            best = settings[s];
            bestError = e;
        }
    }
    return best;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Scores keyers against true mattes, per backdrop condition."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("tuning"), QStringLiteral("score on the tuning set only (no held-out photo is made)")});
    parser.addOption({QStringLiteral("only"), QStringLiteral("only these keyers (hard,colorkey,chromakey,classic,soft)"),
                      QStringLiteral("LIST")});
    parser.addOption({QStringLiteral("per-photo"), QStringLiteral("print each photo's scores")});
    parser.addOption({QStringLiteral("keep"), QStringLiteral("keep the photos and the keyers' outputs in DIR"),
                      QStringLiteral("DIR")});
    parser.addOption({QStringLiteral("matting"), QStringLiteral("the folder of real photos with true mattes"),
                      QStringLiteral("DIR"), QStringLiteral(PLENDRA_MATTING_DIR)});
    parser.addOption({QStringLiteral("jobs"), QStringLiteral("photos keyed at once (default: the cores)"), QStringLiteral("N")});
    parser.addPositionalArgument(QStringLiteral("PLENDRA_BATCH"), QStringLiteral("the plendra-batch to measure"));
    parser.process(app);

    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1) {
        std::fprintf(stderr, "name at most one plendra-batch\n");
        return 2;
    }
    const QString tool = positional.isEmpty() ? QStringLiteral(PLENDRA_BATCH_TOOL) : positional.first();
    if (!QFileInfo(tool).isExecutable()) {
        std::fprintf(stderr, "%s: not an executable plendra-batch\n", qPrintable(tool));
        return 2;
    }
    if (parser.isSet(QStringLiteral("jobs"))) {
        bool ok = false;
        const int jobs = parser.value(QStringLiteral("jobs")).toInt(&ok);
        if (!ok || jobs < 1 || jobs > 256) {
            std::fprintf(stderr, "the number of jobs must be from 1 to 256\n");
            return 2;
        }
        QThreadPool::globalInstance()->setMaxThreadCount(jobs);
    }
    const bool tuningOnly = parser.isSet(QStringLiteral("tuning"));
    const bool perPhoto = parser.isSet(QStringLiteral("per-photo"));

    // The rows, in the tables' order.
    std::vector<std::unique_ptr<Keyer>> all;
    const QString ffmpeg = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    all.push_back(toolKeyer(tool, false));
    all.push_back(ffmpegKeyer(ffmpeg, FfmpegFilter::Colorkey));
    all.push_back(ffmpegKeyer(ffmpeg, FfmpegFilter::ChromakeyDespill));
    all.push_back(classicKeyer());
    all.push_back(toolKeyer(tool, true));
    QStringList wanted;
    for (const auto& k : all)
        wanted << k->id();
    if (parser.isSet(QStringLiteral("only"))) {
        wanted = parser.value(QStringLiteral("only")).split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (const QString& w : wanted) {
            if (std::none_of(all.begin(), all.end(), [&](const auto& k) { return k->id() == w; })) {
                std::fprintf(stderr, "no keyer named %s (hard, colorkey, chromakey, classic, soft)\n", qPrintable(w));
                return 2;
            }
        }
    }
    const bool softAvailable = toolHasSoftKeyer(tool);
    std::vector<const Keyer*> keyers;
    std::vector<bool> available;
    for (const auto& k : all) {
        if (wanted.contains(k->id())) {
            keyers.push_back(k.get());
            const bool ffmpegRow = k->id() == QStringLiteral("colorkey") || k->id() == QStringLiteral("chromakey");
            available.push_back(k->id() == QStringLiteral("soft") ? softAvailable : !ffmpegRow || !ffmpeg.isEmpty());
        }
    }

    QTemporaryDir temporary;
    QString workRoot = parser.value(QStringLiteral("keep"));
    if (workRoot.isEmpty()) {
        if (!temporary.isValid()) {
            std::fprintf(stderr, "cannot make a temporary folder\n");
            return 1;
        }
        workRoot = temporary.path();
    } else if (!QDir().mkpath(workRoot)) {
        std::fprintf(stderr, "%s: cannot make the folder\n", qPrintable(workRoot));
        return 1;
    }
    const std::vector<Condition> conditions = allConditions();
    const QString matting = parser.value(QStringLiteral("matting"));
    QElapsedTimer clock;
    clock.start();

    // Tuning: every knob of every anchor over the tuning set, per condition.
    std::map<std::pair<size_t, size_t>, int> tuned; // (condition, keyer) -> setting
    std::vector<BenchPhoto> tuningPhotos;
    bool anyKnob = false;
    for (size_t k = 0; k < keyers.size(); ++k)
        anyKnob = anyKnob || (available[k] && keyers[k]->settingCount() > 1);
    if (tuningOnly || anyKnob) {
        tuningPhotos = benchPhotos(PhotoSet::Tuning, matting);
        std::printf("tuning set: %zu made photos, made in %.1f s\n", tuningPhotos.size(), clock.elapsed() / 1000.0);
    }
    if (anyKnob) {
        QElapsedTimer tuneClock;
        tuneClock.start();
        Plan plan = emptyPlan(conditions.size(), keyers.size());
        for (size_t c = 0; c < conditions.size(); ++c)
            for (size_t k = 0; k < keyers.size(); ++k)
                if (available[k] && keyers[k]->settingCount() > 1)
                    for (int s = 0; s < keyers[k]->settingCount(); ++s)
                        plan.settings[c][k].push_back(s);
        sizeTallies(plan);
        runPlan(plan, tuningPhotos, conditions, keyers, workRoot + QStringLiteral("/tuning-grid"), false);
        std::printf("\nTuned on the tuning set (least mean composite MSE), in %.1f s:\n", tuneClock.elapsed() / 1000.0);
        for (size_t c = 0; c < conditions.size(); ++c) {
            for (size_t k = 0; k < keyers.size(); ++k) {
                if (!available[k] || keyers[k]->settingCount() <= 1)
                    continue;
                const int best = bestSetting(plan.settings[c][k], plan.tallies[c][k]);
                tuned[{c, k}] = best;
                std::printf("  %-42s %-10s %s\n", qPrintable(conditionName(conditions[c])), qPrintable(keyers[k]->id()),
                            best < 0 ? "(every setting failed)" : qPrintable(keyers[k]->settingLabel(best)));
            }
        }
    }

    const PhotoSet set = tuningOnly ? PhotoSet::Tuning : PhotoSet::HeldOut;
    std::vector<BenchPhoto> photos = tuningOnly ? tuningPhotos : benchPhotos(PhotoSet::HeldOut, matting);
    int made = 0, real = 0;
    for (const BenchPhoto& p : photos)
        (p.real ? real : made) += 1;
    QElapsedTimer scoreClock;
    scoreClock.start();
    Plan plan = emptyPlan(conditions.size(), keyers.size());
    for (size_t c = 0; c < conditions.size(); ++c) {
        for (size_t k = 0; k < keyers.size(); ++k) {
            if (!available[k])
                continue;
            if (keyers[k]->settingCount() <= 1)
                plan.settings[c][k] = {0};
            else if (tuned[{c, k}] >= 0)
                plan.settings[c][k] = {tuned[{c, k}]};
        }
    }
    sizeTallies(plan);
    runPlan(plan, photos, conditions, keyers, workRoot + (tuningOnly ? QStringLiteral("/tuning") : QStringLiteral("/held-out")),
            perPhoto);

    const char* setName = set == PhotoSet::Tuning ? "tuning set" : "held-out set";
    int failures = 0;
    for (size_t c = 0; c < conditions.size(); ++c) {
        std::printf("\n%s: %s, %d photos (%d made, %d real)\n", qPrintable(conditionName(conditions[c])), setName,
                    made + real, made, real);
        std::printf("  %-58s %10s %10s %10s  %s\n", "keyer", "SAD", "edge MSE", "comp MSE", "photos");
        for (size_t k = 0; k < keyers.size(); ++k) {
            QString title = keyers[k]->title();
            if (!available[k]) {
                std::printf("  %-58s %s\n", qPrintable(title),
                            keyers[k]->id() == QStringLiteral("soft") ? "not available (the tool has no --soft)"
                                                                       : "not available (no ffmpeg on PATH)");
                continue;
            }
            if (plan.tallies[c][k].empty()) {
                std::printf("  %-58s %s\n", qPrintable(title), "not tuned (every setting failed)");
                continue;
            }
            if (keyers[k]->settingCount() > 1)
                title += QStringLiteral(" [") + keyers[k]->settingLabel(plan.settings[c][k].front()) + QLatin1Char(']');
            const Tally& t = plan.tallies[c][k].front();
            const int n = std::max(1, t.photos);
            std::printf("  %-58s %10.3f %10.3f %10.3f  %d", qPrintable(title), t.sad / n, t.edge / n, t.composite / n,
                        t.photos);
            if (t.failures) {
                std::printf("  (%d failed: %s)", t.failures, qPrintable(t.firstError));
                failures += t.failures;
            }
            std::printf("\n");
        }
    }
    std::printf("\nSAD: sum of |alpha - true alpha| / 1000, mean over photos; edge MSE: alpha MSE x1e3 where the true\n"
                "alpha is strictly between 0 and 1, widened by %d px; comp MSE: composite on a new background against\n"
                "the true composite, x1e3 (channels 0..1).\n",
                kEdgeBandRadius);
    std::printf("scored in %.1f s; whole run %.1f s on %d threads\n", scoreClock.elapsed() / 1000.0,
                clock.elapsed() / 1000.0, QThreadPool::globalInstance()->maxThreadCount());
    return failures ? 1 : 0;
}
