// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/icon/Icon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace sorakaze::desktop {
namespace {

/// All parts are drawn on a square of this side.
constexpr double kSide = 256;

const QColor kNight(0x16, 0x3a, 0x66);
const QColor kCream(0xff, 0xf6, 0xe3);
const QColor kCoral(0xf2, 0x6b, 0x4e);
const QColor kCoralShade(0xcf, 0x44, 0x35);
const QColor kSun(0xff, 0xd3, 0x5c);

/// What changes between a picture of 16 pixels and one of 256.
struct Detail {
    bool fine;          ///< room for clouds, the dial and the knobs
    QRectF body;        ///< the radio
    double bodyCorner;  ///< its corners' radius
    QPointF tip;        ///< of the antenna
    double ball;        ///< the radius of the ball on it
    double stroke;      ///< of the antenna and the waves
    double firstWave, waveGap;
    int waves;
};

constexpr int kLargestPlain = 24;

Detail DetailFor(int size) {
    // The plain picture's edges fall on whole pixels of the smallest size.
    if (size <= kLargestPlain) return {false, {32, 128, 192, 96}, 26, {128, 78}, 21, 21, 56, 0, 1};
    if (size <= 32) return {true, {40, 126, 176, 98}, 24, {128, 78}, 15, 14, 37, 32, 2};
    return {true, {44, 126, 168, 96}, 22, {128, 80}, 11, 9, 31, 25, 2};
}

void Sky(QPainter& paint) {
    QLinearGradient sky(0, 8, 0, 248);
    sky.setColorAt(0, QColor(0x1f, 0x6f, 0xc9));
    sky.setColorAt(0.6, QColor(0x5d, 0xb6, 0xee));
    sky.setColorAt(1, QColor(0xbf, 0xe7, 0xfb));
    paint.setPen(Qt::NoPen);
    paint.setBrush(sky);
    paint.drawRoundedRect(QRectF(8, 8, 240, 240), 54, 54);
}

void Cloud(QPainter& paint, QPointF middle, double scale) {
    QPainterPath cloud;
    cloud.setFillRule(Qt::WindingFill);
    cloud.addRoundedRect(QRectF(-38, -4, 76, 22), 11, 11);
    cloud.addEllipse(QPointF(-12, -2), 17, 17);
    cloud.addEllipse(QPointF(13, 0), 13, 13);
    paint.save();
    paint.translate(middle);
    paint.scale(scale, scale);
    paint.setPen(Qt::NoPen);
    paint.setBrush(QColor(255, 255, 255, 205));
    paint.drawPath(cloud.simplified());
    paint.restore();
}

void Antenna(QPainter& paint, const Detail& detail) {
    paint.setPen(QPen(kNight, detail.stroke, Qt::SolidLine, Qt::RoundCap));
    paint.drawLine(detail.tip, QPointF(detail.tip.x(), detail.body.top() + 6));
    paint.setBrush(Qt::NoBrush);
    paint.setPen(QPen(Qt::white, detail.stroke, Qt::SolidLine, Qt::RoundCap));
    for (int wave = 0; wave < detail.waves; ++wave) {
        const double radius = detail.firstWave + wave * detail.waveGap;
        const QRectF circle(detail.tip.x() - radius, detail.tip.y() - radius, 2 * radius, 2 * radius);
        // The painter counts sixteenths of a degree from three o'clock.
        paint.drawArc(circle, -42 * 16, 84 * 16);
        paint.drawArc(circle, 138 * 16, 84 * 16);
    }
    paint.setPen(Qt::NoPen);
    paint.setBrush(kSun);
    paint.drawEllipse(detail.tip, detail.ball, detail.ball);
}

void Speaker(QPainter& paint, QPointF middle, double radius, bool fine) {
    paint.setBrush(kCream);
    paint.drawEllipse(middle, radius, radius);
    paint.setBrush(kNight);
    paint.drawEllipse(middle, radius * 0.68, radius * 0.68);
    if (!fine) return;
    paint.setBrush(QColor(0x2f, 0x66, 0xa3));
    paint.drawEllipse(middle, radius * 0.46, radius * 0.46);
    paint.setBrush(kCream);
    paint.drawEllipse(middle, radius * 0.17, radius * 0.17);
}

void DialAndKnobs(QPainter& paint, const QRectF& body) {
    const QRectF dial(body.left() + 86, body.top() + 18, 66, 25);
    paint.setBrush(kCream);
    paint.drawRoundedRect(dial, 7, 7);
    paint.setPen(QPen(kNight, 3.5, Qt::SolidLine, Qt::FlatCap));
    for (int mark = 0; mark < 5; ++mark) {
        const double x = dial.left() + 11 + mark * 11;
        paint.drawLine(QPointF(x, dial.bottom() - 8), QPointF(x, dial.bottom() - 3));
    }
    paint.setPen(QPen(kCoralShade, 4.5, Qt::SolidLine, Qt::FlatCap));
    paint.drawLine(QPointF(dial.left() + 38.5, dial.top() + 3),
                   QPointF(dial.left() + 38.5, dial.bottom() - 3));
    paint.setPen(Qt::NoPen);
    for (const double x : {dial.left() + 15, dial.right() - 15}) {
        const QPointF middle(x, body.bottom() - 27);
        paint.setBrush(kCream);
        paint.drawEllipse(middle, 12, 12);
        paint.setBrush(kSun);
        paint.drawEllipse(middle, 7, 7);
    }
}

void Radio(QPainter& paint, const Detail& detail) {
    const QRectF& body = detail.body;
    paint.setPen(Qt::NoPen);
    if (detail.fine) {
        paint.setBrush(kNight);
        paint.drawRoundedRect(QRectF(body.left() + 22, body.bottom() - 8, 24, 18), 6, 6);
        paint.drawRoundedRect(QRectF(body.right() - 46, body.bottom() - 8, 24, 18), 6, 6);
    }
    QLinearGradient shell(0, body.top(), 0, body.bottom());
    shell.setColorAt(0, kCoral.lighter(108));
    shell.setColorAt(1, kCoralShade);
    paint.setBrush(shell);
    paint.drawRoundedRect(body, detail.bodyCorner, detail.bodyCorner);
    if (detail.fine) {
        Speaker(paint, QPointF(body.left() + 46, body.center().y()), 33, true);
        DialAndKnobs(paint, body);
        return;
    }
    Speaker(paint, QPointF(body.left() + 48, body.center().y()), 34, false);
    paint.setBrush(kCream);
    paint.drawRoundedRect(QRectF(body.right() - 80, body.center().y() - 16, 48, 32), 8, 8);
}

}  // namespace

QImage DrawIcon(int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter paint(&image);
    paint.setRenderHint(QPainter::Antialiasing);
    paint.scale(size / kSide, size / kSide);
    const Detail detail = DetailFor(size);
    Sky(paint);
    if (detail.fine) {
        Cloud(paint, {42, 116}, 0.72);
        Cloud(paint, {213, 44}, 0.56);
    }
    Antenna(paint, detail);
    Radio(paint, detail);
    paint.end();
    return image;
}

}  // namespace sorakaze::desktop
