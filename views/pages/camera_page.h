#pragma once

#include <QLabel>
#include <QRadioButton>
#include <QWidget>
#include <array>

namespace halvex {

// The "Camera" page. For now it shows what each camera sent back with the
// last position report, as text or as hexadecimal.
class CameraPage : public QWidget {
    Q_OBJECT
  public:
    explicit CameraPage(QWidget* parent = nullptr);

    std::array<QLabel*, 2> RXLabel{};
    std::array<QRadioButton*, 2> HexOp1{};
    std::array<QRadioButton*, 2> TextOp1{};
};

}  // namespace halvex
