#include "views/pages/video_page.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "session/video_settings.h"
#include "views/pages/control_parts.h"
#include "views/pages/page_parts.h"

namespace halvex {

namespace {
const char* const kStoreTip = "Store The Above Configuration As The Initial Power Up Configuration";

// An output's label in the routing table: its camera's input and, when it
// carries the on-screen display, "/OSD".
QString routeLabel(int route, int output) {
    const vocab::VideoRoute& r = routeOf(route);
    QString label = QStringLiteral("Vin %1").arg(r.camera.at(static_cast<std::size_t>(output)) + 1);
    if (r.displayOutput == output) {
        label += QStringLiteral("/OSD");
    }
    return label;
}

QScrollBar* lineScroll(const char* name, QWidget* parent) {
    QScrollBar* scroll = namedScroll(QString::fromLatin1(name), 0, 11, 0, parent);
    scroll->setPageStep(1);
    // The display line is sent when the bar comes to rest, not for every
    // line it passes while dragged.
    scroll->setTracking(false);
    return scroll;
}
}  // namespace

VideoPage::VideoPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("VideoPage"));
    // Three columns: the routing of current units; the older units' video
    // and the tours' blanking; the on-screen display.
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    auto* current = new QVBoxLayout;
    current->addWidget(buildVideoConfig());
    current->addStretch(1);
    auto* legacy = new QVBoxLayout;
    legacy->addWidget(buildLegacyConfig());

    auto* tours = new QGroupBox(QStringLiteral("Tours"), this);
    auto* toursLayout = new QVBoxLayout(tours);
    VBlankCheck = namedCheck(
        QStringLiteral("VBlankCheck"), QStringLiteral("Blank Video During Tour Moves"), tours,
        QStringLiteral("Tour Steps Added From Now On Blank The Video While The Unit Moves"));
    toursLayout->addWidget(VBlankCheck);
    legacy->addWidget(tours);
    legacy->addStretch(1);
    auto* display = new QVBoxLayout;
    display->addWidget(buildNameDisplay());
    display->addWidget(buildAngleDisplay());
    display->addStretch(1);
    layout->addLayout(current);
    layout->addLayout(legacy);
    layout->addLayout(display);
    layout->addStretch(1);
}

QGroupBox* VideoPage::buildVideoConfig() {
    VidConfigFrame = new QGroupBox(QStringLiteral("Video Config"), this);
    VidConfigFrame->setObjectName(QStringLiteral("VidConfigFrame"));
    auto* grid = new QGridLayout(VidConfigFrame);
    grid->setVerticalSpacing(4);
    grid->addWidget(new QLabel(QStringLiteral("Vout 1"), VidConfigFrame), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Vout 2"), VidConfigFrame), 0, 2);
    for (int i = 0; i < kRoutes; ++i) {
        VidOption[i] = namedOption(indexed("VidOption", i), QString(), VidConfigFrame);
        // The option has no caption of its own; its row's labels name it.
        VidOption[i]->setAccessibleName(
            QStringLiteral("Vout 1 %1, Vout 2 %2").arg(routeLabel(i, 0), routeLabel(i, 1)));
        grid->addWidget(VidOption[i], i + 1, 0);
        grid->addWidget(new QLabel(routeLabel(i, 0), VidConfigFrame), i + 1, 1);
        auto* second = new QLabel(routeLabel(i, 1), VidConfigFrame);
        // This one has always stood a little apart from its row.
        grid->addWidget(second, i + 1, 2, i == 1 ? Qt::AlignBottom : Qt::Alignment{});
    }
    int row = kRoutes + 1;
    BlankCheck[0] =
        namedCheck(QStringLiteral("BlankCheck_0"), QStringLiteral("Blank Vout 2"), VidConfigFrame);
    BlankCheck[1] =
        namedCheck(QStringLiteral("BlankCheck_1"), QStringLiteral("Blank Vout 1"), VidConfigFrame);
    grid->addWidget(BlankCheck[1], row, 0, 1, 2);
    grid->addWidget(BlankCheck[0], row++, 2, 1, 2);
    PALCheck = namedCheck(QStringLiteral("PALCheck"),
                          QStringLiteral("Check for PAL/Uncheck for NTSC"), VidConfigFrame);
    grid->addWidget(PALCheck, row++, 0, 1, 4);

    for (int camera = 0; camera < 2; ++camera) {
        auto* box = new QGroupBox(QStringLiteral("Camera %1").arg(camera + 1), VidConfigFrame);
        auto* line = new QHBoxLayout(box);
        CamPwrCheck[camera] =
            namedCheck(indexed("CamPwrCheck", camera), QStringLiteral("Power On"), box);
        line->addWidget(CamPwrCheck[camera]);
        for (int aux = 0; aux < 2; ++aux) {
            const int index = camera * 2 + aux;
            AuxCheck[index] =
                namedCheck(indexed("AuxCheck", index), QStringLiteral("Aux %1").arg(aux + 1), box);
            line->addWidget(AuxCheck[index]);
        }
        grid->addWidget(box, row++, 0, 1, 4);
    }
    StoreInitBut =
        namedButton(QStringLiteral("StoreInitBut"), QStringLiteral("Store Video Mode As Initial"),
                    QString::fromLatin1(kStoreTip), VidConfigFrame);
    GetVidBut = namedButton(QStringLiteral("GetVidBut"), QStringLiteral("Get Video Config"),
                            QString(), VidConfigFrame);
    grid->addWidget(StoreInitBut, row++, 0, 1, 4);
    grid->addWidget(GetVidBut, row++, 0, 1, 4);
    grid->setColumnStretch(3, 1);
    return VidConfigFrame;
}

QGroupBox* VideoPage::buildLegacyConfig() {
    VideoFrame = new QGroupBox(QStringLiteral("Legacy Video Config"), this);
    VideoFrame->setObjectName(QStringLiteral("VideoFrame"));
    auto* grid = new QGridLayout(VideoFrame);
    const char* const captions[3] = {"Undefined", "Video Sel", "Blank Video"};
    for (int i = 0; i < 3; ++i) {
        LVidOption[i] =
            namedOption(indexed("LVidOption", i), QString::fromLatin1(captions[i]), VideoFrame);
        grid->addWidget(LVidOption[i], i, 0);
    }
    for (int camera = 0; camera < 2; ++camera) {
        grid->addWidget(new QLabel(QStringLiteral("Camera %1").arg(camera + 1), VideoFrame), camera,
                        1);
        LCamPwrCheck[camera] =
            namedCheck(indexed("LCamPwrCheck", camera), QStringLiteral("Power On"), VideoFrame);
        grid->addWidget(LCamPwrCheck[camera], camera, 2);
    }
    PALCheck2 = namedCheck(QStringLiteral("PALCheck2"),
                           QStringLiteral("Check for PAL/Uncheck for NTSC"), VideoFrame);
    OSDOnCheck =
        namedCheck(QStringLiteral("OSDOnCheck"), QStringLiteral("Check for OSD On"), VideoFrame);
    grid->addWidget(PALCheck2, 3, 0, 1, 3);
    grid->addWidget(OSDOnCheck, 4, 0, 1, 3);
    InitVModeBut =
        namedButton(QStringLiteral("InitVModeBut"), QStringLiteral("Store Video Mode As Initial"),
                    QString::fromLatin1(kStoreTip), VideoFrame);
    GetVidBut2 = namedButton(QStringLiteral("GetVidBut2"), QStringLiteral("Get Video Config"),
                             QString(), VideoFrame);
    grid->addWidget(InitVModeBut, 5, 0, 1, 3);
    grid->addWidget(GetVidBut2, 6, 0, 1, 3);
    return VideoFrame;
}

QGroupBox* VideoPage::buildNameDisplay() {
    auto* frame = new QGroupBox(QStringLiteral("OSD ID/Name Display"), this);
    frame->setObjectName(QStringLiteral("NameFrame"));
    auto* grid = new QGridLayout(frame);
    grid->addWidget(new QLabel(QStringLiteral("Enter 12 Char Site Name"), frame), 0, 0, 1, 2);
    NameText = new QLineEdit(frame);
    NameText->setObjectName(QStringLiteral("NameText"));
    NameText->setFont(fixedPitchFont());
    NameSaveBut =
        namedButton(QStringLiteral("NameSaveBut"), QStringLiteral("Send"), QString(), frame);
    grid->addWidget(NameText, 1, 0, 1, 2);
    grid->addWidget(NameSaveBut, 1, 2);
    NumDisCheck =
        namedCheck(QStringLiteral("NumDisCheck"), QStringLiteral("ID/Name Display ON"), frame);
    grid->addWidget(NumDisCheck, 2, 0, 1, 3);
    NumLineScroll = lineScroll("NumLineScroll", frame);
    grid->addWidget(new QLabel(QStringLiteral("Line"), frame), 3, 0);
    grid->addWidget(NumLineScroll, 3, 1);
    grid->addWidget(readoutOf(NumLineScroll, QStringLiteral("NumLineLabel"), frame), 3, 2);
    NameStoreBut = namedButton(QStringLiteral("NameStoreBut"), QStringLiteral("Save As Initial"),
                               QString(), frame);
    grid->addWidget(NameStoreBut, 4, 0, 1, 3);
    return frame;
}

QGroupBox* VideoPage::buildAngleDisplay() {
    auto* frame = new QGroupBox(QStringLiteral("OSD Angle Display"), this);
    frame->setObjectName(QStringLiteral("AngleFrame"));
    auto* grid = new QGridLayout(frame);
    AngDisCheck =
        namedCheck(QStringLiteral("AngDisCheck"), QStringLiteral("Angle Display ON"), frame);
    AngSgnCheck =
        namedCheck(QStringLiteral("AngSgnCheck"), QStringLiteral("Signed Display ON"), frame);
    grid->addWidget(AngDisCheck, 0, 0, 1, 3);
    grid->addWidget(AngSgnCheck, 1, 0, 1, 3);
    AngLineScroll = lineScroll("AngLineScroll", frame);
    grid->addWidget(new QLabel(QStringLiteral("Line"), frame), 2, 0);
    grid->addWidget(AngLineScroll, 2, 1);
    grid->addWidget(readoutOf(AngLineScroll, QStringLiteral("AngLineLabel"), frame), 2, 2);
    AngStorBut = namedButton(QStringLiteral("AngStorBut"), QStringLiteral("Save As Initial"),
                             QString(), frame);
    grid->addWidget(AngStorBut, 3, 0, 1, 3);
    return frame;
}

}  // namespace halvex
