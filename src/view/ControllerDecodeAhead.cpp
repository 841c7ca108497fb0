// Controller: the pictures beside the current one, decoded while it is looked at.

#include "app/Controller.h"
#include "browse/ImageFileTest.h"
#include "codec/ImageDecoder.h"
#include "view/DecodeAhead.h"
#include "view/wmfImageView.h"

#include <QTimer>

namespace {

DecodeAhead::ViewShape shapeOf(const wmfImageView* view) {
    if (!view)
        return {};
    return {QSizeF(view->size()), view->devicePixelRatioF()};
}

} // namespace

DecodedImage Controller::decodeForView(const QString& path) {
    if (!decodeAheadEnabled)
        return ImageDecoder::decode(path);
    if (!decodeAhead)
        decodeAhead = std::make_shared<DecodeAhead>(imageFileTypes());
    wmfImageView* view = activeImageView();
    DecodeAhead::Picture picture = decodeAhead->take(path, shapeOf(view));
    if (!picture.decoded.ok) {
        // Nothing is shown, and nothing can be stepped to from here: let the neighbours go.
        decodeAhead->clear();
    } else if (view) {
        view->adoptDisplayCopy(picture.decoded.image, picture.displayCopy);
    }
    return std::move(picture.decoded);
}

void Controller::decodeAround(const QString& path) {
    if (!decodeAheadEnabled || !decodeAhead)
        return;
    // Queued behind the repaint that the new picture asked for: the neighbours are looked for
    // once the picture is on screen.
    QTimer::singleShot(0, this, [this, path] {
        if (!decodeAhead)
            return;
        // A later picture has been shown meanwhile; it looks around for itself.
        const QString shown = itsWmfView ? itsWmfView->wmfPath() : path;
        if (!shown.isEmpty() && shown != path)
            return;
        decodeAhead->lookAround(path, shapeOf(activeImageView()));
    });
}
