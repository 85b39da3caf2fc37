#pragma once

#include <QObject>

#include "console/console_context.h"

namespace halvex {

class VideoPage;

// The "Video Config" and "Legacy Video Config" frames of the "Video" page.
// Every click sends the whole configuration byte at once; the unit's replies
// set the controls back without sending anything.
class VideoConfig : public QObject {
    Q_OBJECT
  public:
    VideoConfig(ConsoleContext& context, VideoPage& page, QObject* parent = nullptr);

    void registerDecoders();

    void VidOption_Click(int index);
    void BlankCheck_Click();
    void PALCheck_Click();
    void CamPwrCheck_Click();
    void StoreInitBut_Click();
    void GetVidBut_Click();
    void AuxCheck_Click();
    void LVidOption_Click(int index);
    void LCamPwrCheck_Click();
    void PALCheck2_Click();
    void InitVModeBut_Click();

    Byte VideoMode() const { return videoMode_; }
    Byte VideoPower() const { return videoPower_; }
    Byte LegacyVideo() const { return legacyVideo_; }

  private:
    void connectControls();
    void sendVideo(Byte mode);
    void sendLegacy();
    Byte legacyModeByte() const;
    void decodeVideo();
    void decodeLegacyVideo();
    // The standard unit has the current video hardware; other types (but
    // the one without video) have the legacy one.
    void enableFramesForUnitType();

    ConsoleContext& context_;
    VideoPage& page_;
    Byte videoMode_ = 0;
    Byte videoPower_ = 0;
    Byte legacyVideo_ = 0;
};

}  // namespace halvex
