// Video, on-screen display and auxiliary outputs: the legacy video
// selection, the video mode and cameras' power, the aux outputs, the angle
// and name displays and the site name.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

namespace video = vocab::video_configuration;
namespace legacy = vocab::legacy_video;

Response videoMode(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.videoMode = static_cast<Byte>(command.field(video::kSettingBits));
        // The short form of the command sets the mode alone.
        if (command.payloadSize() + 1 >= vocab::VideoConfiguration::kLength) {
            s.videoPower =
                static_cast<Byte>(command.field(video::kPower)) &
                (vocab::maskOf(video::kCamera1Power) | vocab::maskOf(video::kCamera2Power));
        }
        if (command.isSet(video::kStore)) {
            state.powerUp.videoMode = s.videoMode;
            state.powerUp.videoPower = s.videoPower;
        }
    }
    return Response::answer(Reply::of<vocab::VideoConfiguration>()
                                .set(video::kModeByte, s.videoMode)
                                .set(video::kPower, s.videoPower));
}

Response legacyVideo(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.legacyVideo = static_cast<Byte>(command.field(legacy::kSelection));
        s.videoPower =
            static_cast<Byte>(command.field(legacy::kSettingsByte)) &
            (vocab::maskOf(legacy::kCamera1Power) | vocab::maskOf(legacy::kCamera2Power));
    }
    return Response::answer(Reply::of<vocab::LegacyVideo>().set(
        legacy::kSettingsByte, static_cast<std::uint32_t>(s.legacyVideo | s.videoPower)));
}

Response auxOutputs(UnitState& state, const Command& command) {
    namespace v = vocab::aux_outputs;
    if (!command.isRead()) {
        state.settings.aux = static_cast<Byte>(command.field(v::kOutputBits));
    }
    return Response::answer(Reply::of<vocab::AuxOutputs>().set(v::kOutputs, state.settings.aux));
}

// The angle and name displays share one setting layout.
template <class M>
Response displaySetting(const Command& command, Byte& live, Byte& powerUp) {
    using Display = vocab::DisplaySetting<M>;
    if (!command.isRead()) {
        live = static_cast<Byte>(command.field(Display::kSettingBits));
        if (command.isSet(Display::kStore)) {
            powerUp = live;
        }
    }
    return Response::answer(Reply::of<M>().set(Display::kSetting, live));
}

Response angleDisplay(UnitState& state, const Command& command) {
    return displaySetting<vocab::AngleDisplay>(command, state.settings.angleDisplay,
                                               state.powerUp.angleDisplay);
}

Response nameDisplay(UnitState& state, const Command& command) {
    return displaySetting<vocab::NameDisplay>(command, state.settings.nameDisplay,
                                              state.powerUp.nameDisplay);
}

Response siteName(UnitState& state, const Command& command) {
    namespace v = vocab::site_name;
    for (std::size_t i = 0; i < state.settings.siteName.size(); ++i) {
        const Byte value = command.byte(v::kText + i);
        state.settings.siteName[i] = value >= 32 && value <= 127 ? value : ' ';
    }
    return Response::answer(Reply::of<vocab::SiteNameStored>());
}

}  // namespace

void addVideoCommands(CommandTable& table) {
    table.add<vocab::LegacyVideo>(legacyVideo);
    table.add<vocab::VideoConfiguration>(videoMode);
    table.add<vocab::AuxOutputs>(auxOutputs);
    table.add<vocab::AngleDisplay>(angleDisplay);
    table.add<vocab::NameDisplay>(nameDisplay);
    table.add<vocab::SiteName>(siteName);
}

}  // namespace halvex::sim
