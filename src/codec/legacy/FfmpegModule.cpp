#include "codec/legacy/FfmpegModule.h"

#include <QFileInfo>
#include <QLibrary>

#include <mutex>

namespace FfmpegModule {

namespace {

constexpr auto kFileName = "ormidon_ffmpeg.so";

// The folder of the running executable, its links resolved.
QString executableFolder() {
    const QString exe = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    return exe.isEmpty() ? QString() : QFileInfo(exe).absolutePath();
}

} // namespace

QString path() {
    static const QString found = [] {
        // Installed: the same way from the executable as the install put it (/usr/bin/ormidon,
        // /usr/lib/ormidon/), wherever the tree was unpacked. A program or test run from the
        // build tree takes the build's own; an installed one never does.
        const QString folder = executableFolder();
        QStringList candidates = {folder + QStringLiteral("/" ORMIDON_MODULE_DIR_FROM_BIN "/") +
                                  kFileName};
        if (folder.startsWith(QStringLiteral(ORMIDON_BUILD_ROOT "/")))
            candidates << QStringLiteral(ORMIDON_MODULE_BUILD_DIR "/") + kFileName;
        for (const QString& candidate : candidates)
            if (QFileInfo(candidate).isFile())
                return QFileInfo(candidate).absoluteFilePath();
        return QString();
    }();
    return found;
}

const FfmpegEntry* entry() {
    static const FfmpegEntry* loaded = nullptr;
    static std::once_flag once;
    std::call_once(once, [] {
        if (path().isEmpty())
            return;
        auto* library = new QLibrary(path()); // kept for the process: the module stays loaded
        using EntryFunction = const FfmpegEntry* (*)();
        const auto function =
            reinterpret_cast<EntryFunction>(library->resolve("ormidon_ffmpeg_entry"));
        const FfmpegEntry* table = function ? function() : nullptr;
        if (table && table->version == FfmpegEntry::kVersion)
            loaded = table;
    });
    return loaded;
}

} // namespace FfmpegModule
