#pragma once

#include <QObject>
#include <QStringList>
#include <array>
#include <memory>

#include "remote/bridge_settings.h"

namespace halvex {

class Session;
class OnvifServer;
class ViscaBridge;
class PelcoDBridge;

// The standard PTZ bridges of one console, started and stopped as their
// settings say, and what each is doing now for the operator.
class RemoteBridges : public QObject {
    Q_OBJECT
  public:
    enum class Kind { Onvif, Visca, PelcoD };
    static constexpr int kKinds = 3;

    struct State {
        bool running = false;
        QString where;  // "127.0.0.1:52381", "/dev/ttyUSB1 at 2400 Bd"
        int clients = 0;
        QString lastCommand;  // the latest command, with its client
    };

    explicit RemoteBridges(Session& session, QObject* parent = nullptr);
    ~RemoteBridges() override;

    // Starts the bridges the settings ask for (again where their settings
    // changed) and stops the others. Returns a line for each bridge that
    // could not start, and one for each that did.
    QStringList apply(const BridgeSettings& settings, QStringList* started = nullptr);
    void closeAll();

    const BridgeSettings& settings() const { return settings_; }
    State state(Kind kind) const { return states_[static_cast<std::size_t>(kind)]; }
    static QString nameOf(Kind kind);

    OnvifServer& onvif() { return *onvif_; }
    ViscaBridge& visca() { return *visca_; }
    PelcoDBridge& pelcoD() { return *pelcoD_; }

  signals:
    void stateChanged();

  private:
    State& stateOf(Kind kind) { return states_[static_cast<std::size_t>(kind)]; }
    template <typename Bridge>
    void track(Kind kind, Bridge* bridge);
    QString startOnvif(const BridgeSettings& settings);
    QString startVisca(const BridgeSettings& settings);
    QString startPelcoD(const BridgeSettings& settings);

    std::unique_ptr<OnvifServer> onvif_;
    std::unique_ptr<ViscaBridge> visca_;
    std::unique_ptr<PelcoDBridge> pelcoD_;
    BridgeSettings settings_;
    std::array<State, kKinds> states_{};
};

// The bridges' settings as the user's settings keep them, under "Remote".
BridgeSettings loadBridgeSettings();
void saveBridgeSettings(const BridgeSettings& settings);

}  // namespace halvex
