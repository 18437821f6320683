// SPDX-License-Identifier: MIT
#pragma once

// Generated booth photos with their truth: a subject before a green or blue
// backdrop (in the middle, touching a side, in a corner, or filling 80 % of
// the frame; bright or dark backdrop; falloff and grain), the true backdrop
// mask and the point a careful operator would click; and photos with no
// backdrop at all. The same seed gives the same photo.

#include <QImage>
#include <QPoint>
#include <QRgb>
#include <QString>

namespace boothscenes {

enum class Placement { Middle, Side, Corner, Fills80 };

struct SceneRecipe
{
    Placement placement = Placement::Middle;
    bool blue = false;
    bool dark = false;
    double falloff = 0.2;  // the corners' light, down by this share
    double noise = 4.0;    // grain, standard deviation in levels
    int width = 480;
    int height = 320;
    quint32 seed = 1;
};

struct Scene
{
    QImage photo;  // 32-bit RGB
    QImage truth;  // 8-bit grey: 255 where the pixel is wholly backdrop
    QPoint click;  // a backdrop pixel away from the subject, of middling light
};

Scene makeScene(const SceneRecipe& recipe);

// A scene whose every choice (placement, colour, light, falloff, grain, size
// and shape) is drawn from `seed`: for sweeps over many photos.
SceneRecipe randomRecipe(quint32 seed);

enum class NoBackdrop {
    Indoor,     // a room, a person in a green shirt that reaches the bottom edge
    GreyWall,   // a person before a grey wall
    Foliage,    // leaves of every green filling the frame
};

QImage noBackdropPhoto(NoBackdrop kind, int width, int height, quint32 seed);

QString placementName(Placement p);

// The share of the photo's pixels that keys `a` and `b` take or leave alike.
double alikeShare(const QImage& photo, QRgb a, QRgb b);
// The share of the photo's pixels whose keying with `key` disagrees with the
// truth (wholly backdrop pixels taken, subject pixels left; pixels of the
// subject's soft edge count either way).
double truthMismatch(const QImage& photo, QRgb key, const QImage& truth);

} // namespace boothscenes
