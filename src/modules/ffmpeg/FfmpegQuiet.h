#pragma once

extern "C" {
#include <libavutil/log.h>
}

#include <mutex>

// FFmpeg reports every flaw of a damaged file on stderr; the program says what failed its own
// way (a status, a refused picture), so FFmpeg's own reports are silenced once for the process.
inline void quietFfmpeg() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}
