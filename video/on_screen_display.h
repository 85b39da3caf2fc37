#pragma once

#include <QObject>
#include <QString>
#include <vector>

#include "console/console_context.h"

namespace halvex {

class VideoPage;

// The two on-screen display frames of the "Video" page: the site name with
// its display line, and the angle display. Every change is sent at once;
// "Save As Initial" sends the same setting with the store bit.
class OnScreenDisplay : public QObject {
    Q_OBJECT
  public:
    OnScreenDisplay(ConsoleContext& context, VideoPage& page, QObject* parent = nullptr);

    void registerDecoders();

    void AngleDisplay_Change(bool store);
    void NameDisplay_Change(bool store);
    void NameSaveBut_Click();

    // The vocab::SiteName message: its whole text, anything that is not
    // printable sent as a space and a short name padded with spaces.
    static std::vector<Byte> siteNameMessage(const QString& text);

  private:
    void connectControls();
    void decodeAngleDisplay();
    void decodeNameDisplay();

    ConsoleContext& context_;
    VideoPage& page_;
};

}  // namespace halvex
