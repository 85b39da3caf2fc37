#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>
#include <QWidget>

#include "views/widgets/instrument_light.h"

namespace halvex {

// A numeric read-out drawn as lit seven-segment digits on a dark panel.
// `value` holds exactly the number last set; the panel shows it rounded to
// `decimals` places, right-aligned in at least `fieldWidth` character cells
// (unused cells show as unlit digits). A value that is not a finite number
// shows as dashes.
class LedDisplay : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged)
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
    Q_PROPERTY(int fieldWidth READ fieldWidth WRITE setFieldWidth)
    Q_PROPERTY(QColor digitColor READ digitColor WRITE setDigitColor)
    Q_PROPERTY(QString text READ text)

  public:
    static constexpr int kMaxDecimals = 10;

    explicit LedDisplay(QWidget* parent = nullptr);

    double value() const { return value_; }
    int decimals() const { return decimals_; }
    int fieldWidth() const { return fieldWidth_; }
    QColor digitColor() const { return digitColor_; }
    // The characters on the panel, padding included.
    QString text() const { return text_; }

    // Clamped to 0..kMaxDecimals.
    void setDecimals(int decimals);
    // Fewest character cells shown, the decimal point not counted; 0 = just the text.
    void setFieldWidth(int cells);
    void setDigitColor(const QColor& color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  public slots:
    void setValue(double value);

  signals:
    void valueChanged(double value);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void refreshText();

    double value_ = 0.0;
    int decimals_ = 2;
    int fieldWidth_ = 0;
    QColor digitColor_{0x4c, 0xff, 0x7a};
    QString text_;
    QPixmap cache_;
    QString cachedText_;
    QColor cachedColor_;
    InstrumentLight cachedLight_ = InstrumentLight::Day;
};

}  // namespace halvex
