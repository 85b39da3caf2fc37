#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "tests/camera/camera_rig.h"
#include "tests/support/online_suite.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QStringList items(QComboBox* combo) {
    QStringList names;
    for (int i = 0; i < combo->count(); ++i) {
        names << combo->itemText(i);
    }
    return names;
}
}  // namespace

TEST(CameraLists, ListFilesLoadAListAndPickCommandsPerCamera) {
    CameraRig rig;
    QTemporaryDir lists;
    rig.features()->setDataFolder(lists.path());
    auto* combo1 = rig.at<QComboBox>(QStringLiteral("CamTypeCombo_0"));
    auto* combo2 = rig.at<QComboBox>(QStringLiteral("CamTypeCombo_1"));

    rig.click(QStringLiteral("CamTypeBut_0"));
    EXPECT_EQ(rig.text(QStringLiteral("Label26_0")), QStringLiteral("No CCL Files Found"));
    EXPECT_FALSE(combo1->isEnabled());

    write(lists.filePath(QStringLiteral("long.CCL")),
          "\"Long camera\"\n"
          "  \"Zoom, fast\" , H , \"81 01 04 07 27 FF\"\n"
          "\"Say hello\",A,\"hello there\"\n"
          "Plain name  ,H,0A0B  \n");
    write(lists.filePath(QStringLiteral("Short.ccl")),
          "\"Short camera\"\n\"Lower h\",h,\"1234\"\n");
    write(lists.filePath(QStringLiteral("cut.CCL")),
          "\"Cut camera\"\n\"Whole\",A,\"x\"\n\"Cut\",H\n");
    write(lists.filePath(QStringLiteral("notes.txt")), "not a list");

    rig.click(QStringLiteral("CamTypeBut_0"));
    EXPECT_EQ(items(combo1), QStringList({"cut.CCL", "long.CCL", "Short.ccl"}));
    EXPECT_TRUE(combo1->isEnabled());
    EXPECT_EQ(rig.text(QStringLiteral("Label26_0")), QStringLiteral("Select CCL File"));

    rig.pick(0, QStringLiteral("long.CCL"));
    EXPECT_EQ(rig.text(QStringLiteral("Label26_0")), QStringLiteral("Long camera"));
    EXPECT_EQ(items(combo1), QStringList({"Zoom, fast", "Say hello", "Plain name"}));

    // Picking fills the transmit box and its mode; hex clears the CR box.
    auto* box = rig.at<QLineEdit>(QStringLiteral("TXBox_0"));
    auto* cr = rig.at<QCheckBox>(QStringLiteral("CRCheck_0"));
    cr->setChecked(true);
    rig.pick(0, QStringLiteral("Zoom, fast"));
    EXPECT_EQ(box->text(), QStringLiteral("81 01 04 07 27 FF"));
    EXPECT_TRUE(rig.at<QRadioButton>(QStringLiteral("HexOp1_0"))->isChecked());
    EXPECT_FALSE(cr->isChecked());
    cr->setChecked(true);  // refused in hex mode
    EXPECT_FALSE(cr->isChecked());
    rig.pick(0, QStringLiteral("Say hello"));
    EXPECT_EQ(box->text(), QStringLiteral("hello there"));
    EXPECT_TRUE(rig.at<QRadioButton>(QStringLiteral("AscOp1_0"))->isChecked());
    rig.pick(0, QStringLiteral("Plain name"));
    EXPECT_EQ(box->text(), QStringLiteral("0A0B"));

    // Camera 2 has a list of its own; only the exact "H" means hex.
    rig.click(QStringLiteral("CamTypeBut_1"));
    rig.pick(1, QStringLiteral("Short.ccl"));
    rig.pick(1, QStringLiteral("Lower h"));
    EXPECT_TRUE(rig.at<QRadioButton>(QStringLiteral("AscOp1_1"))->isChecked());
    EXPECT_EQ(items(combo1).size(), 3);
    EXPECT_EQ(rig.text(QStringLiteral("Label26_0")), QStringLiteral("Long camera"));

    // A shorter list after a longer one: only its own commands.
    rig.click(QStringLiteral("CamTypeBut_0"));
    rig.pick(0, QStringLiteral("Short.ccl"));
    EXPECT_EQ(items(combo1), QStringList({"Lower h"}));
    rig.pick(0, QStringLiteral("Lower h"));
    EXPECT_EQ(box->text(), QStringLiteral("1234"));

    // A record cut short: a message naming file and line, and what was read stays.
    rig.click(QStringLiteral("CamTypeBut_0"));
    rig.pick(0, QStringLiteral("cut.CCL"));
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_TRUE(rig.shown[0].text.contains(QStringLiteral("\"cut.CCL\"")));
    EXPECT_TRUE(rig.shown[0].text.contains(QStringLiteral("line 3")));
    EXPECT_EQ(items(combo1), QStringList({"Whole"}));

    // A file that went away: the message, and the files are offered again.
    rig.click(QStringLiteral("CamTypeBut_0"));
    QFile::remove(lists.filePath(QStringLiteral("long.CCL")));
    rig.pick(0, QStringLiteral("long.CCL"));
    ASSERT_EQ(rig.shown.size(), 2u);
    EXPECT_EQ(items(combo1), QStringList({"cut.CCL", "Short.ccl"}));
    EXPECT_EQ(items(combo2), QStringList({"Lower h"}));

    QTest::mouseDClick(box, Qt::LeftButton);  // double-click clears the box
    EXPECT_TRUE(box->text().isEmpty());
}

namespace {
// One console online for the transmit tests: each starts with ASCII, no CR.
class Transmit : public OnlineSuite<CameraRig> {
  protected:
    void SetUp() override {
        ASSERT_NE(shared_, nullptr);
        shared_->shown.clear();
        shared_->showPage(4);
        for (int c = 0; c < 2; ++c) {
            shared_->at<QRadioButton>(QStringLiteral("AscOp1_%1").arg(c))->setChecked(true);
            shared_->at<QCheckBox>(QStringLiteral("CRCheck_%1").arg(c))->setChecked(false);
        }
    }

    // Types `text` into camera c's box with the given options and presses TX.
    void send(int c, bool hex, bool cr, const QString& text) {
        CameraRig& rig = *shared_;
        rig.at<QCheckBox>(QStringLiteral("CRCheck_%1").arg(c))->setChecked(cr);
        if (hex) {
            rig.at<QRadioButton>(QStringLiteral("HexOp1_%1").arg(c))->setChecked(true);
        }
        rig.at<QLineEdit>(QStringLiteral("TXBox_%1").arg(c))->setText(text);
        rig.line.clear();
        rig.click(QStringLiteral("SendBut_%1").arg(c));
    }
};

std::vector<Byte> command(int lengthByte, const QByteArray& data) {
    std::vector<Byte> bytes{0x62, static_cast<Byte>(lengthByte)};
    for (const char c : data) {
        bytes.push_back(static_cast<Byte>(c));
    }
    return bytes;
}
}  // namespace

TEST_F(Transmit, BoxTextBecomesThePassThroughCommandOrIsRefused) {
    const QByteArray a80(80, 'a');
    struct Case {
        int camera;
        bool hex, cr;
        QString text;
        std::vector<Byte> wire;  // empty: refused with a message titled `title`
        QString box;             // the box afterwards
        const char* title = "";
    };
    const Case cases[] = {
        {0, false, false, "", command(0, ""), ""},
        {1, false, false, "", command(0x80, ""), ""},
        {0, false, true, "", command(1, "\r"), ""},
        {0, true, false, "   ", command(0, ""), ""},
        {0, true, false, "1 2 3 4", command(2, "\x12\x34"), "12 34 "},
        {1, true, false, "ff00", command(0x82, QByteArray("\xFF\x00", 2)), "FF 00 "},
        {0, false, false, " a b ", command(5, " a b "), " a b "},
        {0, false, false, QString(a80), command(80, a80), QString(a80)},
        {0, false, true, QString(79, 'z'), command(80, QByteArray(79, 'z') + "\r"),
         QString(79, 'z')},
        {1, false, false, QString(20, 'c'), command(0x94, QByteArray(20, 'c')), QString(20, 'c')},
        {0, false, false, QString::fromLatin1("caf\xE9"), command(4, "caf\xE9"),
         QString::fromLatin1("caf\xE9")},
        {0, true, false, "123", {}, "123", "Bad Hex TX String"},
        {1, true, false, "1g", {}, "1g", "Bad Hex TX String"},
        {0, false, false, QString(81, 'a'), {}, QString(81, 'a'), "TX String Too Long"},
        {1, false, false, QString(100000, 'a'), {}, QString(100000, 'a'), "TX String Too Long"},
        {0, false, true, QString(a80), {}, QString(a80), "TX String Too Long"},
        {0, false, false, "price \u20AC5", {}, "price \u20AC5", "Bad ASCII TX String"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        send(c.camera, c.hex, c.cr, c.text);
        EXPECT_EQ(shared_->nextSent(0x62, c.wire.empty() ? 300 : 2000), c.wire);
        EXPECT_EQ(shared_->at<QLineEdit>(QStringLiteral("TXBox_%1").arg(c.camera))->text(), c.box);
        ASSERT_EQ(shared_->shown.size(), c.wire.empty() ? 1u : 0u);
        if (c.wire.empty()) {
            EXPECT_EQ(shared_->shown[0].title, QString::fromLatin1(c.title));
        }
        EXPECT_FALSE(shared_->window->state().SendInProgress);
        SetUp();
    }
}
