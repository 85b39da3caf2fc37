#pragma once

#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>
#include <map>

namespace halvex {

// The "Tours" page: the tour selectors, the selected tour's steps, the
// presets to add, the edit mode, camera and dwell of a new step, and the
// execute, clear and count buttons.
class ToursPage : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kTours = 3;
    // Longest dwell a step can hold, in seconds (seven bits).
    static constexpr int kMaxDwell = 127;

    explicit ToursPage(QWidget* parent = nullptr);
    ~ToursPage() override;

    std::array<QRadioButton*, kTours> TourSel{};
    QListWidget* ScriptList = nullptr;
    QListWidget* ScriptPreList = nullptr;
    QScrollBar* WaitScroll = nullptr;
    QLabel* WaitLabel = nullptr;
    // Append, Insert, Replace.
    std::array<QRadioButton*, 3> Option1{};
    // Default camera, camera 2, camera 3.
    std::array<QRadioButton*, 3> CamSel{};
    QPushButton* ExecScriptBut = nullptr;
    QPushButton* ClearScriptBut = nullptr;
    QPushButton* Command3 = nullptr;
    QLabel* Label23 = nullptr;
    QPushButton* TourHelpBut = nullptr;

    // The picture of the step's preset as its entry's icon, until the steps
    // are read again; a null icon takes it away. Laid out as the Presets
    // page lays out its entries' pictures.
    void setStepIcon(int row, const QIcon& icon);
    QIcon stepIcon(int row) const;

  private:
    QWidget* buildTourBox();
    QWidget* buildChoiceBox();
    void showStepIcon(int row);
    void showStepIcons();

    QLabel* stepHeading_ = nullptr;
    std::map<int, QIcon> stepIcons_;
};

}  // namespace halvex
