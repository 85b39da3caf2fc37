#pragma once

#include <QCoro/QCoroTask>
#include <QObject>

#include "console/console_context.h"

namespace halvex {

class VideoPage;

// The two on-screen display frames of the "Video" page: the site name with
// its display line, and the angle display. Every change is sent at once;
// "Save As Initial" sends the same setting to be stored. What the unit
// reports sets the controls back without sending anything.
class OnScreenDisplay : public QObject {
    Q_OBJECT
  public:
    OnScreenDisplay(ConsoleContext& context, VideoPage& page, QObject* parent = nullptr);

    QCoro::Task<> AngleDisplay_Change(bool store);
    QCoro::Task<> NameDisplay_Change(bool store);
    QCoro::Task<> NameSaveBut_Click();

  private:
    void connectControls();
    void showAngleDisplay(const OsdSetting& setting);
    void showNameDisplay(const OsdSetting& setting);

    ConsoleContext& context_;
    VideoPage& page_;
};

}  // namespace halvex
