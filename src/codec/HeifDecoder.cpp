// HEIC and AVIF through libheif: the primary picture, turned and mirrored as the file says.

#include "codec/DecoderBackends.h"
#include "codec/ModernDecoders.h"
#include "codec/DecodeLimits.h"

#include <QColorSpace>
#include <QFile>

#include <libheif/heif.h>

#include <algorithm>
#include <cstring>
#include <vector>
#include <memory>

namespace {

using ContextPtr = std::unique_ptr<heif_context, decltype(&heif_context_free)>;
using HandlePtr = std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)>;
using ImagePtr = std::unique_ptr<heif_image, decltype(&heif_image_release)>;

// The file's primary picture handle, or null; the context stays with the caller.
HandlePtr primaryOf(const QString& path, ContextPtr& context) {
    HandlePtr none(nullptr, &heif_image_handle_release);
    context.reset(heif_context_alloc());
    if (!context)
        return none;
    // libheif refuses on its own any side beyond this before it allocates.
    heif_context_set_maximum_image_size_limit(context.get(), DecodeLimits::kMaxSide);
    const QByteArray name = QFile::encodeName(path);
    if (heif_context_read_from_file(context.get(), name.constData(), nullptr).code != heif_error_Ok)
        return none;
    heif_image_handle* handle = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &handle).code != heif_error_Ok)
        return none;
    HandlePtr owned(handle, &heif_image_handle_release);
    if (!DecoderBackends::withinLimits(heif_image_handle_get_width(handle),
                                       heif_image_handle_get_height(handle)))
        return none;
    return owned;
}

// The handle's ICC profile, when it has one.
QColorSpace colorSpaceOf(const heif_image_handle* handle) {
    const size_t size = heif_image_handle_get_raw_color_profile_size(handle);
    if (size == 0 || size > (size_t(16) << 20))
        return {};
    QByteArray icc(qsizetype(size), Qt::Uninitialized);
    if (heif_image_handle_get_raw_color_profile(handle, icc.data()).code != heif_error_Ok)
        return {};
    return QColorSpace::fromIccProfile(icc);
}

// The embedded thumbnail whose longer side is at least maxSide, the smallest such; or null.
HandlePtr thumbnailOf(const heif_image_handle* primary, int maxSide) {
    HandlePtr best(nullptr, &heif_image_handle_release);
    const int count = heif_image_handle_get_number_of_thumbnails(primary);
    if (count <= 0 || count > 16)
        return best;
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    heif_image_handle_get_list_of_thumbnail_IDs(primary, ids.data(), count);
    int bestSide = 0;
    for (heif_item_id id : ids) {
        heif_image_handle* thumb = nullptr;
        if (heif_image_handle_get_thumbnail(primary, id, &thumb).code != heif_error_Ok)
            continue;
        HandlePtr owned(thumb, &heif_image_handle_release);
        const int side = std::max(heif_image_handle_get_width(thumb),
                                  heif_image_handle_get_height(thumb));
        if (side >= maxSide && (bestSide == 0 || side < bestSide) &&
            DecoderBackends::withinLimits(heif_image_handle_get_width(thumb),
                                          heif_image_handle_get_height(thumb))) {
            bestSide = side;
            best = std::move(owned);
        }
    }
    return best;
}

QImage pixelsOf(const heif_image_handle* handle) {
    const bool alpha = heif_image_handle_has_alpha_channel(handle);
    heif_image* decoded = nullptr;
    if (heif_decode_image(handle, &decoded, heif_colorspace_RGB,
                          alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                          nullptr)
            .code != heif_error_Ok)
        return {};
    ImagePtr owned(decoded, &heif_image_release);
    const int width = heif_image_get_width(decoded, heif_channel_interleaved);
    const int height = heif_image_get_height(decoded, heif_channel_interleaved);
    int stride = 0;
    const uint8_t* plane = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    if (!plane || !DecoderBackends::withinLimits(width, height))
        return {};
    QImage image(width, height, alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    if (image.isNull())
        return {};
    const size_t rowBytes = size_t(width) * (alpha ? 4 : 3);
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), plane + size_t(y) * size_t(stride), rowBytes);
    return image;
}

} // namespace

namespace ModernDecoders {

DecodedImage heifDecode(const QString& path, int maxSide) {
    DecodedImage result;
    ContextPtr context(nullptr, &heif_context_free);
    HandlePtr primary = primaryOf(path, context);
    if (!primary)
        return result;
    HandlePtr thumbnail =
        maxSide > 0 ? thumbnailOf(primary.get(), maxSide) : HandlePtr(nullptr, &heif_image_handle_release);
    QImage image = pixelsOf(thumbnail ? thumbnail.get() : primary.get());
    if (image.isNull())
        return result;
    image.setColorSpace(colorSpaceOf(primary.get()));
    result.pointSize = QSizeF(image.size());
    result.image = DecoderBackends::normalised(std::move(image));
    result.ok = !result.image.isNull();
    return result;
}

QSizeF heifMeasure(const QString& path) {
    ContextPtr context(nullptr, &heif_context_free);
    const HandlePtr primary = primaryOf(path, context);
    if (!primary)
        return {};
    return QSizeF(heif_image_handle_get_width(primary.get()),
                  heif_image_handle_get_height(primary.get()));
}

} // namespace ModernDecoders
