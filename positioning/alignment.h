#pragma once

#include <QLabel>
#include <QObject>
#include <QWidget>
#include <functional>

#include <optional>

#include "console/console_context.h"
#include "console/page_lock.h"

namespace halvex {

class OffsetsPage;

// The "Offsets" page: reads and changes the angle offsets through the
// session, locking the page tabs while it reads again what the console holds
// in angle terms (the four soft limits and the preset table). Also shows the
// resolver centre, encoder alignment and homing index readings.
class Alignment : public QObject {
    Q_OBJECT
  public:
    // What an offset change needs from the rest of the window.
    struct Surroundings {
        QLabel* panCaption = nullptr;   // "Pan" above the position displays
        QLabel* tiltCaption = nullptr;  // "Tilt"
        QWidget* pageTabs = nullptr;    // locked during a change
    };

    Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
              QObject* parent = nullptr);

    QCoro::Task<> SetCorBut_Click();
    QCoro::Task<> AlignCorBut_Click();
    QCoro::Task<> AlignCenBut_Click();
    QCoro::Task<> ZeroOffBut_Click();
    QCoro::Task<> GetAlignBut_Click();
    QCoro::Task<> GetCenBut_Click();
    QCoro::Task<> SetCenBut_Click();

  private:
    void connectControls();

    ConsoleContext& context_;
    OffsetsPage& page_;
    Surroundings surroundings_;
    // Held while the session reads the tables again.
    std::optional<PageLock> tabsLocked_;
};

}  // namespace halvex
