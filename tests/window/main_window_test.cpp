#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTableWidget>
#include <QTcpSocket>
#include <QToolButton>

#include "remote/remote_bridges.h"
#include "remote/visca/visca_bridge.h"
#include "tests/network/line_client.h"
#include "tests/support/console_rig.h"
#include "tests/support/scripted_server.h"
#include "window/data_watch.h"
#include "window/network_control.h"
#include "window/remote_control_dialog.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// The rig works in an empty current directory, where the settings file lives.
QByteArray settingsBytes() {
    QFile file(QStringLiteral("HALVEX.BIN"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
// The port and speed entries of the menus that are checked.
QString checkedEntries(QWidget& window) {
    QStringList names;
    for (const QAction* entry :
         window.findChildren<QAction*>(QRegularExpression("^Menu(COM|BPS)_"))) {
        names << (entry->isChecked() ? entry->objectName() : QString());
    }
    names.removeAll(QString());
    names.sort();
    return names.join(' ');
}
}  // namespace

TEST(MainWindow, StoredSettingsAreUsedAsTheyAreAndAMissingFileIsCreated) {
    struct Case {
        QByteArray stored;  // hex; empty: no file
        QByteArray after;
        QString error;    // words the load error must name, "|" between
        QString title;    // how the title ends
        QString checked;  // the checked port and speed entries
    };
    const Case cases[] = {
        {"", "010080250000", "", "Ver 2.00 Using COM1 At 9600 Offline", "MenuBPS_0 MenuCOM_1"},
        // Port 9 has no entry: COM1's stays checked.
        {"0900004B0000", "0900004B0000", "", "", "MenuBPS_2 MenuCOM_1"},
        {"020078563412", "020078563412", "", "Using COM2 At 305419896 Offline", "MenuCOM_2"},
        // The last port, and a speed of 0 taken as 9600.
        {"080000000000", "080000000000", "", "Using COM8 At 9600 Offline", "MenuBPS_0 MenuCOM_8"},
        {"0100", "0100", "HALVEX.BIN|2 bytes", "Using COM1 At 9600 Offline",
         "MenuBPS_0 MenuCOM_1"}};
    ConsoleRig rig;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored.toStdString());
        QFile file(QStringLiteral("HALVEX.BIN"));
        file.remove();
        if (!c.stored.isEmpty()) {
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QByteArray::fromHex(c.stored));
            file.close();
        }
        VornixU w(
            new TestPort(&rig.line), [](QWidget*, const Message&) { return true; },
            ConsoleRig::kFastTickMs);
        const QString error = w.Form_Load();
        for (const QString& word : c.error.split('|', Qt::SkipEmptyParts)) {
            EXPECT_TRUE(error.contains(word)) << error.toStdString();
        }
        EXPECT_EQ(error.isEmpty(), c.error.isEmpty());
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex(c.after));
        EXPECT_TRUE(w.windowTitle().endsWith(c.title)) << w.windowTitle().toStdString();
        EXPECT_EQ(checkedEntries(w), c.checked);
    }
    EXPECT_TRUE(rig.line.frames().empty());
}

TEST(MainWindow, MenuChoicesAreWrittenAtOnceAndDropTheOfflineWord) {
    ConsoleRig rig;
    // The first and last entries are entries like any other.
    const std::array<const char*, 4> choices[] = {
        {"MenuBPS_5", "010000E10000", "COM1 At 57600", "MenuBPS_5 MenuCOM_1"},
        {"MenuCOM_3", "030000E10000", "COM3 At 57600", "MenuBPS_5 MenuCOM_3"},
        {"MenuBPS_0", "030080250000", "COM3 At 9600", "MenuBPS_0 MenuCOM_3"},
        {"MenuCOM_8", "080080250000", "COM8 At 9600", "MenuBPS_0 MenuCOM_8"}};
    for (const auto& [entry, file, title, checked] : choices) {
        rig.find<QAction>(QLatin1String(entry))->trigger();
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex(file)) << entry;
        EXPECT_EQ(checkedEntries(*rig.window), QLatin1String(checked));
        EXPECT_EQ(rig.window->windowTitle(),
                  "Halvex Remote Control Emulator Ver 2.00 Using " + QLatin1String(title));
    }
    EXPECT_TRUE(rig.shown.empty()) << "a write that went through was told as failed";
    EXPECT_EQ(rig.find<QAction>(QStringLiteral("MenuCOM_9")), nullptr) << "COM8 is the last";
}

TEST(MainWindow, DataWatchShowsTheLastFramesAndSilenceTurnsTheLampToFault) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    const auto shown = [&rig](const char* name) {
        return rig.window->dataWatch().findChild<QLineEdit*>(QLatin1String(name))->text();
    };
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return shown("TXData").startsWith("02 00 31 ") && shown("RXData").startsWith("06 00 31 ");
    }));
    rig.line.setConnected(false);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return rig.find<QPushButton>(QStringLiteral("StartBut"))->property("lamp") == "fault";
    }));
}

// Network control from the menu. What a client's requests do to the unit
// is the session's (its rotator test) and the headless program's (Hamlib's
// own rotctl against it).
TEST(NetworkControl, StartsAndStopsFromTheMenuAndCountsItsClients) {
    ConsoleRig rig;
    NetworkControl& control = rig.window->networkControl();
    const auto label = [&rig] { return rig.find<QLabel>(QStringLiteral("RotctldLabel"))->text(); };
    QAction* menu = rig.find<QAction>(QStringLiteral("MenuRotctld"));
    ASSERT_NE(menu, nullptr);
    control.setEndpoint(QHostAddress::LocalHost, 0);
    menu->trigger();
    ASSERT_TRUE(control.server().isListening());
    EXPECT_TRUE(menu->isChecked());
    EXPECT_EQ(label(), QStringLiteral("Network control on 127.0.0.1:%1, 0 clients")
                           .arg(control.server().serverPort()));
    network::LineClient client;
    ASSERT_TRUE(client.connectTo(control.server().serverPort()));
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return label().endsWith(", 1 client"); }));
    menu->trigger();
    EXPECT_FALSE(control.server().isListening());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(client.waitClosedByServer());
}

TEST(DataWatch, SpinnerWalksTheCodeTableAndOnlyFramesOfTheWatchedCodeAreCaptured) {
    DataWatch window;
    auto* label = window.findChild<QLabel*>(QStringLiteral("Label5"));
    auto* spinner = window.findChild<QWidget*>(QStringLiteral("SpinButton1"));
    auto* up = spinner->findChild<QToolButton*>(QStringLiteral("up"));
    const auto line = [&window](const char* name) {
        return window.findChild<QLineEdit*>(QLatin1String(name))->text();
    };
    // "92" would match at characters 4..5 of a short line if the length test
    // were missing; with "31" watched, a five-character "06 31" must not match.
    window.showReceivedFrame(QStringLiteral("06 31"));
    EXPECT_TRUE(line("CapRXData").isEmpty());
    window.showReceivedFrame(QStringLiteral("06 00 31"));
    EXPECT_EQ(line("CapRXData"), QStringLiteral("06 00 31"));

    // Down from the first code is the last; all the way round passes only
    // codes of the table (0x3A cannot be watched).
    QTest::mouseClick(spinner->findChild<QToolButton*>(QStringLiteral("down")), Qt::LeftButton);
    QStringList seen;
    for (int i = 0; i < DataWatch::kCodeCount; ++i) {
        QTest::mouseClick(up, Qt::LeftButton);
        seen << label->text();
    }
    EXPECT_EQ(seen.join(QLatin1Char(' ')),
              QStringLiteral("31 32 33 34 35 36 37 40 41 42 43 50 51 52 53 54 55 56 60 61 62 63 "
                             "64 65 70 71 75 80 81 82 83 84 85 90 91 92 93 94 95 97 98 99 9B 9C "
                             "9D 9E 9F A1 A2"));
    while (label->text() != QStringLiteral("92")) {
        QTest::mouseClick(up, Qt::LeftButton);
    }

    const QString watched = QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03");
    window.showSentFrame(watched);
    EXPECT_EQ(line("CapTXData"), watched);
    window.showSentFrame(QStringLiteral("02 01 31 00 00 00 00 00 00 30 03"));
    window.showSentFrame(QStringLiteral("02 1B 03 92 80 11 03"));  // escaped address: not captured
    EXPECT_EQ(line("CapTXData"), watched);
    window.showReceivedFrame(QStringLiteral("06 01 92 10 03"));
    EXPECT_EQ(line("CapRXData"), QStringLiteral("06 01 92 10 03"));
}

// Unit > Remote Control offers the standard ports, starts a bridge, keeps
// its settings for the next start and shows its clients; a value that cannot
// be used is told and starts nothing.
TEST(RemoteControl, TheDialogStartsABridgeKeepsItsSettingsAndShowsItsClients) {
    ConsoleRig rig;
    rig.find<QAction>(QStringLiteral("MenuRemoteControl"))->trigger();
    auto* dialog = rig.find<QDialog>(QStringLiteral("RemoteControlDialog"));
    ASSERT_NE(dialog, nullptr);
    const auto text = [&rig](const char* name) {
        return rig.find<QLineEdit>(QLatin1String(name))->text();
    };
    EXPECT_EQ(text("OnvifPortBox"), QStringLiteral("8080"));
    EXPECT_EQ(text("ViscaPortBox"), QStringLiteral("52381"));
    EXPECT_EQ(text("PelcoPortBox"), QStringLiteral("4001"));
    auto* baud = rig.find<QComboBox>(QStringLiteral("PelcoBaudCombo"));
    QStringList bauds;
    for (int i = 0; i < baud->count(); ++i) {
        bauds << baud->itemText(i);
    }
    EXPECT_EQ(bauds, (QStringList{"2400", "4800", "9600"}));
    EXPECT_EQ(baud->currentText(), QStringLiteral("2400"));  // as keyboards come
    auto* table = rig.find<QTableWidget>(QStringLiteral("RemoteStatusTable"));
    const auto cell = [table](int row, int column) { return table->item(row, column)->text(); };
    EXPECT_EQ(cell(2, 1), QStringLiteral("off"));
    // The one message a press showed, forgotten once read.
    const auto told = [&rig] {
        const QString text = rig.shown.size() == 1 ? rig.shown[0].text : QString();
        rig.shown.clear();
        return text;
    };

    rig.find<QCheckBox>(QStringLiteral("OnvifCheck"))->setChecked(true);
    rig.find<QLineEdit>(QStringLiteral("OnvifUserBox"))->setText(QStringLiteral("admin"));
    rig.find<QPushButton>(QStringLiteral("RemoteApplyBut"))->click();
    EXPECT_EQ(told(), QStringLiteral("ONVIF needs a user and a password."));
    rig.find<QCheckBox>(QStringLiteral("OnvifCheck"))->setChecked(false);

    const quint16 port = closedPort();
    rig.find<QCheckBox>(QStringLiteral("ViscaCheck"))->setChecked(true);
    rig.find<QLineEdit>(QStringLiteral("ViscaPortBox"))->setText(QString::number(port));
    // A drive runs to its stop.
    rig.find<QSpinBox>(QStringLiteral("ViscaRefreshSpin"))->setValue(0);
    rig.find<QPushButton>(QStringLiteral("RemoteApplyBut"))->click();
    EXPECT_EQ(cell(2, 1), QStringLiteral("127.0.0.1:%1").arg(port));
    EXPECT_EQ(loadBridgeSettings().viscaPort, port);
    QTcpSocket controller;
    controller.connectToHost(QHostAddress::LocalHost, port);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return cell(2, 3) == QStringLiteral("1"); }));

    // A keyboard on a serial line with no device named.
    rig.find<QCheckBox>(QStringLiteral("PelcoCheck"))->setChecked(true);
    rig.find<QRadioButton>(QStringLiteral("PelcoSerialOption"))->setChecked(true);
    rig.find<QPushButton>(QStringLiteral("RemoteOkBut"))->click();
    EXPECT_EQ(told(), QStringLiteral("Enter the serial device the Pelco-D keyboard is on."));
    EXPECT_EQ(cell(2, 1), QStringLiteral("127.0.0.1:%1").arg(port));  // left running

    // A keyboard over TCP; the form shows it again when next opened.
    const quint16 pelcoPort = closedPort();
    rig.find<QRadioButton>(QStringLiteral("PelcoTcpOption"))->setChecked(true);
    rig.find<QLineEdit>(QStringLiteral("PelcoPortBox"))->setText(QString::number(pelcoPort));
    rig.find<QPushButton>(QStringLiteral("RemoteApplyBut"))->click();
    EXPECT_EQ(cell(3, 1), QStringLiteral("127.0.0.1:%1").arg(pelcoPort));
    {
        RemoteControlDialog again(rig.window->remoteBridges(), rig.window->networkControl(),
                                  rig.window->messages());
        EXPECT_TRUE(again.findChild<QCheckBox*>(QStringLiteral("PelcoCheck"))->isChecked());
        EXPECT_TRUE(again.findChild<QRadioButton*>(QStringLiteral("PelcoTcpOption"))->isChecked());
        EXPECT_EQ(again.findChild<QSpinBox*>(QStringLiteral("ViscaRefreshSpin"))->value(), 0);
    }

    rig.find<QCheckBox>(QStringLiteral("ViscaCheck"))->setChecked(false);
    rig.find<QCheckBox>(QStringLiteral("PelcoCheck"))->setChecked(false);
    rig.find<QPushButton>(QStringLiteral("RemoteOkBut"))->click();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_FALSE(rig.window->remoteBridges().state(RemoteBridges::Kind::Visca).running);
    EXPECT_EQ(loadBridgeSettings().viscaPort, std::nullopt);
}
