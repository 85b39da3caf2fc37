#pragma once

#include <QWidget>
#include <array>

namespace halvex {

// A round dial with a needle over the scale minimum..maximum, swept
// clockwise through 270 degrees from the lower left to the lower right.
//
// `value` stores the number as set; the needle shows `needleValue`, the
// value limited to the scale, so a value past either end shows at that end
// (a NaN rests at the minimum). minimum may exceed maximum: the scale then
// simply runs the other way.
//
// Two optional pairs of range marks draw as bands on the scale. The second
// mark of a pair is never below the first: when set below it, it is moved
// to the first mark plus kMinRangeMarkGap.
class PanGauge : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum NOTIFY minimumChanged)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum NOTIFY maximumChanged)
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged)
    Q_PROPERTY(double needleValue READ needleValue)

  public:
    static constexpr int kRangeMarkPairs = 2;
    static constexpr double kMinRangeMarkGap = 5.0;

    struct RangeMarks {
        bool shown = false;
        double first = 0.0;
        double second = 0.0;
    };

    explicit PanGauge(QWidget* parent = nullptr);

    double minimum() const { return minimum_; }
    double maximum() const { return maximum_; }
    double value() const { return value_; }
    double needleValue() const;
    // The number drawn in the gap at the bottom: the value as set, in
    // hundredths like the angle readings beside the gauge.
    QString readout() const { return QString::number(value_, 'f', 2); }

    // Needle angle in degrees, counter-clockwise from three o'clock (as QPainter counts).
    double angleFor(double scaleValue) const;

    // pair is 0 or 1; any other pair is ignored.
    void setRangeMarks(int pair, double first, double second);
    void clearRangeMarks(int pair);
    RangeMarks rangeMarks(int pair) const;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width; }
    QSize sizeHint() const override { return {180, 180}; }
    QSize minimumSizeHint() const override { return {60, 60}; }

  public slots:
    void setMinimum(double minimum);
    void setMaximum(double maximum);
    void setRange(double minimum, double maximum);
    void setValue(double value);

  signals:
    void minimumChanged(double minimum);
    void maximumChanged(double maximum);
    void valueChanged(double value);
    void rangeMarksChanged(int pair);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    double minimum_ = -180.0;
    double maximum_ = 180.0;
    double value_ = 0.0;
    std::array<RangeMarks, kRangeMarkPairs> rangeMarks_{};
};

}  // namespace halvex
