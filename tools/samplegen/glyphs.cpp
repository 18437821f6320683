// SPDX-License-Identifier: MIT
#include "glyphs.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace samplegen {

namespace {

QImage transparentImage(int w, int h)
{
    QImage img(w, h, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    return img;
}

// The product's mark in `r`: a rounded tile split diagonally into the two
// screen colours, with a white 'P' whose bowl is cut out of the tile.
void drawMark(QPainter& p, const QRectF& r)
{
    const double k = r.width() / 256.0;
    QPainterPath tile;
    tile.addRoundedRect(r, 52 * k, 52 * k);

    p.save();
    p.setPen(Qt::NoPen);
    p.setClipPath(tile);
    QLinearGradient green(r.topLeft(), r.bottomLeft());
    green.setColorAt(0, QColor(92, 206, 104));
    green.setColorAt(1, QColor(30, 150, 64));
    p.fillRect(r, green);
    QPainterPath blueHalf;
    blueHalf.moveTo(r.topRight() + QPointF(0, r.height() * 0.18));
    blueHalf.lineTo(r.bottomRight());
    blueHalf.lineTo(r.bottomLeft() + QPointF(r.width() * 0.18, 0));
    blueHalf.closeSubpath();
    QLinearGradient blue(r.topRight(), r.bottomRight());
    blue.setColorAt(0, QColor(72, 132, 236));
    blue.setColorAt(1, QColor(30, 70, 178));
    p.fillPath(blueHalf, blue);
    // a soft sheen across the top
    QLinearGradient sheen(r.topLeft(), r.topLeft() + QPointF(0, r.height() * 0.5));
    sheen.setColorAt(0, QColor(255, 255, 255, 70));
    sheen.setColorAt(1, QColor(255, 255, 255, 0));
    p.fillRect(r, sheen);
    p.restore();

    // the letter: a stem and a bowl
    QPainterPath stem;
    stem.addRoundedRect(QRectF(r.left() + 70 * k, r.top() + 52 * k, 40 * k, 152 * k), 12 * k, 12 * k);
    QPainterPath bowlOuter;
    bowlOuter.moveTo(r.left() + 90 * k, r.top() + 52 * k);
    bowlOuter.lineTo(r.left() + 140 * k, r.top() + 52 * k);
    bowlOuter.arcTo(QRectF(r.left() + 96 * k, r.top() + 52 * k, 96 * k, 96 * k), 90, -180);
    bowlOuter.lineTo(r.left() + 90 * k, r.top() + 148 * k);
    bowlOuter.closeSubpath();
    QPainterPath bowlInner;
    bowlInner.addRoundedRect(QRectF(r.left() + 108 * k, r.top() + 86 * k, 42 * k, 28 * k), 14 * k, 14 * k);
    const QPainterPath letter = stem.united(bowlOuter).subtracted(bowlInner);

    p.save();
    p.setPen(Qt::NoPen);
    p.translate(3 * k, 4 * k);
    p.fillPath(letter, QColor(0, 30, 20, 70));  // drop shadow
    p.restore();
    p.fillPath(letter, QColor(250, 252, 250));
}

QPen glyphPen(const QColor& c, double width)
{
    QPen pen(c, width);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

} // namespace

QImage makeIcon()
{
    QImage img = transparentImage(256, 256);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    drawMark(p, QRectF(8, 8, 240, 240));
    return img;
}

QImage makeLogo()
{
    QImage img = transparentImage(81, 51);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    drawMark(p, QRectF(1, 6, 30, 30));
    QFont font(QStringLiteral("Liberation Sans"));
    font.setPixelSize(12);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    p.setFont(font);
    p.setPen(QColor(60, 66, 72));
    p.drawText(QRectF(33, 6, 48, 30), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Plendra"));
    return img;
}

QImage makePlusGlyph()
{
    QImage img = transparentImage(32, 32);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(glyphPen(QColor(46, 150, 70), 6));
    p.drawLine(QPointF(16, 6), QPointF(16, 26));
    p.drawLine(QPointF(6, 16), QPointF(26, 16));
    return img;
}

QImage makeMinusGlyph()
{
    QImage img = transparentImage(32, 32);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(glyphPen(QColor(196, 62, 56), 6));
    p.drawLine(QPointF(6, 16), QPointF(26, 16));
    return img;
}

QImage makeApplyGlyph()
{
    QImage img = transparentImage(32, 32);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath tick;
    tick.moveTo(6, 17);
    tick.lineTo(13, 24);
    tick.lineTo(26, 8);
    p.setPen(glyphPen(QColor(44, 104, 200), 5.5));
    p.drawPath(tick);
    return img;
}

} // namespace samplegen
