#include "app/Controller.h"
#include "view/RotationGeometry.h"
#include "view/wmfImageView.h"

#include <poppler-qt6.h>

#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

// The rectangle the document writer asks the view for.
QRectF shownRect(const QSizeF& picture, int degrees, const QRectF& view) {
    return shownTurnedBox(QRectF(QPointF(), picture), degrees, view);
}

} // namespace

class tst_ViewDocuments : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void pdfPageSize_data();
    void pdfPageSize();
    void pdfShowsThePicture();
    void epsBoundingBox();
    void greyTonesStayOnScreen();
    void emptyRectGivesNoBytes();

private:
    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<wmfImageView> view;
};

void tst_ViewDocuments::init() {
    home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home->path().toUtf8());
    controller = std::make_unique<Controller>();
    view = std::make_unique<wmfImageView>();
    view->resize(400, 300);
    view->mainController = controller.get();
    QImage picture(640, 480, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    controller->itsCGImage = picture;
    controller->itsImgBounds = Rect{0, 0, 480, 640};
}

void tst_ViewDocuments::cleanup() {
    view.reset();
    controller.reset();
    home.reset();
}

void tst_ViewDocuments::pdfPageSize_data() {
    QTest::addColumn<int>("degrees");
    QTest::addColumn<QSizeF>("page");
    QTest::newRow("0") << 0 << QSizeF(400, 300);
    QTest::newRow("90") << 90 << QSizeF(225, 300);
    QTest::newRow("720") << 720 << QSizeF(400, 300);
}

void tst_ViewDocuments::pdfPageSize() {
    QFETCH(int, degrees);
    QFETCH(QSizeF, page);
    controller->m_rotate = degrees;
    const QRectF rect = shownRect(QSizeF(640, 480), degrees, QRectF(view->rect()));
    const QByteArray pdf = view->dataWithPDFInsideRect(rect);
    QVERIFY(pdf.startsWith("%PDF"));
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(pdf);
    QVERIFY(document);
    QCOMPARE(document->numPages(), 1);
    const QSizeF size = document->page(0)->pageSizeF();
    QVERIFY2(qAbs(size.width() - page.width()) < 0.6 && qAbs(size.height() - page.height()) < 0.6,
             qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
}

void tst_ViewDocuments::pdfShowsThePicture() {
    controller->m_rotate = 90;
    const QRectF rect = shownRect(QSizeF(640, 480), 90, QRectF(view->rect()));
    const QByteArray pdf = view->dataWithPDFInsideRect(rect);
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(pdf);
    QVERIFY(document);
    const QImage page = document->page(0)->renderToImage(72, 72);
    QVERIFY(!page.isNull());
    // The turned picture fills the page: red in the middle and near every edge.
    for (const QPoint& p :
         {QPoint(112, 150), QPoint(3, 150), QPoint(221, 150), QPoint(112, 3), QPoint(112, 296)}) {
        const QRgb c = page.pixel(p);
        QVERIFY2(qRed(c) > 200 && qGreen(c) < 60 && qBlue(c) < 60,
                 qPrintable(QStringLiteral("%1,%2").arg(p.x()).arg(p.y())));
    }
}

void tst_ViewDocuments::epsBoundingBox() {
    controller->m_rotate = 90;
    const QRectF rect = shownRect(QSizeF(640, 480), 90, QRectF(view->rect()));
    const QByteArray eps = view->dataWithEPSInsideRect(rect);
    QVERIFY(eps.startsWith("%!PS-Adobe"));
    QVERIFY(eps.contains("EPSF"));
    QVERIFY2(eps.contains("%%BoundingBox: 0 0 225 300"), eps.left(400).constData());
}

void tst_ViewDocuments::greyTonesStayOnScreen() {
    controller->m_Monochrome = true;
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    const QImage screen = view->grab().toImage();
    const QRgb onScreen = screen.pixel(screen.width() / 2, screen.height() / 2);
    QCOMPARE(qRed(onScreen), qGreen(onScreen)); // grey on screen...

    const QRectF rect = shownRect(QSizeF(640, 480), 0, QRectF(view->rect()));
    const std::unique_ptr<Poppler::Document> document =
        Poppler::Document::loadFromData(view->dataWithPDFInsideRect(rect));
    QVERIFY(document);
    const QImage page = document->page(0)->renderToImage(72, 72);
    const QRgb inDocument = page.pixel(page.width() / 2, page.height() / 2);
    // ...and the colours of the picture in the document made of the view's drawing.
    QVERIFY2(qRed(inDocument) > 200 && qGreen(inDocument) < 60,
             qPrintable(QString::number(inDocument, 16)));
}

void tst_ViewDocuments::emptyRectGivesNoBytes() {
    QVERIFY(view->dataWithPDFInsideRect(QRectF()).isEmpty());
    QVERIFY(view->dataWithPDFInsideRect(QRectF(0, 0, -5, 10)).isEmpty());
    QVERIFY(view->dataWithEPSInsideRect(QRectF(0, 0, 10, 0)).isEmpty());
}

QTEST_MAIN(tst_ViewDocuments)
#include "tst_ViewDocuments.moc"
