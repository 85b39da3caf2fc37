#pragma once

#include <QObject>
#include <QString>
#include <memory>

#include "console/console_context.h"
#include "session/jog_state.h"

class QPushButton;

namespace halvex {

class CameraPage;
class CameraLists;
class HelpBox;

// Installs the Camera page's features (control lists, transmit boxes, camera
// lines, lenses) and the two help buttons with their help window, and hands
// the camera Get handlers to the connection sequence.
class CameraFeatures : public QObject {
    Q_OBJECT
  public:
    // `tourHelpBut` is the help button of the Tours page.
    CameraFeatures(ConsoleContext& context, JogState& jog, CameraPage& page,
                   QPushButton* tourHelpBut, QObject* parent);
    ~CameraFeatures() override;

    // Where the control lists and help files are looked for: the data folder
    // beside the program unless set otherwise.
    QString dataFolder() const { return dataFolder_; }
    void setDataFolder(const QString& folder) { dataFolder_ = folder; }

    // The help window, or nullptr before the first help button click.
    HelpBox* helpBox() const { return helpBox_.get(); }

    void SerHelpBut_Click();
    void TourHelpBut_Click();

  private:
    void showHelp(const QString& fileName, const QString& title);

    ConsoleContext& context_;
    QString dataFolder_;
    // Top level and not owned by the main window, as help windows are.
    std::unique_ptr<HelpBox> helpBox_;
};

}  // namespace halvex
