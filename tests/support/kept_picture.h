#pragma once

// What a window looks like against the picture of it last looked at: a
// control moved within its page, a column that takes the room another
// should, a mark drawn elsewhere or in another colour.

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QHash>
#include <QImage>
#include <QWidget>
#include <cstdlib>

namespace halvex::testing {
namespace kept_picture_detail {

// Rounding in the toolkit's blending may differ between processors by a
// step or two; a control moved by a pixel changes a whole edge by far more.
constexpr int kChannelSlack = 12;
constexpr int kPixelsAllowed = 24;
// Flat fills, unlike blended edges, come out the same on any processor; a
// colour one step off in a palette hides under the slack above but moves
// every pixel of its area to another colour.
constexpr int kFlatArea = 400;
constexpr double kFlatAreaSlack = 0.1;

inline int differingPixels(const QImage& kept, const QImage& seen, QImage& marks) {
    marks = seen.convertToFormat(QImage::Format_RGB32);
    int differing = 0;
    for (int y = 0; y < seen.height(); ++y) {
        const auto* a = reinterpret_cast<const QRgb*>(kept.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(seen.constScanLine(y));
        for (int x = 0; x < seen.width(); ++x) {
            if (std::abs(qRed(a[x]) - qRed(b[x])) > kChannelSlack ||
                std::abs(qGreen(a[x]) - qGreen(b[x])) > kChannelSlack ||
                std::abs(qBlue(a[x]) - qBlue(b[x])) > kChannelSlack) {
                ++differing;
                marks.setPixel(x, y, qRgb(255, 0, 255));
            }
        }
    }
    return differing;
}

// A picture in Format_RGB32, whose rows hold no padding.
inline QHash<QRgb, int> colourAreas(const QImage& image) {
    QHash<QRgb, int> areas;
    const auto* pixels = reinterpret_cast<const QRgb*>(image.constBits());
    for (qsizetype i = 0; i < image.sizeInBytes() / 4; ++i) {
        ++areas[pixels[i]];
    }
    return areas;
}

// The colours that fill at least kFlatArea pixels of the kept picture and
// no longer fill about as many in the one seen.
inline QStringList changedFlatColours(const QImage& kept, const QImage& seen) {
    const QHash<QRgb, int> seenAreas = colourAreas(seen);
    QStringList changed;
    for (const auto& [colour, area] : colourAreas(kept).asKeyValueRange()) {
        if (area >= kFlatArea && std::abs(seenAreas.value(colour) - area) > area * kFlatAreaSlack) {
            changed << QStringLiteral("%1 on %2 pixels, now %3")
                           .arg(QColor(colour).name(), QString::number(area),
                                QString::number(seenAreas.value(colour)));
        }
    }
    return changed;
}

}  // namespace kept_picture_detail

// Where a test program's kept pictures are, and where it writes those that
// no longer match.
struct KeptPictures {
    const char* kept;
    const char* seen;
};

// Compares what a widget shows with its kept picture. After a deliberate
// change to the look, HALVEX_WRITE_PICTURES=1 writes the pictures again, to
// be looked at before they are kept. A picture that no longer matches is
// written to the seen folder with a copy that marks the pixels that differ.
inline void expectLooksAsKept(QWidget& window, const KeptPictures& where, const QString& name) {
    const QImage seen = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QString keptPath = QStringLiteral("%1/%2.png").arg(QLatin1String(where.kept), name);
    if (qEnvironmentVariableIntValue("HALVEX_WRITE_PICTURES") == 1) {
        ASSERT_TRUE(seen.save(keptPath, "PNG", 0)) << keptPath.toStdString();
        return;
    }
    const QImage kept = QImage(keptPath).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(kept.isNull()) << "no kept picture " << keptPath.toStdString();
    QDir().mkpath(QLatin1String(where.seen));
    const QString seenPath = QStringLiteral("%1/%2.png").arg(QLatin1String(where.seen), name);
    if (kept.size() != seen.size()) {
        seen.save(seenPath);
        FAIL() << name.toStdString() << ": " << seen.width() << " x " << seen.height() << ", kept "
               << kept.width() << " x " << kept.height() << "; see " << seenPath.toStdString();
    }
    QImage marks;
    const int differing = kept_picture_detail::differingPixels(kept, seen, marks);
    if (differing > kept_picture_detail::kPixelsAllowed) {
        seen.save(seenPath);
        marks.save(QStringLiteral("%1/%2-differences.png").arg(QLatin1String(where.seen), name));
        ADD_FAILURE() << name.toStdString() << ": " << differing << " pixels differ from "
                      << keptPath.toStdString() << "; see " << seenPath.toStdString();
    }
    const QStringList changed = kept_picture_detail::changedFlatColours(kept, seen);
    if (!changed.isEmpty()) {
        seen.save(seenPath);
        ADD_FAILURE() << name.toStdString() << ": flat colours changed: "
                      << changed.join(QStringLiteral("; ")).toStdString();
    }
}

}  // namespace halvex::testing
