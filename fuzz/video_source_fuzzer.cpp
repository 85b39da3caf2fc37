// libFuzzer target for what an operator types (or the settings hold) for
// the live video: any bytes in, as UTF-8, read both as a video source and as
// a lens's table of fields of view. Besides a crash or a sanitizer report, a
// finding is
//   - a refusal that does not say "not a video source: ", or one that
//     repeats a long text in full;
//   - an accepted source that does not come back the same through its text;
//   - an accepted address with a space or control character in it, or a
//     device that is not under /dev;
//   - an accepted lens whose field widens as the zoom rises, leaves 0 to 180
//     degrees, does not come back the same through its text, or whose
//     inverse lands outside the lens's travel.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "live_video/field_of_view.h"
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

void checkLens(const QString& text) {
    const auto lens = halvex::FieldOfView::fromText(text);
    if (!lens) {
        return;
    }
    double before = 180.0;
    for (int zoom = -1; zoom <= 256; ++zoom) {
        const double degrees = lens->degreesAt(zoom);
        if (!(degrees > 0.0) || degrees >= 180.0 || degrees > before) {
            finding("a lens field outside 0 to 180 degrees or widening with the zoom");
        }
        before = degrees;
        const int back = lens->zoomFor(degrees);
        if (back < 0 || back > 255) {
            finding("a lens inverse outside the lens's travel");
        }
    }
    if (halvex::FieldOfView::fromText(lens->text()) != lens) {
        finding("a lens that does not come back the same through its text");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    checkLens(text);
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
