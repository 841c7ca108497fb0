// The Controller's renderer and writers: the off-screen picture of a raster export, the raster
// writer's entry point and the two PDF writers.

#include "app/Controller.h"

#include "app/GuiThread.h"
#include "app/TextNumbers.h"
#include "codec/ColourProfiles.h"
#include "codec/ImageDecoder.h"
#include "codec/RasterWriters.h"
#include "export/ConversionJob.h"
#include "export/DocumentExport.h"
#include "export/ExportRenderer.h"
#include "export/FormatTable.h"

#include <QComboBox>
#include <QFileInfo>
#include <QMainWindow>
#include <QMessageBox>

#include <exception>
#include <new>

namespace {

constexpr int16_t kPathNotResolved = -43; // no file at the output path
constexpr int16_t kBadFormat = -50;       // a table index below 0

// What the export reads from the window at the moment of the call.
struct ExportSettings {
    float dpi = 72.0f;
    int degrees = 0;
};

// The snapshot of the conversion running on this thread; outside one (a direct call), read on
// the GUI thread, which owns the combo box and the angle. A controller without a resolution
// list (a bare one, in the tests) exports at 72 dpi.
ExportSettings exportSettings(const Controller& controller) {
    if (const ConversionJob* job = currentConversionJob())
        return ExportSettings{job->dpi, job->degrees};
    return onGuiThread([&controller] {
        ExportSettings s;
        s.degrees = controller.getRotation();
        if (controller.itsDpiCombo)
            s.dpi = leadingFloatValue(controller.itsDpiCombo->currentText());
        return s;
    });
}

// The size check of the renderer, made before decoding so that a zero size costs nothing.
bool emptyExportSize(const QRectF& rect) {
    return !(float(rect.width()) >= 1.0f) || !(float(rect.height()) >= 1.0f);
}

// The source's pixels: those the current conversion read before its output path was settled,
// else a fresh decode in the form the export at `settings` uses it in.
DecodedImage sourcePicture(const QString& source, const ExportSettings& settings) {
    const ConversionJob* job = currentConversionJob();
    if (job && job->source == source)
        return job->decoded;
    return ImageDecoder::decode(source, ImageDecoder::Colours::Source,
                                writtenAsDecoded(settings.dpi, settings.degrees)
                                    ? ImageDecoder::Layout::Encoding
                                    : ImageDecoder::Layout::Drawing);
}

void showFailure(Controller& controller, const QString& title, const QString& message) {
    if (controller.unattended)
        return; // no one to show it to: the output's failure is reported when it is settled
    onGuiThread([&controller, &title, &message] {
        QMessageBox box(QMessageBox::Critical, title, message, QMessageBox::NoButton,
                        controller.itsMainWindow);
        box.addButton(Controller::tr("OK"), QMessageBox::AcceptRole);
        box.exec();
    });
}

} // namespace

QImage Controller::createCGImage(const QString& source, const QRectF& rect, const QRectF& r,
                                 int format) {
    const ExportSettings settings = exportSettings(*this);
    const float scale = settings.dpi / 72.0f;
    if (emptyExportSize(rect))
        return QImage(); // resolution 0 or an unreadable source: nothing to draw, no message

    QImage result;
    QString title;
    QString message;
    try {
        const DecodedImage decoded = sourcePicture(source, settings);
        result = renderExportPicture(decoded, rect, r, format, settings.degrees, scale);
        if (result.isNull()) {
            title = tr("Out of memory");
            message = tr("A picture of %1 x %2 pixels cannot be made.")
                          .arg(qint64(float(rect.width())))
                          .arg(qint64(float(rect.height())));
        }
    } catch (const std::bad_alloc&) {
        title = tr("Out of memory");
        message = tr("There is not enough memory to draw the picture.");
    } catch (const std::exception& e) {
        title = tr("Drawing failed");
        message = QString::fromLocal8Bit(e.what());
    }
    if (!title.isEmpty()) {
        const ConversionJob* job = currentConversionJob();
        if (job && job->inBatch)
            job->failure = message; // the batch goes on; its summary names the file
        else
            showFailure(*this, title, message);
        return QImage();
    }
    return result;
}

int16_t Controller::convertAndSave(const QImage& picture, const QString& destPath, int format) {
    // The writer needs the file that the naming step created; without it nothing is written.
    const int16_t pathStatus =
        (!destPath.isEmpty() && QFileInfo(destPath).isFile()) ? 0 : kPathNotResolved;
    if (format < 0)
        return kBadFormat;
    if (!isRasterFormat(format))
        return pathStatus;
    if (pathStatus != 0)
        return pathStatus;
    const ExportSettings settings = exportSettings(*this);
    // The source's metadata, adapted to this output: upright, at this resolution and size.
    const ConversionJob* job = currentConversionJob();
    const ImageMetadata metadata =
        job ? MetadataCarrier::forOutput(job->metadata, picture.size(), settings.dpi)
            : ImageMetadata{};
    SourceTraits source;
    if (job)
        source.hasAlpha = job->sourceHasAlpha;
    return writeRaster(picture, destPath, rasterSubtype(format), settings.dpi, metadata, source);
}

void Controller::createPDFFile(const QString& source, const QString& toFile, const QRectF& bounds) {
    const ExportSettings settings = exportSettings(*this);
    try {
        const DecodedImage decoded = sourcePicture(source, settings);
        // The page's picture is in sRGB, the colour space of a PDF page without a profile.
        QImage picture = decoded.ok ? decoded.image : QImage();
        ColourProfiles::toSrgb(picture);
        // An unreadable source still gets its page, with nothing drawn on it.
        writePictureAsPdf(picture, bounds, settings.degrees, toFile);
    } catch (const std::bad_alloc&) {
        showFailure(*this, tr("Out of memory"), tr("There is not enough memory to write the PDF."));
    }
}

void Controller::createPDFFile(const char* utf8Path) {
    if (!utf8Path)
        return;
    const ExportSettings settings = exportSettings(*this);
    const QRectF bounds(0, 0, float(itsImgBounds.right - itsImgBounds.left),
                        float(itsImgBounds.bottom - itsImgBounds.top));
    try {
        writePictureAsPdf(itsCGImage, bounds, settings.degrees, QString::fromUtf8(utf8Path));
    } catch (const std::bad_alloc&) {
        showFailure(*this, tr("Out of memory"), tr("There is not enough memory to write the PDF."));
    }
}

void Controller::showOutOfMemory() {
    showFailure(*this, tr("Out of memory"), tr("There is not enough memory to write the picture."));
}
