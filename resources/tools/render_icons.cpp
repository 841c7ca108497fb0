// Draws the application's SVG icon into the PNG sizes of the hicolor icon theme:
//   ormidon_render_icons ICON.svg OUTDIR NAME SIZE...
// writes OUTDIR/<SIZE>x<SIZE>/apps/NAME.png for every SIZE, transparent around the drawing.
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen"); // a build machine may have no display
    QGuiApplication app(argc, argv);
    QTextStream err(stderr);
    const QStringList args = app.arguments();
    if (args.size() < 5) {
        err << "usage: ormidon_render_icons ICON.svg OUTDIR NAME SIZE...\n";
        return 2;
    }
    QSvgRenderer renderer(args[1]);
    if (!renderer.isValid()) {
        err << "cannot read the icon " << args[1] << "\n";
        return 1;
    }
    for (int i = 4; i < args.size(); ++i) {
        bool ok = false;
        const int size = args[i].toInt(&ok);
        if (!ok || size <= 0 || size > 4096) {
            err << "not an icon size: " << args[i] << "\n";
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        renderer.render(&painter, QRectF(0, 0, size, size));
        painter.end();
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(args[2]).arg(size);
        const QString file = folder + QLatin1Char('/') + args[3] + QStringLiteral(".png");
        if (!QDir().mkpath(folder) || !image.save(file, "PNG")) {
            err << "cannot write " << file << "\n";
            return 1;
        }
    }
    return 0;
}
