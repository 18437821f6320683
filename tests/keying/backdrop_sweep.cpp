// SPDX-License-Identifier: MIT
// The backdrop finder over random booth scenes that no test and no threshold
// was tuned on: how often it finds the backdrop, how alike its key is to a
// well-placed click, and how often it refuses a photo with no backdrop.
// Usage: plendra_backdrop_sweep [FIRST_SEED [COUNT]]
#include "keying/backdropcolour.h"
#include "keying/pipeline.h"
#include "tests/support/boothscenes.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    const quint32 first = argc > 1 ? quint32(std::strtoul(argv[1], nullptr, 10)) : 1000u;
    const int count = argc > 2 ? std::atoi(argv[2]) : 400;
    int misses = 0, belowAlike = 0, worseThanClick = 0;
    double worstAlike = 1.0, sumAlike = 0;
    QElapsedTimer clock;
    qint64 estimateNs = 0;
    for (int i = 0; i < count; ++i) {
        const boothscenes::SceneRecipe recipe = boothscenes::randomRecipe(first + quint32(i));
        const boothscenes::Scene scene = boothscenes::makeScene(recipe);
        clock.start();
        const keying::BackdropEstimate found = keying::estimateBackdrop(scene.photo);
        estimateNs += clock.nsecsElapsed();
        if (!found.found) {
            ++misses;
            std::printf("miss: seed %u (%s, %s, %s)\n", first + quint32(i), qPrintable(boothscenes::placementName(recipe.placement)),
                        recipe.blue ? "blue" : "green", recipe.dark ? "dark" : "bright");
            continue;
        }
        const QRgb click = keying::keyColourAt(scene.photo, scene.click);
        const double alike = boothscenes::alikeShare(scene.photo, found.colour, click);
        sumAlike += alike;
        worstAlike = std::min(worstAlike, alike);
        if (alike < 0.99) {
            ++belowAlike;
            std::printf("below 99 %%: seed %u (%s, %s, %s, falloff %.2f, grain %.1f, %dx%d) alike %.4f, auto #%06X, click #%06X\n",
                        first + quint32(i), qPrintable(boothscenes::placementName(recipe.placement)), recipe.blue ? "blue" : "green",
                        recipe.dark ? "dark" : "bright", recipe.falloff, recipe.noise, recipe.width, recipe.height, alike,
                        unsigned(found.colour & 0xFFFFFF), unsigned(click & 0xFFFFFF));
        }
        if (boothscenes::truthMismatch(scene.photo, found.colour, scene.truth)
            > boothscenes::truthMismatch(scene.photo, click, scene.truth) + 0.002)
            ++worseThanClick;
    }
    int refused = 0;
    const int kinds = 3, perKind = 20;
    for (int k = 0; k < kinds; ++k) {
        for (int s = 0; s < perKind; ++s) {
            const quint32 seed = first + 7919u * quint32(s + 1);
            const int w = 300 + int(seed % 400), h = 240 + int((seed / 7) % 300);
            const QImage photo = boothscenes::noBackdropPhoto(boothscenes::NoBackdrop(k), w, h, seed);
            refused += keying::estimateBackdrop(photo).found ? 0 : 1;
        }
    }
    const int found = count - misses;
    std::printf("scenes %d (seeds %u..%u): found %d, missed %d\n", count, first, first + quint32(count) - 1, found, misses);
    std::printf("alike share with a well-placed click: worst %.4f, mean %.4f, below 0.99: %d\n", worstAlike,
                found > 0 ? sumAlike / found : 0.0, belowAlike);
    std::printf("further from the truth than the click (by more than 0.2 %%): %d\n", worseThanClick);
    std::printf("photos without a backdrop refused: %d of %d\n", refused, kinds * perKind);
    std::printf("mean estimate time: %.2f ms\n", count > 0 ? estimateNs / 1e6 / count : 0.0);
    return (misses == 0 && belowAlike == 0 && refused == kinds * perKind) ? 0 : 1;
}
