#pragma once

#include <QtGlobal>
#include <deque>

#include "views/widgets/plot_frame.h"

namespace halvex {

// Where the platform has been over the last minutes, oldest first, for the
// range plot to draw as a trail that fades with age.
class MotionTrail {
  public:
    static constexpr qint64 kSpanMs = 3 * 60 * 1000;
    // Position reports come ten times a second: the span's worth, with room.
    static constexpr std::size_t kMostPoints = 4000;

    struct Point {
        qint64 atMs = 0;
        PlotAngles at;
    };

    // Keeps a position unless it is where the platform last was.
    void add(qint64 nowMs, PlotAngles at);
    // Drops what is older than the span.
    void forgetBefore(qint64 nowMs);
    void clear() { points_.clear(); }
    const std::deque<Point>& points() const { return points_; }
    bool empty() const { return points_.empty(); }

    // 1 for a point just kept, falling to 0 at the end of the span.
    static double freshness(const Point& point, qint64 nowMs);
    // How strongly the trail is drawn at a point: wholly when it is new,
    // faintly, but still there, at the end of the span.
    static constexpr double kFaintest = 0.2;
    static double opacity(const Point& point, qint64 nowMs);

  private:
    std::deque<Point> points_;
};

}  // namespace halvex
