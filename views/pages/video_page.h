#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>

namespace halvex {

// The "Video" page: the video routing, blanking, standard, camera power and
// aux outputs of current units ("Video Config") and of older units ("Legacy
// Video Config"), the two on-screen display frames, and the blanking of the
// video while a tour moves.
class VideoPage : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kRoutes = 8;

    explicit VideoPage(QWidget* parent = nullptr);

    // "Video Config"
    QGroupBox* VidConfigFrame = nullptr;
    std::array<QRadioButton*, kRoutes> VidOption{};
    std::array<QCheckBox*, 2> BlankCheck{};  // "Blank Vout 2", "Blank Vout 1"
    QCheckBox* PALCheck = nullptr;
    std::array<QCheckBox*, 2> CamPwrCheck{};
    std::array<QCheckBox*, 4> AuxCheck{};
    QPushButton* StoreInitBut = nullptr;
    QPushButton* GetVidBut = nullptr;

    // "Legacy Video Config"
    QGroupBox* VideoFrame = nullptr;
    std::array<QRadioButton*, 3> LVidOption{};
    std::array<QCheckBox*, 2> LCamPwrCheck{};
    QCheckBox* PALCheck2 = nullptr;
    QCheckBox* OSDOnCheck = nullptr;
    QPushButton* InitVModeBut = nullptr;
    QPushButton* GetVidBut2 = nullptr;

    // "OSD ID/Name Display"
    QLineEdit* NameText = nullptr;
    QPushButton* NameSaveBut = nullptr;
    QCheckBox* NumDisCheck = nullptr;
    QScrollBar* NumLineScroll = nullptr;
    QPushButton* NameStoreBut = nullptr;

    // "OSD Angle Display"
    QCheckBox* AngDisCheck = nullptr;
    QCheckBox* AngSgnCheck = nullptr;
    QScrollBar* AngLineScroll = nullptr;
    QPushButton* AngStorBut = nullptr;

    // Sets bit 7 of the dwell byte of tour steps added from now on.
    QCheckBox* VBlankCheck = nullptr;

  private:
    QGroupBox* buildVideoConfig();
    QGroupBox* buildLegacyConfig();
    QGroupBox* buildNameDisplay();
    QGroupBox* buildAngleDisplay();
};

}  // namespace halvex
