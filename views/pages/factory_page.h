#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QWidget>
#include <array>

namespace halvex {

// The "Factory" page: motor and resolver directions, mounting, the encoder
// values, the initial encoder alignment and the homing cycle. Until the
// access code is entered the "Enter Password" frame covers all of it.
class FactoryPage : public QWidget {
    Q_OBJECT
  public:
    explicit FactoryPage(QWidget* parent = nullptr);

    // Covers FactoryControls until it is hidden.
    QGroupBox* PassFrame = nullptr;
    QLineEdit* PassText = nullptr;
    QPushButton* PassEntBut = nullptr;
    QWidget* FactoryControls = nullptr;

    std::array<QCheckBox*, 4> RevCheck{};
    QCheckBox* ConCheck = nullptr;
    QCheckBox* InvCheck = nullptr;
    QPushButton* GetRevBut = nullptr;
    QPushButton* SetRevBut = nullptr;

    QScrollBar* PEncScroll = nullptr;
    QScrollBar* TEncScroll = nullptr;
    QLabel* Label34 = nullptr;  // PEnc
    QLabel* Label37 = nullptr;  // TEnc
    QPushButton* GetEncBut = nullptr;
    QPushButton* SetEncBut = nullptr;
    QPushButton* InitEncBut = nullptr;
    QPushButton* EncHomeBut = nullptr;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QGroupBox* buildDirections(QWidget* parent);
    QGroupBox* buildEncoders(QWidget* parent);
    void buildPassFrame();
};

}  // namespace halvex
