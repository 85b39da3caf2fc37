#include <gtest/gtest.h>

#include <QFile>
#include <QPushButton>

#include "tests/camera/camera_rig.h"
#include "window/help_box.h"

using namespace halvex;
using namespace halvex::testing;

TEST(HelpWindow, ShowsEachHelpFileInPlaceClosesByHidingAndReportsBadFiles) {
    CameraRig rig;
    rig.click("SerHelpBut");
    HelpBox* help = rig.features()->helpBox();
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->windowTitle(), "Camera Control And Configuration");
    EXPECT_EQ(help->parent(), nullptr);  // not tied to the main window
    const QString camera = help->RichTextBox1->toPlainText();
    EXPECT_TRUE(camera.contains("control list", Qt::CaseInsensitive));

    rig.showPage(3);
    rig.click("TourHelpBut");
    EXPECT_EQ(rig.features()->helpBox(), help);
    EXPECT_EQ(help->windowTitle(), "Tour Setup");
    EXPECT_NE(help->RichTextBox1->toPlainText(), camera);
    EXPECT_TRUE(help->RichTextBox1->toPlainText().contains("tour", Qt::CaseInsensitive));

    QTest::mouseClick(help->Command1, Qt::LeftButton);
    EXPECT_EQ(help->Command1->text(), "Close");
    EXPECT_FALSE(help->isVisible());
    rig.showPage(4);
    rig.click("SerHelpBut");
    EXPECT_TRUE(help->isVisible());
    EXPECT_EQ(help->RichTextBox1->toPlainText(), camera);
    EXPECT_TRUE(rig.shown.empty());

    // A file that is not RTF, then a missing one: the message, and the
    // window keeps what it showed, hidden.
    QTest::mouseClick(help->Command1, Qt::LeftButton);
    QTemporaryDir folder;
    rig.features()->setDataFolder(folder.path());
    QFile notRtf(folder.filePath("Tour Help.RTF"));
    ASSERT_TRUE(notRtf.open(QIODevice::WriteOnly));
    notRtf.write("Plain text pretending to be help\n");
    notRtf.close();
    for (const char* button : {"TourHelpBut", "SerHelpBut"}) {  // not RTF, then missing
        rig.shown.clear();
        rig.showPage(button[0] == 'T' ? 3 : 4);
        rig.click(button);
        ASSERT_EQ(rig.shown.size(), 1u) << button;
        EXPECT_EQ(rig.shown[0].title, "Could Not Open Help File");
        EXPECT_EQ(rig.shown[0].text,
                  "There was a problem opening the RTF help file. Please be sure it is in the same "
                  "directory as your application.");
        EXPECT_FALSE(help->isVisible());
        EXPECT_EQ(help->windowTitle(), "Camera Control And Configuration");
        EXPECT_EQ(help->RichTextBox1->toPlainText(), camera);
    }
}
