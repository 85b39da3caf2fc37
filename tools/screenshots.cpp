// Renders the console's pages to PNG files, offline and online against the
// virtual unit, for the README and for looking at a change without a desktop.
//
//   halvex-screenshots OUTPUT_DIR
//       the README's pictures: every page roomy, the Port menu, the Data
//       Watch, the help window, and the Pan/Tilt page on a small screen by
//       day and by night
//   halvex-screenshots --small-screen OUTPUT_DIR
//       every page at 1024 x 700 in each palette, at 100, 150 and 200 %:
//       OUTPUT_DIR/<scale>/<palette>/<page>.png

#include <SDL.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "connection/port_selection.h"
#include "input/controller_jog.h"
#include "live_video/calibration_dialog.h"
#include "live_video/video_pane.h"
#include "live_video/video_panel.h"
#include "protocol/fault_guard.h"
#include "protocol/in_process_port.h"
#include "protocol/port_map.h"
#include "recorder/line_log_window.h"
#include "recorder/line_recorder.h"
#include "sim/unit.h"
#include "sim/video/unit_snapshot.h"
#include "sim/video/video_server.h"
#include "tools/commissioning_screenshots.h"
#include "tools/picture_fonts.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/clickable.h"
#include "views/widgets/led_display.h"
#include "views/widgets/range_plot.h"
#include "window/camera_features.h"
#include "window/data_watch.h"
#include "window/help_box.h"
#include "window/page_place.h"
#include "window/video_wiring.h"
#include "window/vornixu.h"

namespace {
bool save(QWidget& widget, const QString& path) {
    const bool ok = widget.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
    return ok;
}

// The Camera page at work: camera 1's line set and a control list loaded;
// camera 2 with the files listed.
QWidget* find(halvex::VornixU& window, const char* name) {
    return window.findChild<QWidget*>(QString::fromLatin1(name));
}

void useCameraPage(halvex::VornixU& window) {
    emit qobject_cast<halvex::ClickLabel*>(find(window, "BaudLabel1"))->clicked();
    qobject_cast<QPushButton*>(find(window, "SetCamBut"))->click();
    qobject_cast<QPushButton*>(find(window, "CamTypeBut_0"))->click();
    auto* list = qobject_cast<QComboBox*>(find(window, "CamTypeCombo_0"));
    const int sony = list->findText(QStringLiteral("SONY-VISCA.CCL"));
    list->setCurrentIndex(sony);
    emit list->activated(sony);
    const int zoom = list->findText(QStringLiteral("Zoom Tele"));
    list->setCurrentIndex(zoom);
    emit list->activated(zoom);
    qobject_cast<QPushButton*>(find(window, "CamTypeBut_1"))->click();
}

// "TX 1", caught while the camera's answer is in the reply box (the next
// report without camera bytes clears it).
void sendAndCatchAnswer(halvex::VornixU& window) {
    auto* replies = qobject_cast<QLabel*>(find(window, "RXLabel_0"));
    qobject_cast<QPushButton*>(find(window, "SendBut_0"))->click();
    (void)QTest::qWaitFor([&] { return replies->text().size() >= 6; }, 3000);
}

// The Port menu with its device submenu open beside it, for an adapter
// mapped to COM1 (or what COM1 opens already).
bool savePortMenu(halvex::VornixU& window, const QString& path, bool mapAdapter = true) {
    window.findChild<halvex::PortSelection*>()->deviceMenu().setDeviceSource([] {
        return QList<halvex::SerialDevice>{
            {QStringLiteral("/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A10K3XYZ-if00-port0"),
             QStringLiteral("/dev/ttyUSB0"), QStringLiteral("FT232R USB UART"),
             QStringLiteral("FTDI"), QStringLiteral("A10K3XYZ")}};
    });
    if (mapAdapter) {
        window.findChild<QAction*>(QStringLiteral("MenuDevice_0"))->trigger();
    }
    auto* portMenu = window.findChild<QMenu*>(QStringLiteral("PortMenu"));
    auto* deviceMenu = window.findChild<QMenu*>(QStringLiteral("MenuDevice"));
    portMenu->popup(QPoint(0, 0));
    deviceMenu->popup(QPoint(0, 0));
    QTest::qWait(200);
    const QPixmap left = portMenu->grab();
    const QPixmap right = deviceMenu->grab();
    portMenu->hide();
    deviceMenu->hide();
    QPixmap both(left.width() + right.width(), std::max(left.height(), right.height()));
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawPixmap(0, 0, left);
    painter.drawPixmap(left.width(), 0, right);
    painter.end();
    const bool ok = both.save(path);
    std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
    return ok;
}

// "Network Device For COM1" filled in, and the Port menu once COM1 opens it.
bool saveNetworkDevice(halvex::VornixU& window, const QString& out) {
    window.findChild<QAction*>(QStringLiteral("MenuNetworkDevice"))->trigger();
    auto* dialog = window.findChild<QDialog*>(QStringLiteral("NetworkDeviceDialog"));
    window.findChild<QLineEdit*>(QStringLiteral("NetHostBox"))->setText(QStringLiteral("10.0.0.5"));
    window.findChild<QLineEdit*>(QStringLiteral("NetPortBox"))->setText(QStringLiteral("2001"));
    QTest::qWait(200);
    bool ok = save(*dialog, out + QStringLiteral("/networkdevice.png"));
    dialog->accept();
    ok = savePortMenu(window, out + QStringLiteral("/portmenu-network.png"), false) && ok;
    halvex::setComPortDevice(1, QString());
    return ok;
}

// View > Input Settings with one of SDL's virtual game controllers plugged
// in, its left stick pushed right and a little up for the preview.
bool saveInputSettings(halvex::VornixU& window, const QString& out) {
    SDL_InitSubSystem(SDL_INIT_JOYSTICK);
    const int index = SDL_JoystickAttachVirtual(
        SDL_JOYSTICK_TYPE_GAMECONTROLLER, SDL_CONTROLLER_AXIS_MAX, SDL_CONTROLLER_BUTTON_MAX, 0);
    SDL_Joystick* pad = index >= 0 ? SDL_JoystickOpen(index) : nullptr;
    if (pad == nullptr) {
        return false;
    }
    window.input().controller->read();
    SDL_JoystickSetVirtualAxis(pad, SDL_CONTROLLER_AXIS_LEFTX, 24000);
    SDL_JoystickSetVirtualAxis(pad, SDL_CONTROLLER_AXIS_LEFTY, -12000);
    window.findChild<QAction*>(QStringLiteral("MenuInputSettings"))->trigger();
    auto* dialog = window.findChild<QDialog*>(QStringLiteral("InputSettings"));
    QTest::qWait(400);
    const bool ok = dialog != nullptr && save(*dialog, out + QStringLiteral("/inputsettings.png"));
    if (dialog != nullptr) {
        dialog->reject();
    }
    SDL_JoystickClose(pad);
    SDL_JoystickDetachVirtual(index);
    QTest::qWait(100);
    window.input().controller->read();
    SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
    return ok;
}

// Unit > Remote Control with VISCA listening on a free port and a controller
// connected to it.
bool saveRemoteControl(halvex::VornixU& window, const QString& path) {
    window.findChild<QAction*>(QStringLiteral("MenuRemoteControl"))->trigger();
    auto* dialog = window.findChild<QDialog*>(QStringLiteral("RemoteControlDialog"));
    if (dialog == nullptr) {
        return false;
    }
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    dialog->findChild<QCheckBox*>(QStringLiteral("ViscaCheck"))->setChecked(true);
    dialog->findChild<QLineEdit*>(QStringLiteral("ViscaPortBox"))->setText(QString::number(port));
    dialog->findChild<QPushButton*>(QStringLiteral("RemoteApplyBut"))->click();
    QTcpSocket controller;
    controller.connectToHost(QHostAddress::LocalHost, port);
    controller.waitForConnected(2000);
    QTest::qWait(200);
    const bool ok = save(*dialog, path);
    dialog->findChild<QCheckBox*>(QStringLiteral("ViscaCheck"))->setChecked(false);
    dialog->findChild<QPushButton*>(QStringLiteral("RemoteOkBut"))->click();
    return ok;
}

// The Line Log after the session above, the last target report selected,
// at its own size and at 1024 x 700.
bool saveLineLog(halvex::VornixU& window, const QString& out) {
    halvex::LineRecorder& recorder = window.lineRecorder();
    recorder.showLog();
    halvex::LineLogWindow& log = recorder.window();
    QTest::qWait(300);
    halvex::LineLogModel& model = recorder.model();
    for (int row = model.rowCount() - 1; row >= 0; --row) {
        if (model.data(model.index(row, halvex::LineLogModel::Name), Qt::DisplayRole) ==
            QStringLiteral("target report")) {
            // Held still around the move, not following the line.
            log.findChild<QPushButton*>(QStringLiteral("FollowBut"))->setChecked(false);
            log.table().selectRow(row);
            log.table().scrollTo(model.index(row, 0), QAbstractItemView::PositionAtCenter);
            break;
        }
    }
    log.refreshStatus();
    QTest::qWait(300);
    bool ok = save(log, out + QStringLiteral("/linelog.png"));
    const QSize own = log.size();
    log.resize(1024, 700);
    QTest::qWait(300);
    ok = save(log, out + QStringLiteral("/linelog-1024.png")) && ok;
    log.resize(own);
    log.hide();
    return ok;
}

QString fileName(const QString& caption) {
    return caption.toLower().remove(QLatin1Char('/')).remove(QLatin1Char(' '));
}

// Connects to the virtual unit and leaves the console as an operator would:
// presets and a tour stored, a move under way, the Camera page in use.
bool prepare(halvex::VornixU& window) {
    window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    if (!QTest::qWaitFor([&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); },
                         60000)) {
        std::printf("the console did not come online\n");
        return false;
    }
    const double presets[][2] = {{-45.0, 10.0}, {30.5, -5.25}, {90.0, 0.0}, {-120.75, 22.5}};
    auto* presetList = window.findChild<QListWidget*>(QStringLiteral("PresetList"));
    for (int i = 0; i < 4; ++i) {
        presetList->setCurrentRow(i + 1);
        window.findChild<halvex::LedDisplay*>(QStringLiteral("PanPreLED"))->setValue(presets[i][0]);
        window.findChild<halvex::LedDisplay*>(QStringLiteral("TiltPreLED"))
            ->setValue(presets[i][1]);
        window.findChild<QPushButton*>(QStringLiteral("SavePreBut"))->click();
        QTest::qWait(150);
    }
    window.SSTab1().setCurrentIndex(3);
    QTest::qWait(200);
    auto* choices = window.findChild<QListWidget*>(QStringLiteral("ScriptPreList"));
    window.findChild<QScrollBar*>(QStringLiteral("WaitScroll"))->setValue(5);
    for (int preset : {1, 2, 3, 4}) {
        choices->setCurrentRow(preset);
        emit choices->itemDoubleClicked(choices->item(preset));
        QTest::qWait(250);
    }
    window.SSTab1().setCurrentIndex(0);

    // Give the platform something to show: a move in progress.
    window.panTiltPage().PanDesLED->setValue(45.0);
    window.panTiltPage().TiltDesLED->setValue(-10.0);
    window.panTiltPage().AbsoBut->click();
    QTest::qWait(1500);
    // And the movement log something to list.
    window.findChild<QPushButton*>(QStringLiteral("MoveMonBut"))->click();
    window.panTiltPage().PanDesLED->setValue(-30.0);
    window.panTiltPage().AbsoBut->click();
    QTest::qWait(1500);

    useCameraPage(window);
    return true;
}

// Every page and the uncovered Factory page, each as `name(page)` in `folder`.
bool savePages(halvex::VornixU& window, const QString& folder) {
    QDir().mkpath(folder);
    QTabWidget& tabs = window.SSTab1();
    auto* cover = window.findChild<QWidget*>(QStringLiteral("PassFrame"));
    cover->show();
    bool ok = true;
    for (int i = 0; i < tabs.count(); ++i) {
        tabs.setCurrentIndex(i);
        QTest::qWait(300);
        if (tabs.tabText(i) == QStringLiteral("Camera")) {
            sendAndCatchAnswer(window);
        }
        ok = save(window, folder + QStringLiteral("/%1.png").arg(fileName(tabs.tabText(i)))) && ok;
    }
    // The factory controls, uncovered by the access code.
    window.findChild<QLineEdit*>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    window.findChild<QPushButton*>(QStringLiteral("PassEntBut"))->click();
    QTest::qWait(200);
    ok = save(window, folder + QStringLiteral("/factory-open.png")) && ok;
    tabs.setCurrentIndex(0);
    return ok;
}

// The range plot in its own window, as a small screen shows it; with
// `clickAt`, a move there clicked and under way.
bool saveRangePlot(halvex::VornixU& window, const QString& path,
                   std::optional<halvex::PlotAngles> clickAt = std::nullopt) {
    window.findChild<QAction*>(QStringLiteral("MenuRangePlot"))->trigger();
    QWidget& plotWindow = window.rangePlotPlace().ownWindow();
    plotWindow.resize(640, 400);
    QTest::qWait(300);
    if (clickAt) {
        halvex::RangePlot& plot = window.rangePlot();
        QTest::mouseClick(&plot, Qt::LeftButton, {}, plot.frame().toPixel(*clickAt).toPoint());
        QTest::qWait(900);
    }
    const bool ok = save(plotWindow, path);
    plotWindow.hide();
    return ok;
}

// The live video of the virtual unit's two outputs: on the Pan/Tilt page of a
// 1920-pixel screen, in its own window on a small one, and the calibration
// of camera 1's lens after its first mark.
bool saveLiveVideo(halvex::VornixU& window, halvex::sim::Unit& unit, const QString& out) {
    namespace video = halvex::sim::video;
    video::VideoServer server({}, [&unit] { return video::videoSnapshotOf(unit.state()); });
    if (!server.start()) {
        return false;
    }
    halvex::VideoWiring& wiring = window.videoWiring();
    wiring.overrideSources(
        {QString::fromStdString(server.url(0)), QString::fromStdString(server.url(1))});
    // Facing the tower, which stands at 37 degrees and 3 up.
    halvex::Session& session = window.session();
    halvex::launch(window.state(), "Screenshots",
                   halvex::completing(session.moveTo({33.0, 1.0}, halvex::Requester::Operator)));
    bool ok = QTest::qWaitFor([&] { return session.status().CurrentPan > 32.99f; }, 15000);
    window.SSTab1().setCurrentIndex(0);
    window.resize(1920, 1000);
    halvex::VideoPanel& panel = wiring.panel();
    const bool shown = QTest::qWaitFor(
        [&] { return panel.pane(0).hasPicture() && panel.pane(1).hasPicture(); }, 15000);
    // A click on the tower, and the picture a little later with the platform
    // on its way.
    emit panel.pane(0).centreRequested(QPointF(0.8, 0.3));
    QTest::qWait(500);
    ok = shown && save(window, out + QStringLiteral("/pantilt-video.png")) && ok;
    window.resize(1024, 700);
    window.findChild<QAction*>(QStringLiteral("MenuVideo"))->trigger();
    QWidget& own = wiring.place().ownWindow();
    own.resize(1000, 340);
    QTest::qWait(1500);
    ok = save(own, out + QStringLiteral("/video-window.png")) && ok;
    emit wiring.sourcesDialog().calibrationRequested(0);
    QTest::qWait(300);
    emit panel.pane(0).centreRequested(QPointF(0.7, 0.55));
    ok = QTest::qWaitFor([&] { return !session.status().Moving(); }, 5000) && ok;
    QTest::qWait(800);
    if (QWidget* calibration = wiring.calibrationDialog()) {
        ok = save(*calibration, out + QStringLiteral("/calibration.png")) && ok;
        calibration->close();
    }
    own.hide();
    wiring.overrideSources({QStringLiteral("none"), QStringLiteral("none")});
    return ok;
}

// The video's own window as a small screen shows it, with no source chosen.
bool saveVideoWindow(halvex::VornixU& window, const QString& path) {
    window.findChild<QAction*>(QStringLiteral("MenuVideo"))->trigger();
    QWidget& own = window.videoWiring().place().ownWindow();
    own.resize(1000, 340);
    QTest::qWait(300);
    const bool ok = save(own, path);
    own.hide();
    return ok;
}

const char* const kPalettes[] = {"Desktop", "Dark", "Night"};

void choosePalette(halvex::VornixU& window, const char* palette) {
    window.findChild<QAction*>(QStringLiteral("MenuPalette") + QLatin1String(palette))->trigger();
    QTest::qWait(300);
}

// The README's pictures.
int readmePictures(const QString& out) {
    halvex::sim::Unit unit;
    auto* port = new halvex::InProcessPort(&unit);
    halvex::VornixU window(port);
    window.Form_Load();
    window.resize(1240, 800);
    window.show();
    QTest::qWait(200);
    bool ok = save(window, out + QStringLiteral("/offline.png"));
    ok = savePortMenu(window, out + QStringLiteral("/portmenu.png")) && ok;
    ok = saveNetworkDevice(window, out) && ok;
    if (!prepare(window)) {
        return 1;
    }
    ok = savePages(window, out) && ok;
    ok = saveLineLog(window, out) && ok;
    ok = saveInputSettings(window, out) && ok;
    ok = saveRemoteControl(window, out + QStringLiteral("/remotecontrol.png")) && ok;
    window.dataWatch().show();
    window.dataWatch().resize(640, 220);
    QTest::qWait(300);
    ok = save(window.dataWatch(), out + QStringLiteral("/datawatch.png")) && ok;
    window.findChild<QPushButton*>(QStringLiteral("SerHelpBut"))->click();
    if (QWidget* help = window.findChild<halvex::CameraFeatures*>()->helpBox()) {
        QTest::qWait(300);
        ok = save(*help, out + QStringLiteral("/help.png")) && ok;
    } else {
        ok = false;
    }
    // A field laptop's screen, by day and by night.
    window.SSTab1().setCurrentIndex(0);
    window.resize(1024, 700);
    QTest::qWait(300);
    ok = save(window, out + QStringLiteral("/small-screen.png")) && ok;
    ok = saveRangePlot(window, out + QStringLiteral("/rangeplot.png"),
                       halvex::PlotAngles{-60, 30}) &&
         ok;
    // A wide screen has room for the plot on the Pan/Tilt page.
    window.resize(1720, 900);
    QTest::qWait(300);
    ok = save(window, out + QStringLiteral("/pantilt-wide.png")) && ok;
    ok = saveLiveVideo(window, unit, out) && ok;
    window.resize(1024, 700);
    QTest::qWait(300);
    choosePalette(window, "Night");
    ok = save(window, out + QStringLiteral("/night.png")) && ok;
    choosePalette(window, "Desktop");
    ok = saveCommissioningDialogs(window, unit, out) && ok;
    return ok ? 0 : 1;
}

// Every page at 1024 x 700 in each palette, at the scale this process runs at.
int smallScreenPages(const QString& out) {
    halvex::sim::Unit unit;
    auto* port = new halvex::InProcessPort(&unit);
    halvex::VornixU window(port);
    window.Form_Load();
    window.resize(1024, 700);
    window.show();
    if (!prepare(window)) {
        return 1;
    }
    bool ok = true;
    for (const char* palette : kPalettes) {
        choosePalette(window, palette);
        const QString folder = out + QLatin1Char('/') + QString::fromLatin1(palette).toLower();
        ok = savePages(window, folder) && ok;
        ok = saveRemoteControl(window, folder + QStringLiteral("/remotecontrol.png")) && ok;
        ok = saveRangePlot(window, folder + QStringLiteral("/rangeplot.png")) && ok;
        ok = saveVideoWindow(window, folder + QStringLiteral("/video-window.png")) && ok;
    }
    choosePalette(window, "Desktop");
    return ok ? 0 : 1;
}

// Runs this program once per scale, the three at once (each draws on one
// core): a process has one scale for its life.
int smallScreenAtEachScale(const QString& program, const QString& out) {
    const std::pair<const char*, const char*> scales[] = {
        {"100", "1"}, {"150", "1.5"}, {"200", "2"}};
    std::vector<std::unique_ptr<QProcess>> runs;
    for (const auto& [folder, factor] : scales) {
        auto run = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QLatin1String(factor));
        run->setProcessEnvironment(environment);
        run->setProcessChannelMode(QProcess::ForwardedChannels);
        run->start(program,
                   {QStringLiteral("--one-scale"), out + QLatin1Char('/') + QLatin1String(folder)});
        runs.push_back(std::move(run));
    }
    int failed = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        QProcess& run = *runs[i];
        if (!run.waitForFinished(300000) || run.exitStatus() != QProcess::NormalExit ||
            run.exitCode() != 0) {
            std::printf("the run at %s %% failed\n", scales[i].first);
            failed = 1;
        }
    }
    return failed;
}
}  // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // The same fonts on every machine, so that a page that cannot be
    // rendered at a small size fails here as it would anywhere.
    if (const QString why = halvex::pinPictureFonts(); !why.isEmpty()) {
        std::fprintf(stderr, "halvex-screenshots: cannot choose the fonts: %s\n", qPrintable(why));
        return 1;
    }
    QApplication app(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    const bool smallScreen = arguments.removeAll(QStringLiteral("--small-screen")) > 0;
    const bool oneScale = arguments.removeAll(QStringLiteral("--one-scale")) > 0;
    const QString out = arguments.value(0, QStringLiteral("."));
    QDir().mkpath(out);
    if (smallScreen) {
        return smallScreenAtEachScale(QApplication::applicationFilePath(), out);
    }

    // The settings file and the user's settings go to a scratch directory,
    // not the caller's.
    QTemporaryDir scratch;
    const QString absoluteOut = QDir(out).absolutePath();
    QDir::setCurrent(scratch.path());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, scratch.path());
    return oneScale ? smallScreenPages(absoluteOut) : readmePictures(absoluteOut);
}
