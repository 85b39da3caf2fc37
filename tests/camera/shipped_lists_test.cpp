// The control lists shipped beside the binaries load cleanly, every command
// in them converts, and the VISCA list's "Zoom Tele" reaches the virtual
// camera as a command it answers.

#include <gtest/gtest.h>

#include <QDir>
#include <algorithm>

#include "camera/control_list.h"
#include "camera/transmit_string.h"
#include "sim/camera.h"

namespace halvex {
namespace {

const QString kDataFolder = QStringLiteral(HALVEX_DATA_OUT);

ControlList loadShipped(const QString& name) {
    ControlList list;
    EXPECT_EQ(loadControlList(QDir(kDataFolder).filePath(name), list), QString());
    return list;
}

const CclCommand* find(const ControlList& list, const QString& name) {
    const auto found = std::find_if(list.commands.begin(), list.commands.end(),
                                    [&](const CclCommand& c) { return c.name == name; });
    return found == list.commands.end() ? nullptr : &*found;
}

TEST(ShippedControlLists, LoadWithoutFaultsAndEveryCommandConverts) {
    const QStringList files = listControlListFiles(kDataFolder);
    EXPECT_TRUE(files.contains("SONY-VISCA.CCL"));
    EXPECT_TRUE(files.contains("PANASONIC-AW.CCL"));
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const ControlList list = loadShipped(file);
        EXPECT_TRUE(list.header.contains("Cam")) << "the header says which cameras it suits";
        EXPECT_GE(list.commands.size(), 12u);
        for (const CclCommand& command : list.commands) {
            SCOPED_TRACE(command.name.toStdString());
            const TransmitString sent = buildTransmitString(
                command.text, command.isHex() ? TransmitMode::Hex : TransmitMode::Ascii,
                !command.isHex(), 0);
            EXPECT_FALSE(sent.refused()) << sent.messageText.toStdString();
            EXPECT_GT(sent.command.size(), 2u);
        }
    }
}

TEST(ShippedControlLists, ViscaListIsHexAndPanasonicListIsAscii) {
    for (const CclCommand& command : loadShipped("SONY-VISCA.CCL").commands) {
        EXPECT_TRUE(command.isHex()) << command.name.toStdString();
        EXPECT_TRUE(command.text.endsWith("FF")) << "every VISCA packet ends with FF";
    }
    for (const CclCommand& command : loadShipped("PANASONIC-AW.CCL").commands) {
        EXPECT_FALSE(command.isHex()) << command.name.toStdString();
        EXPECT_TRUE(command.text.startsWith('#'));
    }
}

TEST(ShippedControlLists, ZoomTeleToCamera1IsAnsweredByTheVirtualCamera) {
    const ControlList list = loadShipped("SONY-VISCA.CCL");
    const CclCommand* zoomTele = find(list, "Zoom Tele");
    ASSERT_NE(zoomTele, nullptr);
    ASSERT_TRUE(zoomTele->isHex());

    const TransmitString sent = buildTransmitString(zoomTele->text, TransmitMode::Hex, false, 0);
    ASSERT_FALSE(sent.refused());
    EXPECT_EQ(sent.command,
              (std::vector<std::uint8_t>{0x62, 6, 0x81, 0x01, 0x04, 0x07, 0x02, 0xFF}));

    // What the unit hands to camera 1's port: the data after the length byte.
    const std::vector<Byte> data(sent.command.begin() + 2, sent.command.end());
    sim::CameraPort camera;
    const Byte port9600 = 0x01;
    const Byte timeoutSteps = 10;
    camera.send(data, 0, port9600, timeoutSteps, {});
    EXPECT_EQ(camera.takeReady(1000), (std::vector<Byte>{0x90, 0x41, 0xFF, 0x90, 0x51, 0xFF}))
        << "acknowledged, then completed";
}

}  // namespace
}  // namespace halvex
