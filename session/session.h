#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "protocol/rerun_guard.h"
#include "protocol/serial_port.h"
#include "protocol/vocabulary_words.h"
#include "session/jog_sources.h"
#include "session/jog_state.h"
#include "session/outcome.h"
#include "session/preset_table.h"
#include "session/reply_history.h"
#include "session/tour_table.h"
#include "session/unit_status.h"

namespace halvex {

class UnitReports;

// Who asks for an operation. The operator's own controls are enabled only
// when they may be used, and send what they show; every other caller (a
// remote client, a click on the video, the range plot) is refused while the
// operator jogs, while the tables are read again and outside the soft limits.
enum class Requester { Operator, Program };

// Pan and tilt in degrees; a held axis keeps its place.
struct PanTiltTarget {
    double pan = 0.0;
    double tilt = 0.0;
    bool holdPan = false;
    bool holdTilt = false;
};

// One unit on one line, as everything that drives it shares it: the form
// state, the link (one frame a tick, the reply watchdog), the receive path,
// what the unit reported about itself, the jog demand and the operations
// that drive it, on a port the session owns. No widgets: the console's
// window, the headless console and the command line each hold one.
class Session : public QObject {
    Q_OBJECT
  public:
    // Takes `port` unless it has a parent already; with none, the local
    // device or network address that the port settings name.
    explicit Session(SerialPort* port = nullptr, int tickMs = Link::kTickMs,
                     QObject* parent = nullptr);
    ~Session() override;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Opens the port and starts the tick, for a caller that does without the
    // connection sequence; false when the port will not open.
    bool open(const QString& device, qint32 baudRate);

    FormState& state() { return state_; }
    Link& link() { return link_; }
    Receiver& receiver() { return receiver_; }
    SerialPort& port() { return *port_; }
    // What the unit last reported about itself.
    UnitStatus& status() { return status_; }
    const UnitStatus& status() const { return status_; }
    // The jog message's demand, and who among the operator's sources steers.
    JogState& jog() { return jog_; }
    JogSources& jogSources() { return jogSources_; }
    PresetTable& presets() { return presets_; }
    const TourTable& tours() const { return tours_; }
    // The last replies, for a caller that asks a question of its own and
    // looks for the answer.
    const ReplyHistory& replies() const { return replies_; }

    // Online: the connection sequence has run to its end on an open line.
    bool online() const { return state_.Online && link_.portOpen(); }
    // While tables are read again from the unit, operations that depend on
    // them are refused to programs (the operator's pages are locked).
    bool pagesLocked() const { return pagesLocked_ > 0; }
    class PagesLock {
      public:
        explicit PagesLock(Session& session) : session_(session) { ++session_.pagesLocked_; }
        ~PagesLock() { --session_.pagesLocked_; }
        PagesLock(const PagesLock&) = delete;
        PagesLock& operator=(const PagesLock&) = delete;

      private:
        Session& session_;
    };

    // The jog message, built from the jog state and the modifiers below on
    // every tick that carries no other frame. `beforeJogMessage` runs first,
    // for whatever the window draws from it.
    void sendJogMessage();
    void setBeforeJogMessage(std::function<void()> hook) { beforeJogMessage_ = std::move(hook); }

    // The jog message's modifiers: the soft-limit override and each axis's
    // low speed. A change goes out with the next jog message and is
    // announced by jogModifiersChanged; nothing is sent for it.
    void setSoftLimitOverride(bool on);
    void setLowSpeed(bool pan, bool tilt);
    bool softLimitOverride() const { return softLimitOverride_; }
    bool panLowSpeed() const { return panLowSpeed_; }
    bool tiltLowSpeed() const { return tiltLowSpeed_; }

    // Moves. Each completes when the unit has answered the move (done, with
    // its position report), or has not (no reply), or at once when refused.
    QCoro::Task<Outcome> moveTo(PanTiltTarget target, Requester requester = Requester::Program);
    QCoro::Task<Outcome> moveToWithLenses(PanTiltTarget target, std::array<int, 4> lenses,
                                          Requester requester = Requester::Program);
    QCoro::Task<Outcome> moveBy(double pan, double tilt, Requester requester = Requester::Program);
    QCoro::Task<Outcome> moveHome(Requester requester = Requester::Program);
    QCoro::Task<Outcome> moveToCentre(Requester requester = Requester::Program);
    // Presets, numbered from 0. A number the unit's byte cannot carry is a
    // range fault; what the unit does with one it does not have is its own
    // answer. Saving at angles checks them against the soft limits for a
    // program.
    QCoro::Task<Outcome> goToPreset(int preset, Requester requester = Requester::Program);
    QCoro::Task<Outcome> savePreset(int preset, PanTiltTarget at,
                                    Requester requester = Requester::Program);
    QCoro::Task<Outcome> saveCurrentPosition(int preset, Requester requester = Requester::Program);
    QCoro::Task<Outcome> addLensPositions(int preset, Requester requester = Requester::Program);
    // Reads presets 0..31 into the preset table, one after another. A reload
    // asked for while one runs makes it start over, and completes at once.
    QCoro::Task<Outcome> reloadPresets(Requester requester = Requester::Program);
    // Clears every preset to 0/0, waits for the unit to finish, then reloads.
    QCoro::Task<Outcome> clearAllPresets(Requester requester = Requester::Program);

    // Cameras, numbered from 0. A string passes through to the camera as it
    // is (at most 127 bytes); the unit answers once it has gone out. The
    // lines and time-outs are answered with what the unit then holds, which
    // the status keeps and the signals below announce.
    QCoro::Task<Outcome> sendToCamera(int camera, std::vector<Byte> data,
                                      Requester requester = Requester::Program);
    QCoro::Task<Outcome> setCameraLines(CameraLinePair lines,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> readCameraLines(Requester requester = Requester::Program);
    // Each time-out 1 to 100 steps.
    QCoro::Task<Outcome> setCameraTimeouts(CameraTimeouts steps,
                                           Requester requester = Requester::Program);
    QCoro::Task<Outcome> readCameraTimeouts(Requester requester = Requester::Program);
    // Both lenses' setup. The unit's read request carries a setup too (all
    // but the first lens's flags), so the caller hands in the one to carry.
    QCoro::Task<Outcome> setLensSetup(LensSetupPair lenses,
                                      Requester requester = Requester::Program);
    QCoro::Task<Outcome> readLensSetup(LensSetupPair carried,
                                       Requester requester = Requester::Program);

    // Tours, numbered from 0. Loading reads the tour's step count, then each
    // step, into the tour table; a load asked for while one runs makes it
    // start over with the newest tour. Steps are numbered from 0; inserting
    // and deleting leave the table to be loaded again.
    QCoro::Task<Outcome> loadTour(int tour, Requester requester = Requester::Program);
    QCoro::Task<Outcome> appendTourStep(int tour, TourStep step,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> insertTourStep(int tour, int position, TourStep step,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> replaceTourStep(int tour, int position, TourStep step,
                                         Requester requester = Requester::Program);
    QCoro::Task<Outcome> deleteTourStep(int tour, int position,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> startTour(int tour, Requester requester = Requester::Program);
    QCoro::Task<Outcome> clearTour(int tour, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readTourStepCount(int tour, Requester requester = Requester::Program);
    // Video. Each setting is answered with what the unit then holds, which
    // the status keeps and the signals below announce; storing one as initial
    // also makes it the unit's setting at power up. A route past the eight is
    // a range fault.
    QCoro::Task<Outcome> setVideo(VideoSettings video, Requester requester = Requester::Program);
    QCoro::Task<Outcome> storeVideoAsInitial(VideoSettings video,
                                             Requester requester = Requester::Program);
    QCoro::Task<Outcome> readVideo(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setAuxOutputs(AuxOutputStates outputs,
                                       Requester requester = Requester::Program);
    // The older units: their video byte, and their video mode, which goes out
    // in the video message (its short form when stored) and is answered as
    // such.
    QCoro::Task<Outcome> setLegacyVideo(LegacyVideoSettings video,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> setLegacyVideoMode(LegacyVideoMode mode,
                                            Requester requester = Requester::Program);
    QCoro::Task<Outcome> storeLegacyVideoModeAsInitial(LegacyVideoMode mode,
                                                       Requester requester = Requester::Program);
    // The on-screen displays, on screen lines 0 to 15 (past them a range
    // fault), and the site name: twelve characters as the operator reads
    // them, each as the low byte of its code or a space where that is not
    // printable. A unit that does not acknowledge the name ends the call with
    // no reply.
    QCoro::Task<Outcome> setAngleDisplay(OsdSetting setting,
                                         Requester requester = Requester::Program);
    QCoro::Task<Outcome> storeAngleDisplayAsInitial(OsdSetting setting,
                                                    Requester requester = Requester::Program);
    QCoro::Task<Outcome> readAngleDisplay(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setNameDisplay(OsdSetting setting,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> storeNameDisplayAsInitial(OsdSetting setting,
                                                   Requester requester = Requester::Program);
    QCoro::Task<Outcome> readNameDisplay(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setSiteName(QString name, Requester requester = Requester::Program);

    // The angle offsets. A change is answered with the offsets; then the
    // soft limits and presets, held in angle terms, are read again with
    // the tables locked (tableReloadStarted/Ended), and the next position
    // report becomes the desired position.
    QCoro::Task<Outcome> setAngleOffsets(double pan, double tilt,
                                         Requester requester = Requester::Program);
    QCoro::Task<Outcome> alignToCoordinates(double pan, double tilt,
                                            Requester requester = Requester::Program);
    QCoro::Task<Outcome> alignToCentre(Requester requester = Requester::Program);
    QCoro::Task<Outcome> zeroOffsets(Requester requester = Requester::Program);
    QCoro::Task<Outcome> readAngleOffsets(Requester requester = Requester::Program);
    // The resolver centre: read it, or make where the platform is the centre.
    QCoro::Task<Outcome> readCentre(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setCentre(Requester requester = Requester::Program);

    // Drive settings. Each value goes out as a byte (a step range as a
    // signed word); one that does not fit is a range fault and nothing is
    // sent. The replies fill the status and the signals below announce them.
    QCoro::Task<Outcome> setDriveRates(DriveRates rates, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readDriveRates(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setTopSpeeds(TopSpeedSet set, AxisPair speeds,
                                      Requester requester = Requester::Program);
    QCoro::Task<Outcome> readTopSpeeds(TopSpeedSet set, Requester requester = Requester::Program);
    QCoro::Task<Outcome> setPanSteps(StepRange range, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readPanSteps(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setTiltSteps(StepRange range, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readTiltSteps(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setMaxima(AxisPair maxima, Requester requester = Requester::Program);
    QCoro::Task<Outcome> setMinima(AxisPair minima, Requester requester = Requester::Program);
    // The tilt axis's safe speed, ramp and step range in one message.
    QCoro::Task<Outcome> setTiltDrive(int safeSpeed, int ramp, StepRange range,
                                      Requester requester = Requester::Program);

    // Mount settings and encoder counts.
    QCoro::Task<Outcome> setMount(MountSettings mount, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readMount(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setEncoderCounts(AxisPair counts,
                                          Requester requester = Requester::Program);
    QCoro::Task<Outcome> readEncoderCounts(Requester requester = Requester::Program);
    // The unit's long procedures. The line is held and the reply watchdog
    // lengthened until the unit answers at the procedure's end; a second
    // procedure meanwhile is refused as UnitBusy, and so is every program's
    // request. After the alignment the watchdog is short again; after the
    // homing cycle it stays long.
    static constexpr int kProcedureWatchdogMs = 20000;
    static constexpr int kAfterAlignmentWatchdogMs = 1000;
    QCoro::Task<Outcome> alignEncoders(Requester requester = Requester::Program);
    QCoro::Task<Outcome> runHomingCycle(Requester requester = Requester::Program);
    bool procedureRunning() const { return procedureRunning_; }

    // The unit's identity. talkTo() makes the console address the unit at
    // `unitId` from the next frame on and take only that unit's replies (an
    // address past the byte is a range fault, thrown). Setting the address
    // by broadcast reaches whatever unit is on the line; reading it always
    // does. Each operation is answered with what the unit then holds, which
    // the status keeps and the signals below announce; a value past its byte
    // is a range fault.
    void talkTo(int unitId);
    QCoro::Task<Outcome> setUnitAddress(int id, bool broadcast,
                                        Requester requester = Requester::Program);
    QCoro::Task<Outcome> readUnitAddress(Requester requester = Requester::Program);
    QCoro::Task<Outcome> setCommTimeout(int seconds, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readCommTimeout(Requester requester = Requester::Program);
    // 0 disabled, 1 sharing power with the motors, 2 full power.
    QCoro::Task<Outcome> setHeaterMode(int mode, Requester requester = Requester::Program);
    QCoro::Task<Outcome> readHeaterMode(Requester requester = Requester::Program);
    QCoro::Task<Outcome> readFirmware(Requester requester = Requester::Program);

    // Stop and Reset ride on the next jog message, which goes out ahead of
    // anything queued later; refused only when no unit is on the line. Stop
    // also puts every jog source at rest.
    Outcome stop();
    Outcome reset();

    // Why the platform may not be moved now, if it may not: offline, or the
    // tables being read again; for a program also while the unit runs a
    // procedure, while the operator jogs, and a target outside the soft
    // limits. The operations check programs'
    // requests themselves; the operator's controls are enabled by it.
    std::optional<Refusal> refusalFor(Requester requester,
                                      const PanTiltTarget* target = nullptr) const;
    // Inside the soft limits (a unit that pans for ever has no pan limits).
    bool withinSoftLimits(double pan, double tilt) const;

  signals:
    // The override or a low speed has changed.
    void jogModifiersChanged(bool softLimitOverride, bool panLowSpeed, bool tiltLowSpeed);
    // The position report, in the order it carries things.
    void lensReported(const halvex::LensPositions& lens);
    void cameraBytesReported(int camera, const std::vector<halvex::Byte>& bytes);
    void continuousPanReported(bool continuous);
    void positionReported(float pan, float tilt);
    void targetReported(float pan, float tilt);
    // After an alignment the first report also becomes the desired position.
    void desiredPositionSynced(float pan, float tilt);
    // One of the four soft limits (0 pan max, 1 pan min, 2 tilt max, 3 tilt min).
    void softLimitReported(int index, float value);
    void cameraLinesReported(const halvex::CameraLinePair& lines);
    void cameraTimeoutsReported(const halvex::CameraTimeouts& steps);
    void lensSetupReported(const halvex::LensSetupPair& lenses);
    // A preset record came: the table holds it.
    void presetReported(int number);
    // The unit has stored where the platform points as this preset
    // (saveCurrentPosition, whoever asked), for whatever keeps what the
    // preset looks at.
    void presetStoredHere(int number);
    // A pass of a reload starts; the table is about to be read afresh.
    void presetsReloadStarted();
    // A reload asked for has completed (or was merged into a running one).
    void presetsReloaded();
    // A load of `tour` starts (again): the table's steps are emptied.
    void tourLoadStarted(int tour);
    void tourStepCountReported(int tour, int count);
    // The table's step at `index` was read, appended or replaced.
    void tourStepReported(int index);
    void tourStarted(int tour);
    // A tour asked to start has no steps.
    void tourFoundEmpty();
    void tourCleared(int tour);
    void videoReported(const halvex::VideoSettings& video);
    void legacyVideoReported(const halvex::LegacyVideoSettings& video);
    void auxOutputsReported(const halvex::AuxOutputStates& outputs);
    void angleDisplayReported(const halvex::OsdSetting& setting);
    void nameDisplayReported(const halvex::OsdSetting& setting);
    void angleOffsetsReported(float pan, float tilt);
    // Unscaled readings, as the unit gives them.
    void centreReported(int pan, int tilt);
    void encoderAlignmentReported(int pan, int tilt);
    void homingReported(bool panIndexFound, int pan, bool tiltIndexFound, int tilt);
    // The tables that depend on the offsets are being read again.
    void tableReloadStarted();
    void tableReloadEnded();
    void driveRatesReported(const halvex::DriveRates& rates);
    // The ramps alone, as the ramp reply gives them.
    void rampsReported(const halvex::AxisPair& ramps);
    void topSpeedsReported(halvex::TopSpeedSet set, const halvex::AxisPair& speeds);
    void panStepsReported(const halvex::StepRange& range);
    void tiltStepsReported(const halvex::StepRange& range);
    void maximaReported(const halvex::AxisPair& maxima);
    void mountReported(const halvex::MountSettings& mount);
    void encodersReported(const halvex::AxisPair& counts);
    // The homing cycle has started: the index points are being looked for.
    void homingStarted();
    // The unit's own address, communication time-out, heater mode and
    // firmware, as it reports them.
    void unitAddressReported(int address);
    // The console now talks to the unit at this address (talkTo()).
    void talkingTo(int unitId);
    void commTimeoutReported(int seconds);
    // The mode as its field holds it: 0 to 3.
    void heaterModeReported(int mode);
    void firmwareReported(const halvex::FirmwareRevision& revision);
    // Stop was asked for: whatever shows motion (a tour's display) ends.
    void stopRequested();

  private:
    // refusalFor for a program's request; nothing for the operator's, whose
    // click sends what the page shows, online or not, as it always has.
    std::optional<Refusal> programRefusal(Requester requester,
                                          const PanTiltTarget* target = nullptr) const;
    // Keep the cameras' and lenses' settings replies in the status.
    void watchCameraReports();
    void watchLensReports();
    void watchTourReports();
    void watchPresetReports();
    void watchOffsetReports();
    void watchDriveReports();
    void watchMountReports();
    // Sends a procedure's command and waits for the unit's answer at its end;
    // `starting` runs once the procedure is under way.
    QCoro::Task<Outcome> runProcedure(std::vector<Byte> command, Requester requester,
                                      std::function<void()> starting = {});
    QCoro::Task<Outcome> changeOffsets(Requester requester,
                                       std::function<std::vector<Byte>()> build);
    QCoro::Task<> reloadPresetsOnce();
    void takeTourStep();
    QCoro::Task<> loadSelectedTour();
    // Keep the video and on-screen display replies in the status.
    void watchVideoReports();
    void watchDisplayReports();
    // Keep the address, time-out, heater and firmware replies in the status.
    void watchIdentityReports();
    // Refuses a program's request as programRefusal() says, builds the
    // message (a range fault sends nothing), sends it and waits for its
    // answer: the operations that are one message each.
    QCoro::Task<Outcome> exchange(Requester requester, std::function<std::vector<Byte>()> build);
    // Waits for a queued frame's answer.
    QCoro::Task<Outcome> awaitAnswer(QCoro::Task<FrameTicket> sending);
    // Builds message M in TxBuffer with `fill`, sends it and waits for its
    // answer. A range fault while filling sends nothing.
    template <class M, class Fill>
    QCoro::Task<Outcome> sendMove(Fill fill) {
        QCoro::Task<FrameTicket> sending;
        try {
            const SendInProgressScope holding(state_);
            vocab::begin<M>(state_.TxBuffer);
            fill(state_.TxBuffer);
            sending = link_.SendFrame(M::kLength);
        } catch (const RangeFault& fault) {
            co_return Outcome::rangeFault(fault);
        }
        co_return co_await awaitAnswer(std::move(sending));
    }

    FormState state_;
    Link link_;
    Receiver receiver_;
    ReplyHistory replies_;
    SerialPort* port_;
    UnitStatus status_;
    JogState jog_;
    JogSources jogSources_{jog_};
    PresetTable presets_;
    RerunGuard presetReloading_;
    bool presetsAnswered_ = false;
    TourTable tours_;
    RerunGuard tourLoading_;
    bool tourLoadAnswered_ = false;
    std::unique_ptr<UnitReports> reports_;
    std::function<void()> beforeJogMessage_;
    bool softLimitOverride_ = false;
    bool panLowSpeed_ = false;
    bool tiltLowSpeed_ = false;
    std::vector<Byte> lastReply_;
    int pagesLocked_ = 0;
    bool procedureRunning_ = false;
};

}  // namespace halvex
