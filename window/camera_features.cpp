#include "window/camera_features.h"

#include <QDir>
#include <QPushButton>
#include <cstdio>

#include "camera/camera_lines.h"
#include "camera/camera_lists.h"
#include "camera/camera_transmit.h"
#include "camera/lens_control.h"
#include "console/data_folder.h"
#include "console/handler_wiring.h"
#include "views/pages/camera_page.h"
#include "window/help_box.h"

namespace halvex {

CameraFeatures::CameraFeatures(ConsoleContext& context, JogState& jog, CameraPage& page,
                               QPushButton* tourHelpBut, QObject* parent)
    : QObject(parent), context_(context), dataFolder_(halvex::dataFolder()) {
    setObjectName(QStringLiteral("CameraFeatures"));
    new CameraLists(
        context, page, [this] { return dataFolder_; }, this);
    new CameraTransmit(context, page, this);
    new CameraLines(context, page, this);
    new LensControl(context, jog, page, this);

    onEvent(context.state, page.SerHelpBut, &QPushButton::clicked, this, "SerHelpBut_Click",
            [this] { SerHelpBut_Click(); });
    if (tourHelpBut != nullptr) {
        onEvent(context.state, tourHelpBut, &QPushButton::clicked, this, "TourHelpBut_Click",
                [this] { TourHelpBut_Click(); });
    }
}

CameraFeatures::~CameraFeatures() = default;

void CameraFeatures::SerHelpBut_Click() {
    showHelp(QStringLiteral("Camera Help.RTF"), QStringLiteral("Camera Control And Configuration"));
}

void CameraFeatures::TourHelpBut_Click() {
    showHelp(QStringLiteral("Tour Help.RTF"), QStringLiteral("Tour Setup"));
}

void CameraFeatures::showHelp(const QString& fileName, const QString& title) {
    if (!helpBox_) {
        helpBox_ = std::make_unique<HelpBox>();
    }
    QString error;
    if (!helpBox_->showHelp(QDir(dataFolder_).filePath(fileName), title, &error)) {
        std::fprintf(stderr, "halvex: %s\n", qPrintable(error));
        context_.messages.exclamation(
            QStringLiteral("Could Not Open Help File"),
            QStringLiteral("There was a problem opening the RTF help file. Please be sure it is "
                           "in the same directory as your application."));
    }
}

}  // namespace halvex
