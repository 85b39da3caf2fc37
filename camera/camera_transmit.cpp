#include "camera/camera_transmit.h"

#include "camera/transmit_string.h"
#include "console/handler_wiring.h"
#include "views/pages/camera_page.h"

namespace halvex {

CameraTransmit::CameraTransmit(ConsoleContext& context, CameraPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    FormState& state = context_.state;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        onEvent(state, page_.SendBut[c], &QPushButton::clicked, this, "SendBut_Click",
                [this, camera] { return SendBut_Click(camera); });
        onEvent(state, page_.TXBox[c], &DoubleClickLineEdit::doubleClicked, this, "TXBox_DblClick",
                [this, camera] { TXBox_DblClick(camera); });
        // Toggles, not clicks: a list picking hex mode clears the CR box too.
        onEvent(state, page_.HexOp1[c], &QRadioButton::toggled, this, "HexOp1_Click",
                [this, camera](bool on) {
                    if (on) {
                        HexOp1_Click(camera);
                    }
                });
        onEvent(state, page_.CRCheck[c], &QCheckBox::toggled, this, "CRCheck_Click",
                [this, camera](bool on) {
                    if (on) {
                        CRCheck_Click(camera);
                    }
                });
    }
}

QCoro::Task<> CameraTransmit::SendBut_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    const TransmitMode mode =
        page_.HexOp1[c]->isChecked() ? TransmitMode::Hex : TransmitMode::Ascii;
    TransmitString result =
        buildTransmitString(page_.TXBox[c]->text(), mode, page_.CRCheck[c]->isChecked());
    if (result.refused()) {
        context_.messages.exclamation(result.messageTitle, result.messageText);
        co_return;
    }
    page_.TXBox[c]->setText(result.boxText);
    const Outcome outcome =
        co_await context_.session.sendToCamera(camera, std::move(result.data), Requester::Operator);
    outcome.raiseRangeFault();
}

void CameraTransmit::TXBox_DblClick(int camera) {
    page_.TXBox[static_cast<std::size_t>(camera)]->clear();
}

void CameraTransmit::HexOp1_Click(int camera) {
    page_.CRCheck[static_cast<std::size_t>(camera)]->setChecked(false);
}

void CameraTransmit::CRCheck_Click(int camera) {
    const auto c = static_cast<std::size_t>(camera);
    if (page_.HexOp1[c]->isChecked()) {
        page_.CRCheck[c]->setChecked(false);
    }
}

}  // namespace halvex
