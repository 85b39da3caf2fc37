#pragma once

#include <array>

#include "protocol/frame.h"
#include "protocol/vocabulary_motion.h"
#include "session/camera_settings.h"
#include "session/drive_settings.h"
#include "session/unit_identity.h"
#include "session/video_settings.h"

namespace halvex {

// Zoom 1, focus 1, zoom 2, focus 2, as the position report gives them.
using LensPositions = std::array<Byte, 4>;

// What the unit last said about itself, as the position report, the
// soft-limit reply and the settings replies leave it. Read by presets, tours,
// alignment, the step buttons and the pages that show the settings.
struct UnitStatus {
    float CurrentPan = 0.0f;
    float CurrentTilt = 0.0f;
    float TargetPan = 0.0f;
    float TargetTilt = 0.0f;
    LensPositions Lens{};

    // [0] byte 7, [1] byte 8, [2] byte 9, [3] byte 7 AND 3 (the controller type).
    std::array<Byte, 4> StatusBytes{};
    Byte UnitVariant() const { return StatusBytes[3]; }
    // Either axis is driven, by a move, a tour or a jog.
    bool Moving() const { return (StatusBytes[2] & vocab::maskOf(vocab::report::kMoving)) != 0; }

    bool LimitFault = false;
    bool PanContinuous = false;

    float PanAngleOffset = 0.0f;
    float TiltAngleOffset = 0.0f;

    float PanMaxLimit = 0.0f;
    float PanMinLimit = 0.0f;
    float TiltMaxLimit = 0.0f;
    float TiltMinLimit = 0.0f;

    // The cameras' lines, answer time-outs and lenses, as last read or set.
    CameraLinePair CameraLineSettings{};
    CameraTimeouts CameraAnswerTimeouts{};
    LensSetupPair LensSetups{};

    // The video, the aux outputs and the on-screen displays, as last read or
    // set.
    VideoSettings Video{};
    LegacyVideoSettings LegacyVideoSetup{};
    AuxOutputStates AuxOutputsOn{};
    OsdSetting AngleOsd{};
    OsdSetting NameOsd{};

    // The drive and mount settings, as last read or set.
    DriveRates Rates{};
    // [0] the first pair, [1] the second.
    std::array<AxisPair, 2> TopSpeeds{};
    StepRange PanSteps{};
    StepRange TiltSteps{};
    AxisPair Maxima{};
    MountSettings Mount{};
    AxisPair EncoderCounts{};

    // The unit's own address, communication time-out (seconds), heater mode
    // and firmware, as last read or set.
    int UnitAddress = 0;
    int CommTimeoutSeconds = 0;
    int HeaterMode = 0;
    FirmwareRevision Firmware{};

    // Set after an alignment: the next position report also becomes the
    // operator's desired position.
    bool SyncDesiredPending = false;
};

}  // namespace halvex
