#pragma once

#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QWidget>
#include <map>

#include "views/pages/angle_step_row.h"

namespace halvex {

class LedDisplay;

// The "Presets" page: the unit's preset table, the selected preset's angles
// with their step buttons, and the store and clear buttons.
class PresetsPage : public QWidget {
    Q_OBJECT
  public:
    explicit PresetsPage(QWidget* parent = nullptr);

    QListWidget* PresetList = nullptr;
    LedDisplay* PanPreLED = nullptr;
    LedDisplay* TiltPreLED = nullptr;
    AngleStepButtons PanPreBut{};
    AngleStepButtons TiltPreBut{};
    QPushButton* SavePreBut = nullptr;
    QPushButton* SaveCurPreBut = nullptr;
    QPushButton* AddAuxBut = nullptr;
    QPushButton* ClearPreBut = nullptr;

    // A preset's picture as its entry's icon, kept for the entry as it is
    // read again; a null icon takes it away. While any entry has one, the
    // others keep its room empty so that the columns stay under the
    // heading; with none, no room is taken.
    void setPresetIcon(int number, const QIcon& icon);
    QIcon presetIcon(int number) const;

    // The size of a preset's picture in a list of entries, and how far it
    // pushes an entry's text along (the Tours page's steps show them too).
    static QSize listIconSize() { return {48, 27}; }
    static int iconIndent(const QListWidget& list);
    // What an entry with no picture shows beside those that have one.
    static QIcon blankIcon();

  private:
    QWidget* buildListBox();
    QWidget* buildEditBox();
    void showIcon(int row);
    void showIcons();

    QLabel* heading_ = nullptr;
    std::map<int, QIcon> icons_;
};

}  // namespace halvex
