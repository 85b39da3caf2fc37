#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

#include "input/controller_mapping.h"
#include "input/sdl_devices.h"
#include "session/jog_sources.h"

namespace halvex {

class JogGate;

// Jogging from a game controller or joystick. The device is read on the
// user-interface thread: on a timer (for its buttons and for devices plugged
// in and out) and right before every jog message (for its sticks), so a stick
// reaches the wire in the next jog message. Unplugging the device in use is a
// dead-man stop; a device plugged in is taken when none is open.
class ControllerJog : public QObject {
    Q_OBJECT
  public:
    // How often the buttons and the device list are read while a device is
    // open, and while none is.
    static constexpr int kReadMs = 50;
    static constexpr int kLookMs = 500;

    ControllerJog(JogSources& sources, JogGate& gate, QObject* parent = nullptr);

    // The device to use, by SDL's GUID; empty for the first one present.
    void setPreferredDevice(const QString& guid);
    QString preferredDevice() const { return preferred_; }

    std::vector<InputDevice> devices() const { return sdl_.present(); }
    std::optional<InputDevice> deviceInUse() const { return sdl_.opened(); }
    const ControllerMapping& mapping() const { return mapping_; }
    // Where a device's own mapping comes from when it is taken; the standard
    // one for its kind when this gives nothing.
    using MappingSource = std::function<std::optional<ControllerMapping>(const InputDevice&)>;
    void setMappingSource(MappingSource source) { mappingSource_ = std::move(source); }
    // The mapping a device of this kind has before anybody sets it up.
    static ControllerMapping defaultMapping(bool gameController);
    // The raw value of an axis of the device in use, for a preview.
    int axis(int index) const { return sdl_.axis(index); }

    // Reads the device now: plugging, sticks and button presses. A press is
    // told through actionTriggered, which must reach its command queued: a
    // read can run while the link serves a tick.
    void read();

  signals:
    void actionTriggered(halvex::ButtonAction action, int preset);
    // A device was plugged in or out, or another one is in use.
    void devicesChanged();

  private:
    void openPreferred();

    JogSources& sources_;
    JogGate& gate_;
    SdlDevices sdl_;
    QTimer timer_;
    QString preferred_;
    ControllerMapping mapping_;
    MappingSource mappingSource_;
};

}  // namespace halvex
