// libFuzzer target for the video source an operator types (or the settings
// hold): any bytes in, as UTF-8. Besides a crash or a sanitizer report, a
// finding is
//   - a refusal that does not say "not a video source: ", or one that
//     repeats a long text in full;
//   - an accepted source that does not come back the same through its text;
//   - an accepted address with a space or control character in it, or a
//     device that is not under /dev.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "live_video/video_source.h"

namespace {

[[noreturn]] void finding(const char* what) {
    std::fprintf(stderr, "video source fuzzer: %s\n", what);
    std::abort();
}

void checkAccepted(const halvex::VideoSource& source) {
    using Kind = halvex::VideoSource::Kind;
    if ((source.kind == Kind::None) != source.address.isEmpty()) {
        finding("an address for no source, or a source with no address");
    }
    for (const QChar c : source.address) {
        if (c.isSpace() || c.category() == QChar::Other_Control) {
            finding("an accepted address with a space or control character");
        }
    }
    if (source.kind == Kind::Device && !source.address.startsWith(QLatin1String("/dev/"))) {
        finding("a device outside /dev");
    }
    if (halvex::parseVideoSource(halvex::sourceText(source)) != source) {
        finding("does not come back the same through its text");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString why;
    const std::optional<halvex::VideoSource> source = halvex::parseVideoSource(text, &why);
    if (!source) {
        if (!why.startsWith(QLatin1String("not a video source: "))) {
            finding("refused without saying so");
        }
        if (why.size() > 200) {
            finding("the reason repeats a long text in full");
        }
        return 0;
    }
    checkAccepted(*source);
    return 0;
}
