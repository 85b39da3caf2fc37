#include "sim/sim_command_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace halvex::sim {

namespace {

std::optional<long> wholeNumber(const std::string& text, long low, long high) {
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < low || value > high) {
        return std::nullopt;
    }
    return value;
}

std::optional<double> rate(const std::string& text) {
    std::size_t used = 0;
    try {
        const double value = std::stod(text, &used);
        if (used == text.size() && value >= 0.0 && value <= 1.0) {
            return value;
        }
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

std::optional<Fault> faultNamed(const std::string& name) {
    if (name == "pan-timeout") {
        return Fault::PanTimeout;
    }
    if (name == "tilt-timeout") {
        return Fault::TiltTimeout;
    }
    if (name == "pan-dir") {
        return Fault::PanDirection;
    }
    if (name == "tilt-dir") {
        return Fault::TiltDirection;
    }
    return std::nullopt;
}

// "1280x720": even sides (the encoder works on 2 x 2 blocks of colour) that
// a picture can have.
std::optional<std::pair<int, int>> pictureSize(const std::string& text) {
    const auto by = text.find('x');
    if (by == std::string::npos) {
        return std::nullopt;
    }
    const auto width = wholeNumber(text.substr(0, by), 64, 3840);
    const auto height = wholeNumber(text.substr(by + 1), 64, 2160);
    if (!width || !height || *width % 2 != 0 || *height % 2 != 0) {
        return std::nullopt;
    }
    return std::pair{static_cast<int>(*width), static_cast<int>(*height)};
}

bool takesValue(const std::string& option) {
    static const std::array<std::string_view, 16> valued = {
        "--id",    "--variant",       "--state",        "--link",      "--tcp",  "--pace",
        "--noise", "--corrupt",       "--silent-after", "--fault",     "--drop", "--replay",
        "--video", "--video-address", "--video-size",   "--video-rate"};
    return std::find(valued.begin(), valued.end(), option) != valued.end();
}

}  // namespace

std::variant<SimCommandLine, std::string> parseSimCommandLine(
    const std::vector<std::string>& args) {
    SimCommandLine line;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (option == "-h" || option == "--help") {
            line.help = true;
            continue;
        }
        if (option == "-v" || option == "--verbose") {
            line.verbose = true;
            continue;
        }
        if (option == "--version") {
            line.version = true;
            continue;
        }
        if (option == "--control") {
            line.control = true;
            continue;
        }
        if (!takesValue(option)) {
            return option.rfind("-", 0) == 0 ? "unknown option " + option
                                             : "unexpected argument " + option;
        }
        if (i + 1 >= args.size()) {
            return option + " needs a value";
        }
        const std::string& value = args[++i];
        const auto bad = [&option, &value] { return "bad value for " + option + ": " + value; };
        if (option == "--id") {
            const auto id = wholeNumber(value, 0, 99);
            if (!id) {
                return bad();
            }
            line.options.unit.id = static_cast<Byte>(*id);
        } else if (option == "--variant") {
            const auto variant = wholeNumber(value, 0, 3);
            if (!variant) {
                return bad();
            }
            line.options.unit.variant = static_cast<Byte>(*variant);
        } else if (option == "--state") {
            line.options.unit.statePath = value;
        } else if (option == "--link") {
            line.link = value;
        } else if (option == "--tcp") {
            const auto port = wholeNumber(value, 0, 65535);
            if (!port) {
                return bad();
            }
            line.tcpPort = static_cast<int>(*port);
        } else if (option == "--video") {
            const auto port = wholeNumber(value, 0, 65535);
            if (!port) {
                return bad();
            }
            line.video.port = static_cast<int>(*port);
        } else if (option == "--video-address") {
            if (value.empty()) {
                return bad();
            }
            line.video.address = value;
        } else if (option == "--video-size") {
            const auto size = pictureSize(value);
            if (!size) {
                return bad();
            }
            std::tie(line.video.width, line.video.height) = *size;
        } else if (option == "--video-rate") {
            const auto rate = wholeNumber(value, 1, 60);
            if (!rate) {
                return bad();
            }
            line.video.rate = static_cast<int>(*rate);
        } else if (option == "--replay") {
            line.replay = value;
        } else if (option == "--pace") {
            const auto baud = wholeNumber(value, 50, 4000000);
            if (!baud) {
                return bad();
            }
            line.options.paceBaud = static_cast<int>(*baud);
        } else if (option == "--noise" || option == "--corrupt" || option == "--drop") {
            const auto chance = rate(value);
            if (!chance) {
                return bad();
            }
            double& target = option == "--noise"     ? line.options.line.noise
                             : option == "--corrupt" ? line.options.line.corrupt
                                                     : line.options.line.drop;
            target = *chance;
        } else if (option == "--silent-after") {
            const auto count = wholeNumber(value, 0, 1L << 40);
            if (!count) {
                return bad();
            }
            line.options.line.silentAfter = static_cast<std::uint64_t>(*count);
        } else if (option == "--fault") {
            const auto fault = faultNamed(value);
            if (!fault) {
                return bad();
            }
            line.options.faults.push_back(*fault);
        }
    }
    if (line.tcpPort && !line.link.empty()) {
        return std::string(
            "--link names a pseudo-terminal and --tcp listens on the network: "
            "choose one");
    }
    const bool videoDetail = line.video.address != VideoCommandLine{}.address ||
                             line.video.width != 0 || line.video.rate != 0;
    if (videoDetail && !line.video.port) {
        return std::string("--video-address, --video-size and --video-rate go with --video PORT");
    }
    return line;
}

std::string simUsage() {
    return "Usage: halvex-sim [options]\n"
           "A virtual pan & tilt unit on a pseudo-terminal (or a TCP port). Prints the\n"
           "device to open, then answers on it until interrupted.\n"
           "\n"
           "  --id N             unit address, 0..99 (default: stored, else 0)\n"
           "  --variant T        controller type in status byte A, 0..3 (default 0;\n"
           "                     1 has no second camera or video hardware)\n"
           "  --state FILE       keep stored settings, presets and tours in FILE\n"
           "  --link PATH        also make PATH a symbolic link to the device\n"
           "  --tcp PORT         listen on TCP PORT on every address instead, raw bytes\n"
           "                     as a device server's raw port, one console at a time\n"
           "                     (a second is closed at once); 0 picks a free port.\n"
           "                     Prints socket://127.0.0.1:PORT\n"
           "  --video PORT       serve the two video outputs over RTSP on PORT (0: a\n"
           "                     free one) as rtsp://127.0.0.1:PORT/out1 and /out2\n"
           "  --video-address A  listen for video on address A (default 127.0.0.1)\n"
           "  --video-size WxH   picture size (default: as the video mode, PAL\n"
           "                     768x576, NTSC 640x480)\n"
           "  --video-rate N     frames a second (default: PAL 25, NTSC 30)\n"
           "  --replay FILE      answer as the unit in a recording (pcapng from the\n"
           "                     console's Line Log) did, code by code, in order\n"
           "  --pace BAUD        send replies byte by byte at this line speed\n"
           "  --noise RATE       chance (0..1) of garbage bytes before a reply\n"
           "  --corrupt RATE     chance (0..1) of a reply with a bad LRC\n"
           "  --drop RATE        chance (0..1) of a reply never sent\n"
           "  --silent-after N   stop answering after N replies\n"
           "  --fault F          axis fault each time the axis is driven, until reset:\n"
           "                     pan-timeout, tilt-timeout, pan-dir or tilt-dir\n"
           "                     (may be given more than once)\n"
           "  --control          read line changes from standard input, one a line:\n"
           "                     clean, noise RATE, corrupt RATE, drop RATE,\n"
           "                     chatter MS (a random reply every MS ms, one in five\n"
           "                     cut short; 0 stops it), pace BAUD (0: whole replies),\n"
           "                     silent SECONDS\n"
           "  -v, --verbose      log every frame in and out, in hex, on stderr\n"
           "  -h, --help         show this text\n"
           "      --version      show the version\n";
}

}  // namespace halvex::sim
