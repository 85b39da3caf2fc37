#pragma once

#include <QString>
#include <optional>
#include <utility>
#include <vector>

struct _SDL_GameController;
struct _SDL_Joystick;

namespace halvex {

// A game controller or joystick that SDL sees.
struct InputDevice {
    QString name;
    QString guid;                 // SDL's GUID: the same for the same model on any socket
    bool gameController = false;  // SDL has a controller mapping for it
    int instance = -1;            // SDL's id while it stays plugged in
};

// SDL's game controller and joystick subsystems, read on the calling thread
// only when pump() is called: SDL starts no thread for them and installs no
// signal handlers. One device is open at a time; a device with a game
// controller mapping is opened through the game controller API (axes and
// buttons by their standard names), any other as a plain joystick.
class SdlDevices {
  public:
    SdlDevices();
    ~SdlDevices();
    SdlDevices(const SdlDevices&) = delete;
    SdlDevices& operator=(const SdlDevices&) = delete;

    // False when SDL could not start its joystick support; nothing is read then.
    bool available() const { return available_; }

    struct Changes {
        bool listChanged = false;  // a device was plugged in or out
        bool lostOpened = false;   // the open device went away
    };
    // Reads what SDL has for us since the last call.
    Changes pump();

    std::vector<InputDevice> present() const;
    // Opens the device with this GUID, or the first present when guid is
    // empty; closes the one open before.
    bool open(const QString& guid);
    void close();
    std::optional<InputDevice> opened() const { return opened_; }

    int axis(int index) const;
    // The buttons of the open device pressed since the last call, in order:
    // a press shorter than the time between two reads is not lost.
    std::vector<int> takePresses() { return std::exchange(presses_, {}); }

  private:
    bool available_ = false;
    _SDL_GameController* controller_ = nullptr;
    _SDL_Joystick* joystick_ = nullptr;
    std::optional<InputDevice> opened_;
    std::vector<int> presses_;
};

}  // namespace halvex
