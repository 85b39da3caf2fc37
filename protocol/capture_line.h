#pragma once

#include <QString>

#include "protocol/frame.h"

namespace halvex {

// The hexadecimal image of a frame that the data watch shows, built the same
// way in both directions: every byte that crossed the line as two upper-case
// digits, one blank between bytes and none after the last; an escape shows as
// 1B followed by the value it stands for, the address's escape as well.
class CaptureLine {
  public:
    void add(Byte value);
    void addEscape() { add(kEsc); }
    const QString& text() const { return text_; }

  private:
    QString text_;
};

// "9A": one byte as the capture shows it.
QString hexText(Byte value);

}  // namespace halvex
