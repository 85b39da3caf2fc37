#include "tests/positioning/positioning_rig.h"

#include <QAbstractButton>
#include <QApplication>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace halvex::testing {

namespace {
std::int32_t getPositionFrom(const Message_& m, std::size_t first) {
    return Build24(m.at(first + 2), m.at(first + 1), m.at(first));
}
}  // namespace

Message_ positionBytes(std::int32_t hundredths) {
    const auto v = static_cast<std::uint32_t>(hundredths);
    return {static_cast<Byte>(v & 0xFF), static_cast<Byte>((v >> 8) & 0xFF),
            static_cast<Byte>((v >> 16) & 0xFF)};
}

Message_ PositioningUnit::presetReply(Byte code, Byte number) const {
    Message_ reply{code, number};
    if (number >= kUnitPresets) {
        reply[1] = 255;
        reply.resize(12, 0);
        return reply;
    }
    const PresetRecord& p = presets[number];
    for (Byte b : positionBytes(p.pan + panOffset)) {
        reply.push_back(b);
    }
    for (Byte b : positionBytes(p.tilt + tiltOffset)) {
        reply.push_back(b);
    }
    reply.insert(reply.end(), {p.zoom1, p.focus1, p.zoom2, p.focus2});
    return reply;
}

Message_ PositioningUnit::report(Byte code) const {
    Message_ reply{code};
    for (int i = 0; i < 6; ++i) {
        reply.push_back(0);
    }
    reply.insert(reply.end(), {statusA, statusB, statusC, 0, 0, 0, 0});
    if (code == 0x31) {
        reply.insert(reply.end(), {0, 0});
    }
    return reply;
}

std::optional<Message_> PositioningUnit::answer(const Message_& m) {
    if (onFrame) {
        onFrame(m);
    }
    const Byte code = m.at(0);
    if (std::find(silentCodes.begin(), silentCodes.end(), code) != silentCodes.end()) {
        return std::nullopt;
    }
    auto step = [&](Byte tour, std::size_t s) -> Message_ {
        const auto& steps = tours.at(tour);
        if (s >= steps.size()) {
            return {code, tour, 255, 0, 0};
        }
        return {code, tour, static_cast<Byte>(s), steps[s].first, steps[s].second};
    };
    switch (code) {
        case 0x31:
        case 0x32:
            return report(code);
        case 0x40:
        case 0x42:
        case 0x43:
            return presetReply(code, m.at(1));
        case 0x41: {
            const Byte n = m.at(1);
            if (n < kUnitPresets) {
                presets[n].pan = getPositionFrom(m, 2) - panOffset;
                presets[n].tilt = getPositionFrom(m, 5) - tiltOffset;
            }
            return presetReply(code, n);
        }
        case 0x94:
            presets = {};
            return Message_{code};
        case 0x37:
            return Message_{code, tours.at(m.at(1)).empty() ? Byte{255} : m.at(1)};
        case 0x50:
            tours.at(m.at(1)).clear();
            return Message_{code, m.at(1)};
        case 0x51:
            return step(m.at(1), m.at(2));
        case 0x52: {
            auto& steps = tours.at(m.at(1));
            steps.emplace_back(m.at(2), m.at(3));
            return step(m.at(1), steps.size() - 1);
        }
        case 0x53: {
            auto& steps = tours.at(m.at(1));
            const std::size_t s = m.at(2);
            if (s > steps.size()) {
                return Message_{code, m.at(1), 255, 0, 0};
            }
            steps.insert(steps.begin() + static_cast<long>(s), {m.at(3), m.at(4)});
            return step(m.at(1), s);
        }
        case 0x54: {
            auto& steps = tours.at(m.at(1));
            const std::size_t s = m.at(2);
            Message_ reply = step(m.at(1), s);
            if (s < steps.size()) {
                steps.erase(steps.begin() + static_cast<long>(s));
            }
            return reply;
        }
        case 0x55: {
            auto& steps = tours.at(m.at(1));
            const std::size_t s = m.at(2);
            if (s < steps.size()) {
                steps[s] = {m.at(3), m.at(4)};
            }
            return step(m.at(1), s);
        }
        case 0x56:
            return Message_{code, m.at(1), static_cast<Byte>(tours.at(m.at(1)).size())};
        case 0x81: {
            const int index = m.at(1) & 0x7F;
            Message_ reply{code, static_cast<Byte>(index)};
            const std::int32_t offset = index < 2 ? panOffset : tiltOffset;
            for (Byte b : positionBytes(limits.at(static_cast<std::size_t>(index)) + offset)) {
                reply.push_back(b);
            }
            return reply;
        }
        case 0x80:
        case 0x82:
        case 0x83:
        case 0x84:
        case 0x85: {
            if (code == 0x80) {
                panOffset = getPositionFrom(m, 1);
                tiltOffset = getPositionFrom(m, 4);
            } else if (code == 0x82 || code == 0x84) {
                panOffset = 0;
                tiltOffset = 0;
            }
            Message_ reply{code};
            for (Byte b : positionBytes(panOffset)) {
                reply.push_back(b);
            }
            for (Byte b : positionBytes(tiltOffset)) {
                reply.push_back(b);
            }
            return reply;
        }
        default:
            return Message_{code};
    }
}

PositioningRig::PositioningRig() {
    QObject::connect(&state, &FormState::faultReported,
                     [this](const QString& message) { faults << message; });

    auto* layout = new QVBoxLayout(&window);
    Label2_0 = new QLabel(QStringLiteral("Pan"), &window);
    Label2_0->setObjectName(QStringLiteral("Label2_0"));
    Label2_1 = new QLabel(QStringLiteral("Tilt"), &window);
    Label2_1->setObjectName(QStringLiteral("Label2_1"));
    PanDesLED = new LedDisplay(&window);
    TiltDesLED = new LedDisplay(&window);
    SSTab1 = new QTabWidget(&window);
    SSTab1->setObjectName(QStringLiteral("SSTab1"));
    layout->addWidget(Label2_0);
    layout->addWidget(Label2_1);
    layout->addWidget(SSTab1);

    scripted.setScript(
        [this](const ScriptedUnit::Frame& frame) { return model.answer(frame.message); });
    link.setPort(&port);
    receiver.attachPort(&port);
    port.open(QStringLiteral("COM1"), 9600);
    link.setJogSender([this] { sendJog(); });
    link.Timer2().setInterval(kTestTickMs);

    // The position report and the status lamps, as far as these features
    // depend on them: the controller type and LimitFault.
    for (Byte code : {Byte{0x31}, Byte{0x32}}) {
        receiver.registerDecoder(code, [this] { decodeReport(); });
    }
    receiver.addRefreshHook([this] {
        status.LimitFault =
            (status.StatusBytes[0] & 0xFC) != 0 || (status.StatusBytes[1] & 0xFC) != 0;
    });

    PositioningEnvironment environment;
    environment.Label2_0 = Label2_0;
    environment.Label2_1 = Label2_1;
    environment.PanDesLED = PanDesLED;
    environment.TiltDesLED = TiltDesLED;
    environment.SSTab1 = SSTab1;
    environment.videoBlankChecked = [this] { return videoBlank; };
    pages = installPositioning(context, environment, &owner);
    SSTab1->addTab(pages.presets, QStringLiteral("Presets"));
    SSTab1->addTab(pages.offsets, QStringLiteral("Offsets"));
    SSTab1->addTab(pages.tours, QStringLiteral("Tours"));
    layout->addWidget(pages.movementMonitor);
    window.resize(900, 700);
    window.show();
    link.Timer2().start();
}

PositioningRig::~PositioningRig() {
    link.Timer2().stop();
    link.Timer4().stop();
}

void PositioningRig::decodeReport() {
    const ByteTable& rx = state.RxBuffer;
    status.StatusBytes = {rx[7], rx[8], rx[9], static_cast<Byte>(rx[7] & 3)};
}

void PositioningRig::sendJog() {
    if (!jogging) {
        return;
    }
    for (Byte b :
         encodeFrame(kStx, state.UnitId, {0x31, state.JogFlags, 0, 0, 0, 0, 0, 0}, state.UnitId)) {
        port.writeByte(b);
    }
}

std::vector<Message_> PositioningRig::sent() const {
    std::vector<Message_> result;
    for (const auto& frame : scripted.frames()) {
        if (!frame.message.empty() && frame.message.front() != 0x31) {
            result.push_back(frame.message);
        }
    }
    return result;
}

void PositioningRig::inject(const Message_& message) {
    port.injectIncoming(ScriptedUnit::replyWire(state.UnitId, message));
}

void PositioningRig::settle(int ms) {
    QTest::qWait(ms);
}

void PositioningRig::click(const char* name) {
    auto* button = find<QAbstractButton>(QString::fromLatin1(name));
    ASSERT_NE(button, nullptr) << name;
    QTest::mouseClick(button, Qt::LeftButton);
}

void PositioningRig::selectRow(const char* listName, int row) {
    QListWidget* widget = list(listName);
    ASSERT_NE(widget, nullptr) << listName;
    ASSERT_LT(row, widget->count());
    const QRect rect = widget->visualItemRect(widget->item(row));
    QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, rect.center());
}

void PositioningRig::doubleClickRow(const char* listName, int row) {
    selectRow(listName, row);
    QListWidget* widget = list(listName);
    const QRect rect = widget->visualItemRect(widget->item(row));
    QTest::mouseDClick(widget->viewport(), Qt::LeftButton, {}, rect.center());
}

}  // namespace halvex::testing
