#pragma once

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QWidget>

#include "input/controller_mapping.h"
#include "session/jog_sources.h"

class QKeyEvent;

namespace halvex {

class JogGate;

// Jogging from the keyboard while the Pan/Tilt page is shown and no text
// field has the focus: the arrow keys pan and tilt while held (Shift faster,
// Ctrl slower), Page Up and Page Down zoom camera 1, Home moves home, Esc
// stops. Keys are read from every event bound for the main window, before
// the widget with the focus sees them.
class KeyboardJog : public QObject {
    Q_OBJECT
  public:
    // Pan and tilt speeds for the arrows, and the zoom speed.
    struct Speeds {
        static constexpr int kFastestJog = 255;
        static constexpr int kFastestZoom = 127;
        int normal = 96;
        int fast = kFastestJog;
        int slow = 24;
        int zoom = 64;
    };

    KeyboardJog(JogSources& sources, JogGate& gate, QWidget& window, QObject* parent = nullptr);

    // Speeds out of range (a hand-edited settings file) are brought to the
    // nearest the unit takes; a key always moves, so none is below 1.
    void setSpeeds(const Speeds& speeds);
    const Speeds& speeds() const { return speeds_; }

    // The keys, as the input settings and the README list them.
    static QStringList keyList();

  signals:
    void actionTriggered(halvex::ButtonAction action, int preset);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    bool handleKey(QKeyEvent* key, bool pressed);
    bool forOurWindow(QObject* watched) const;
    void applyHeld(Qt::KeyboardModifiers modifiers);

    JogSources& sources_;
    JogGate& gate_;
    QPointer<QWidget> window_;
    Speeds speeds_;
    QSet<int> held_;
};

}  // namespace halvex
