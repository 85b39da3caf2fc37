#pragma once

#include <QCoro/QCoroTask>
#include <QObject>

#include "console/console_context.h"

namespace halvex {

class VideoPage;

// The "Video Config" and "Legacy Video Config" frames of the "Video" page.
// Every click sends the whole configuration at once; what the unit reports
// sets the controls back without sending anything.
class VideoConfig : public QObject {
    Q_OBJECT
  public:
    VideoConfig(ConsoleContext& context, VideoPage& page, QObject* parent = nullptr);

    // The option buttons act when they are checked, not when they clear.
    QCoro::Task<> VidOption_Click(int index, bool on);
    QCoro::Task<> BlankCheck_Click();
    QCoro::Task<> PALCheck_Click();
    QCoro::Task<> CamPwrCheck_Click();
    QCoro::Task<> StoreInitBut_Click();
    QCoro::Task<> GetVidBut_Click();
    QCoro::Task<> AuxCheck_Click();
    QCoro::Task<> LVidOption_Click(int index, bool on);
    QCoro::Task<> LCamPwrCheck_Click();
    QCoro::Task<> PALCheck2_Click();
    QCoro::Task<> InitVModeBut_Click();

  private:
    void connectControls();
    QCoro::Task<> sendVideo();
    QCoro::Task<> sendLegacyVideo();
    LegacyVideoMode legacyMode() const;
    void showVideo(const VideoSettings& video);
    void showLegacyVideo(const LegacyVideoSettings& video);
    // The standard unit has the current video hardware; other types (but
    // the one without video) have the legacy one.
    void enableFramesForUnitType();

    ConsoleContext& context_;
    VideoPage& page_;
    // What the clicks send: the unit's last report with the operator's
    // changes. The legacy byte follows only the unit's legacy replies.
    VideoSettings video_{};
    LegacyVideoSettings legacyVideo_{};
};

}  // namespace halvex
