#include "views/widgets/led_display.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "views/widgets/instrument_light.h"
#include "views/widgets/seven_segment.h"
#include "views/widgets/widget_accessibility.h"

namespace halvex {

namespace {

// Panel colours by day; instrumentLight() decides how they show.
const QColor kPanel(0x0d, 0x12, 0x0f);
const QColor kBezel(0x2c, 0x33, 0x30);
constexpr int kPadding = 5;
constexpr int kDefaultCells = 7;  // room for "-180.00"

// The number as the panel shows it. Rounding can leave "-0.00" for a tiny
// negative value or negative zero; a panel shows that as plain zero.
QString formatValue(double value, int decimals) {
    if (!std::isfinite(value)) {
        return QStringLiteral("----");
    }
    QString text = QString::number(value, 'f', decimals);
    if (text.startsWith(QLatin1Char('-')) &&
        std::all_of(text.cbegin() + 1, text.cend(),
                    [](QChar ch) { return ch == QLatin1Char('0') || ch == QLatin1Char('.'); })) {
        text.remove(0, 1);
    }
    return text;
}

// Cells that take the room of a digit (the decimal point is narrow).
int digitCells(const QString& text) {
    return static_cast<int>(text.size() - text.count(QLatin1Char('.')));
}

}  // namespace

LedDisplay::LedDisplay(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    refreshText();
}

void LedDisplay::setValue(double value) {
    const bool changed = !(value == value_ || (std::isnan(value) && std::isnan(value_)));
    // Stored even when equal, so that -0.0 after 0.0 is held as given.
    value_ = value;
    refreshText();
    if (changed) {
        emit valueChanged(value_);
        announceValueChange(this);
    }
}

void LedDisplay::setDecimals(int decimals) {
    decimals_ = std::clamp(decimals, 0, kMaxDecimals);
    refreshText();
}

void LedDisplay::setFieldWidth(int cells) {
    fieldWidth_ = std::max(0, cells);
    refreshText();
    updateGeometry();
}

void LedDisplay::setDigitColor(const QColor& color) {
    digitColor_ = color;
    update();
}

void LedDisplay::refreshText() {
    QString text = formatValue(value_, decimals_);
    const int padding = fieldWidth_ - digitCells(text);
    if (padding > 0) {
        text.prepend(QString(padding, QLatin1Char(' ')));
    }
    if (text != text_) {
        text_ = text;
        update();
    }
}

QSize LedDisplay::sizeHint() const {
    // Sized for the field, not the current text, so that layouts stay put as the value changes.
    const int cells = fieldWidth_ > 0 ? fieldWidth_ : kDefaultCells;
    const QString sample = QString(cells - 1, QLatin1Char('8')) + QStringLiteral(".8");
    constexpr int kDigitHeight = 22;
    const double width = sevenSegmentTextWidth(sample) * kDigitHeight / 2.0;
    return {static_cast<int>(std::ceil(width)) + 2 * kPadding + 4, kDigitHeight + 2 * kPadding};
}

QSize LedDisplay::minimumSizeHint() const {
    // A squeezed panel shrinks its digits with it; below this they stop
    // being readable at a glance, so a layout may not squeeze it further.
    const QSize hint = sizeHint();
    return {hint.width() * 17 / 20, hint.height()};
}

void LedDisplay::paintEvent(QPaintEvent*) {
    // The segments are many small antialiased paths; a panel is drawn once
    // per text, size and colour and then only copied, so that repainting a
    // page (say when it is enabled again) costs next to nothing.
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = size() * ratio;
    const QColor digits = signalColour(digitColor_);
    const InstrumentLight light = instrumentLight();
    if (cache_.size() != pixels || cache_.devicePixelRatio() != ratio || cachedText_ != text_ ||
        cachedColor_ != digits || cachedLight_ != light) {
        cache_ = QPixmap(pixels);
        cache_.setDevicePixelRatio(ratio);
        cache_.fill(Qt::transparent);
        QPainter painter(&cache_);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF panel = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        const double radius = std::min(4.0, panel.height() / 4.0);
        painter.setPen(QPen(markingColour(kBezel), 1.0));
        painter.setBrush(markingColour(kPanel));
        painter.drawRoundedRect(panel, radius, radius);
        const QRectF area = panel.adjusted(kPadding, kPadding, -kPadding, -kPadding);
        drawSevenSegmentText(painter, area, text_, digits);
        cachedText_ = text_;
        cachedColor_ = digits;
        cachedLight_ = light;
    }
    QPainter(this).drawPixmap(0, 0, cache_);
}

}  // namespace halvex
