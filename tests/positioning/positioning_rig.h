#pragma once

// A console with only the positioning features installed, talking over the
// in-process port to a small scripted unit that keeps presets, tours,
// offsets and soft limits.

#include <QAbstractButton>
#include <QLabel>
#include <QListWidget>
#include <QTabWidget>
#include <QTest>
#include <array>
#include <map>

#include "console/console_context.h"
#include "console/messages.h"
#include "console/position_encoding.h"
#include "console/preset_table.h"
#include "tests/support/scripted_unit.h"
#include "tests/support/test_port.h"
#include "views/widgets/led_display.h"
#include "window/positioning_pages.h"

namespace halvex::testing {

using Message_ = std::vector<Byte>;

// The unit's side: what it stores and how it answers.
struct PositioningUnit {
    std::array<PresetRecord, kUnitPresets> presets{};
    std::array<std::vector<std::pair<Byte, Byte>>, 3> tours{};
    std::array<std::int32_t, 4> limits{18000, -18000, 9000, -9000};
    std::int32_t panOffset = 0;
    std::int32_t tiltOffset = 0;
    Byte statusA = 0;  // controller type and limit bits
    Byte statusB = 0;
    Byte statusC = 0;
    // Codes the unit leaves unanswered.
    std::vector<Byte> silentCodes;
    // Called for every frame before it is answered (to look at the console).
    std::function<void(const Message_&)> onFrame;

    std::optional<Message_> answer(const Message_& m);

  private:
    Message_ presetReply(Byte code, Byte number) const;
    Message_ report(Byte code) const;
};

// Form state, link, receive path, shared context and the installed pages.
class PositioningRig {
  public:
    static constexpr int kTestTickMs = 10;

    PositioningRig();
    ~PositioningRig();

    // Frames the console sent, code and payload without the LRC, jog
    // messages left out.
    std::vector<Message_> sent() const;
    void clearSent() { scripted.clear(); }
    // A reply from the unit, as if it had come down the line.
    void inject(const Message_& message);
    // Lets events run until no send and no reply is outstanding for a while.
    void settle(int ms = 60);

    template <typename T>
    T* find(const QString& name) const {
        return window.findChild<T*>(name);
    }
    QListWidget* list(const char* name) const {
        return find<QListWidget>(QString::fromLatin1(name));
    }
    void click(const char* name);
    void doubleClickRow(const char* listName, int row);
    void selectRow(const char* listName, int row);

    FormState state;
    UnitStatus status;
    PositioningUnit model;
    ScriptedUnit scripted;
    TestPort port{&scripted};
    Link link{state};
    Receiver receiver{state, link};
    PresetTable presets;
    ConsoleEvents events;
    ReadHandlers readHandlers;
    QWidget window;
    std::vector<Message> messages;
    Messages messageBoxes{&window, [this](QWidget*, const Message& message) {
                              messages.push_back(message);
                              return true;
                          }};
    QTabWidget* SSTab1 = nullptr;
    QLabel* Label2_0 = nullptr;
    QLabel* Label2_1 = nullptr;
    LedDisplay* PanDesLED = nullptr;
    LedDisplay* TiltDesLED = nullptr;
    bool videoBlank = false;
    bool jogging = false;  // send a jog message on free ticks
    ConsoleContext context{state,  status,       presets,      link,   receiver,
                           events, readHandlers, messageBoxes, &window};
    QStringList faults;
    QObject owner;
    PositioningPages pages;

  private:
    void decodeReport();
    void sendJog();
};

// Three bytes of a position, lowest first.
Message_ positionBytes(std::int32_t hundredths);

}  // namespace halvex::testing

// Readable QString values in test failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
