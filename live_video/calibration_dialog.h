#pragma once

#include <QCoro/QCoroTask>
#include <QDialog>
#include <QPointer>
#include <array>
#include <functional>
#include <map>
#include <optional>

#include "live_video/field_of_view.h"
#include "live_video/video_aim.h"

class QLabel;
class QListWidget;
class QPushButton;

namespace halvex {

class Session;

// Measures a camera's field of view at the zoom positions the operator
// picks: the operator clicks a feature in the picture, the console pans so
// that the feature should cross the centre, and the operator clicks it
// again; the pan and the two marks give the field. Each zoom position gives
// one point of the lens's table, which Save hands on. It is shown without
// waiting for it; the marks come from the picture of whichever output the
// route puts the camera on.
class CalibrationDialog : public QDialog {
    Q_OBJECT
  public:
    CalibrationDialog(Session& session, std::array<VideoAim*, 2> aims, int camera, FieldOfView lens,
                      QWidget* parent = nullptr);
    ~CalibrationDialog() override;

    QString step() const;
    // The points measured so far, by zoom position.
    const std::map<int, double>& measured() const { return measured_; }

  signals:
    void calibrated(int camera, const halvex::FieldOfView& lens);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void listen(bool on);
    void mark(QPointF point);
    void showStep(const QString& text);
    void save();
    QCoro::Task<> panAcross(double degrees);
    VideoAim* aimShowingCamera() const;
    int zoom() const;

    Session& session_;
    // The aims may go before the dialog when the window closes.
    std::array<QPointer<VideoAim>, 2> aims_;
    int camera_;
    FieldOfView lens_;
    std::map<int, double> measured_;
    // The first mark of the point under way, with the pan and zoom then.
    struct FirstMark {
        double across;
        double pan;
        int zoom;
        double panned;
    };
    std::optional<FirstMark> first_;
    bool panning_ = false;
    QLabel* step_;
    QListWidget* points_;
    QPushButton* save_;
};

}  // namespace halvex
