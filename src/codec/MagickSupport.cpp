#include "codec/MagickSupport.h"

#include <Magick++.h>
#include <tiffio.h>

#include <mutex>
#include <new>

#include "codec/DecodeLimits.h"

namespace {

// libtiff reports through two process-wide handlers. Magick's TIFF module, once loaded, points
// them at a per-thread exception that it frees after each of its reads; a later warning from
// Qt's TIFF reader on that thread would then write into freed memory. The program's own
// handlers say nothing: a reader's failure shows in its result.
void quietTiffHandler(const char*, const char*, va_list) {}

} // namespace

void useOwnTiffHandlers() {
    TIFFSetErrorHandler(quietTiffHandler);
    TIFFSetWarningHandler(quietTiffHandler);
}

void ensureMagickStarted() {
    static std::once_flag once;
    std::call_once(once, [] {
        Magick::InitializeMagick(nullptr);
        // The system policy may cap these lower still; a limit above the policy is ignored.
        Magick::ResourceLimits::width(DecodeLimits::kMaxSide);
        Magick::ResourceLimits::height(DecodeLimits::kMaxSide);
        Magick::ResourceLimits::area(
            static_cast<MagickCore::MagickSizeType>(DecodeLimits::kMaxPixels));
    });
}

void ensureMagickInitialised() {
    ensureMagickStarted();
    static std::once_flag once;
    std::call_once(once, [] {
        // Every coder module is loaded now, so that none installs handlers of its own later.
        size_t count = 0;
        MagickCore::ExceptionInfo* exception = MagickCore::AcquireExceptionInfo();
        const MagickCore::MagickInfo** infos =
            MagickCore::GetMagickInfoList("*", &count, exception);
        exception = MagickCore::DestroyExceptionInfo(exception);
        if (infos)
            MagickCore::RelinquishMagickMemory(infos);
        useOwnTiffHandlers();
        // A coder's library (DjVu's) installs a process-wide new-handler that throws its own
        // exception type, which no `catch (std::bad_alloc&)` sees: a failed allocation anywhere
        // in the program would then escape every handler. The standard behaviour comes back.
        std::set_new_handler(nullptr);
    });
}
