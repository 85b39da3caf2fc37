// The session's on-screen display: the angle display, the site name's
// display and the site name itself.
#include <QTextBoundaryFinder>
#include <algorithm>

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
static_assert(vocab::inPlace(vocab::angle_display::kLine, kOsdLines - 1) ==
                  vocab::angle_display::kLine.mask,
              "the lines are what the line field holds");

// The angle and name displays share their layout.
template <class M>
std::vector<Byte> displayMessage(const OsdSetting& setting, bool store) {
    using D = vocab::DisplaySetting<M>;
    if (setting.line < 0 || setting.line >= kOsdLines) {
        throw RangeFault(RangeFault::Overflow, "display line");
    }
    std::vector<Byte> message = vocab::blank<M>();
    auto byte =
        static_cast<Byte>(vocab::inPlace(D::kLine, static_cast<std::uint32_t>(setting.line)));
    byte = vocab::withBit(byte, D::kOn, setting.on);
    byte = vocab::withBit(byte, D::kSigned, setting.signedAngles);
    byte = vocab::withBit(byte, D::kStore, store);
    vocab::put(message, D::kSetting, byte);
    return message;
}

template <class M>
OsdSetting displayOf(const ByteTable& rx) {
    using D = vocab::DisplaySetting<M>;
    const auto byte = static_cast<Byte>(vocab::get(rx, D::kSetting));
    return {vocab::isSet(byte, D::kOn), vocab::isSet(byte, D::kSigned),
            static_cast<int>(vocab::get(rx, D::kLine))};
}

Byte siteNameByte(const QString& character) {
    // The low byte of a character's code, when it is a printable one; a
    // character made of several codes has no one code to send.
    const QList<uint> codes = character.toUcs4();
    const uint value = codes.size() == 1 ? codes.front() & 0xFF : 0;
    return static_cast<Byte>(value >= 32 && value <= 127 ? value : ' ');
}

// The whole text, anything that is not printable sent as a space and a short
// name padded with spaces.
std::vector<Byte> siteNameMessage(const QString& text) {
    namespace site = vocab::site_name;
    std::vector<Byte> message = vocab::blank<vocab::SiteName>();
    std::fill(message.begin() + site::kText, message.begin() + site::kText + site::kTextLength,
              Byte{' '});
    // Characters as the operator sees them: a letter with its accents or an
    // emoji is one character, however many codes it takes.
    const QString composed = text.normalized(QString::NormalizationForm_C);
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, composed);
    int start = 0;
    for (int at = site::kText; at < site::kText + site::kTextLength; ++at) {
        const int end = characters.toNextBoundary();
        if (end < 0) {
            break;
        }
        message[static_cast<std::size_t>(at)] = siteNameByte(composed.mid(start, end - start));
        start = end;
    }
    return message;
}
}  // namespace

void Session::watchDisplayReports() {
    receiver_.registerDecoder(vocab::AngleDisplay::kCode, [this] {
        status_.AngleOsd = displayOf<vocab::AngleDisplay>(state_.RxBuffer);
        emit angleDisplayReported(status_.AngleOsd);
    });
    receiver_.registerDecoder(vocab::NameDisplay::kCode, [this] {
        status_.NameOsd = displayOf<vocab::NameDisplay>(state_.RxBuffer);
        emit nameDisplayReported(status_.NameOsd);
    });
}

QCoro::Task<Outcome> Session::setAngleDisplay(OsdSetting setting, Requester requester) {
    return exchange(requester,
                    [setting] { return displayMessage<vocab::AngleDisplay>(setting, false); });
}

QCoro::Task<Outcome> Session::storeAngleDisplayAsInitial(OsdSetting setting, Requester requester) {
    return exchange(requester,
                    [setting] { return displayMessage<vocab::AngleDisplay>(setting, true); });
}

QCoro::Task<Outcome> Session::readAngleDisplay(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::AngleDisplay>(); });
}

QCoro::Task<Outcome> Session::setNameDisplay(OsdSetting setting, Requester requester) {
    return exchange(requester,
                    [setting] { return displayMessage<vocab::NameDisplay>(setting, false); });
}

QCoro::Task<Outcome> Session::storeNameDisplayAsInitial(OsdSetting setting, Requester requester) {
    return exchange(requester,
                    [setting] { return displayMessage<vocab::NameDisplay>(setting, true); });
}

QCoro::Task<Outcome> Session::readNameDisplay(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::NameDisplay>(); });
}

QCoro::Task<Outcome> Session::setSiteName(QString name, Requester requester) {
    return exchange(requester, [name] { return siteNameMessage(name); });
}

}  // namespace halvex
