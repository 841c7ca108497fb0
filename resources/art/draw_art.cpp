// Draws Ormidon's pictures: the about panel's "splash" (504 x 320, transparent outside its
// rounded card and badge, with room below for the shadow the panel adds) and the "finger"
// cursor (32 x 32, the fingertip at the top left, where the cursor's hot spot is).
//
//   cmake --build build --target ormidon_draw_art && build/resources/art/ormidon_draw_art resources
//
// The panel puts the web address into the active strip (x 141 to 362, 115 to 135 from the top)
// and the version 64 pixels above the bottom edge, so the picture leaves both places plain.

#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>

namespace {

QPainterPath landscape(const QRectF& r) {
    QPainterPath hills;
    hills.moveTo(r.left(), r.bottom());
    hills.lineTo(r.left(), r.top() + r.height() * 0.70);
    hills.lineTo(r.left() + r.width() * 0.32, r.top() + r.height() * 0.38);
    hills.lineTo(r.left() + r.width() * 0.50, r.top() + r.height() * 0.58);
    hills.lineTo(r.left() + r.width() * 0.70, r.top() + r.height() * 0.30);
    hills.lineTo(r.right(), r.top() + r.height() * 0.66);
    hills.lineTo(r.right(), r.bottom());
    hills.closeSubpath();
    return hills;
}

void drawPhoto(QPainter& p, const QRectF& r, const QColor& sky, const QColor& ground, qreal angle) {
    p.save();
    p.translate(r.center());
    p.rotate(angle);
    const QRectF frame(-r.width() / 2, -r.height() / 2, r.width(), r.height());
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 235));
    p.drawRoundedRect(frame, 3, 3);
    const QRectF inner = frame.adjusted(4, 4, -4, -4);
    QLinearGradient skyFill(inner.topLeft(), inner.bottomLeft());
    skyFill.setColorAt(0, sky.lighter(130));
    skyFill.setColorAt(1, sky);
    p.setBrush(skyFill);
    p.drawRect(inner);
    p.setBrush(QColor(255, 214, 102));
    p.drawEllipse(QPointF(inner.left() + inner.width() * 0.78, inner.top() + inner.height() * 0.26),
                  inner.height() * 0.12, inner.height() * 0.12);
    p.setBrush(ground);
    p.drawPath(landscape(inner));
    p.restore();
}

QImage drawSplash() {
    QImage image(504, 320, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);

    // The card.
    const QRectF card(8, 12, 488, 288);
    QLinearGradient fill(card.topLeft(), card.bottomRight());
    fill.setColorAt(0.0, QColor(0x16, 0x24, 0x44));
    fill.setColorAt(0.6, QColor(0x10, 0x4a, 0x5e));
    fill.setColorAt(1.0, QColor(0x0b, 0x5d, 0x63));
    p.setPen(QPen(QColor(255, 255, 255, 60), 1.5));
    p.setBrush(fill);
    p.drawRoundedRect(card, 24, 24);

    // A soft glow behind the title.
    QRadialGradient glow(QPointF(300, 70), 190);
    glow.setColorAt(0, QColor(120, 220, 240, 55));
    glow.setColorAt(1, QColor(120, 220, 240, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(glow);
    p.drawRoundedRect(card, 24, 24);

    // The badge, standing out over the card's top left corner: a picture turned a little.
    const QPointF badge(76, 56);
    const qreal radius = 54;
    p.setBrush(QColor(0xf4, 0xf1, 0xe8));
    p.drawEllipse(badge, radius, radius);
    QPainterPath lens;
    lens.addEllipse(badge, radius - 6, radius - 6);
    p.save();
    p.setClipPath(lens);
    p.translate(badge);
    p.rotate(-12);
    const QRectF scene(-radius, -radius, 2 * radius, 2 * radius);
    QLinearGradient sky(scene.topLeft(), scene.bottomLeft());
    sky.setColorAt(0, QColor(0x7e, 0xc8, 0xf0));
    sky.setColorAt(1, QColor(0xc9, 0xec, 0xf7));
    p.setBrush(sky);
    p.drawRect(scene);
    p.setBrush(QColor(0xff, 0xc8, 0x4a));
    p.drawEllipse(QPointF(18, -20), 11, 11);
    p.setBrush(QColor(0x2f, 0x7d, 0x5b));
    p.drawPath(landscape(scene.adjusted(0, 20, 0, 0)));
    p.setBrush(QColor(0x23, 0x5f, 0x47));
    p.drawPath(landscape(scene.adjusted(-30, 45, 10, 0)));
    p.restore();
    p.setPen(QPen(QColor(0x16, 0x24, 0x44), 2));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(badge, radius - 6, radius - 6);

    // The name and what it does.
    QFont title(QStringLiteral("DejaVu Sans"));
    title.setPixelSize(46);
    title.setBold(true);
    p.setFont(title);
    p.setPen(Qt::white);
    p.drawText(QPointF(144, 76), QStringLiteral("Ormidon"));
    QFont line(QStringLiteral("DejaVu Sans"));
    line.setPixelSize(14);
    p.setFont(line);
    p.setPen(QColor(0xa8, 0xdc, 0xe8));
    p.drawText(QPointF(146, 100), QStringLiteral("view, turn and convert your pictures"));

    // The active strip, where the web address goes.
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 26));
    p.drawRoundedRect(QRectF(141, 115, 221, 20), 10, 10);

    // Three pictures, turned, on their way from one format to another.
    drawPhoto(p, QRectF(72, 160, 92, 66), QColor(0x5a, 0x9b, 0xd6), QColor(0x3c, 0x8d, 0x5a), -14);
    drawPhoto(p, QRectF(206, 152, 92, 66), QColor(0xe0, 0x8a, 0x5a), QColor(0x6b, 0x4f, 0x8f), 0);
    drawPhoto(p, QRectF(340, 160, 92, 66), QColor(0x4b, 0xb3, 0xb0), QColor(0x2c, 0x6e, 0x8a), 14);
    QFont small(QStringLiteral("DejaVu Sans"));
    small.setPixelSize(11);
    small.setBold(true);
    p.setFont(small);
    p.setPen(QColor(0xd8, 0xe6, 0xf0));
    const char* formats[] = {"JPEG", "PNG", "TIFF"};
    const qreal centres[] = {118, 252, 386};
    for (int i = 0; i < 3; ++i)
        p.drawText(QRectF(centres[i] - 40, 234, 80, 16), Qt::AlignCenter,
                   QString::fromLatin1(formats[i]));
    p.setPen(QPen(QColor(0xa8, 0xdc, 0xe8), 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (qreal x : {170.0, 304.0}) {
        p.drawLine(QPointF(x, 192), QPointF(x + 26, 192));
        p.drawLine(QPointF(x + 20, 186), QPointF(x + 26, 192));
        p.drawLine(QPointF(x + 20, 198), QPointF(x + 26, 192));
    }

    // Signature line at the bottom edge.
    QFont foot(QStringLiteral("DejaVu Sans"));
    foot.setPixelSize(10);
    p.setFont(foot);
    p.setPen(QColor(0x86, 0xb4, 0xc4));
    p.drawText(QRectF(card.left(), 278, card.width(), 14), Qt::AlignCenter,
               QStringLiteral("Free software for Linux, by the Ormidon developers"));
    return image;
}

// A hand pointing up and to the left, the tip of its index finger at (1, 1).
QImage drawFinger() {
    QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.translate(1.2, 1.2);
    p.rotate(-42);
    QPainterPath hand;
    hand.setFillRule(Qt::WindingFill);
    hand.addRoundedRect(QRectF(-2.6, 0, 5.2, 16), 2.6, 2.6);     // index finger
    hand.addRoundedRect(QRectF(-3.2, 11, 14.5, 11), 3.5, 3.5);   // fist
    hand.addRoundedRect(QRectF(1.8, 10.4, 4.6, 6.5), 2.3, 2.3);  // middle knuckle
    hand.addRoundedRect(QRectF(6.0, 11.0, 4.6, 6.0), 2.3, 2.3);  // ring knuckle
    hand.addRoundedRect(QRectF(-7.2, 13.5, 6.0, 4.6), 2.3, 2.3); // thumb
    hand.addRoundedRect(QRectF(-1.5, 21, 11.5, 5), 1.2, 1.2);    // cuff
    const QPainterPath outline = hand.simplified();
    p.setPen(QPen(Qt::black, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::white);
    p.drawPath(outline);
    p.setPen(QPen(Qt::black, 0.9));
    p.drawLine(QPointF(2.0, 16.0), QPointF(2.0, 19.5)); // folds between the fingers
    p.drawLine(QPointF(6.2, 16.5), QPointF(6.2, 19.5));
    return image;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    const bool ok =
        drawSplash().save(folder + "/splash.png") && drawFinger().save(folder + "/finger.png");
    QTextStream(stderr) << (ok ? "wrote " : "could not write ") << folder
                        << "/splash.png and finger.png\n";
    return ok ? 0 : 1;
}
