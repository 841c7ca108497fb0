#include "view/MagickSupport.h"

#include <Magick++.h>

#include <mutex>

#include "view/DecodeLimits.h"

void ensureMagickInitialised() {
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
