#include "console/data_folder.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace halvex;

TEST(DataFolder, PrefersDataBesideTheProgramThenTheInstalledShareFolder) {
    struct Layout {
        const char* what;
        QStringList files;    // relative to the top of the tree; the program is in bin/
        QStringList folders;  // likewise
        QString expected;     // the folder dataFolderFor("bin") should name
    };
    // clang-format off
    const Layout layouts[] = {
        {"control list beside the program", {"bin/PTZ.CCL"}, {"share/halvex"}, "bin"},
        {"installed copy: other files do not count", {"bin/HALVEX.BIN", "bin/notes.txt", "share/halvex/PTZ.CCL"}, {}, "share/halvex"},
        {"nor a folder named like help", {}, {"bin/OLD.RTF", "share/halvex"}, "share/halvex"},
        {"nothing installed: share/halvex is a file", {"share/halvex"}, {"bin"}, "bin"},
    };
    // clang-format on
    for (const auto& layout : layouts) {
        QTemporaryDir top;
        ASSERT_TRUE(top.isValid());
        const QDir root(top.path());
        for (const auto& folder : layout.folders) {
            ASSERT_TRUE(root.mkpath(folder)) << layout.what;
        }
        for (const auto& file : layout.files) {
            ASSERT_TRUE(root.mkpath(QFileInfo(file).path())) << layout.what;
            QFile out(root.filePath(file));
            ASSERT_TRUE(out.open(QIODevice::WriteOnly)) << layout.what;
            out.write("x");
        }
        const std::string expected = root.filePath(layout.expected).toStdString();
        EXPECT_EQ(dataFolderFor(root.filePath(QStringLiteral("bin"))).toStdString(), expected)
            << layout.what;
        // The printed folder is a plain path, with no "bin/.." in it.
        EXPECT_EQ(dataFolderFor(root.filePath(QStringLiteral("bin/."))).toStdString(), expected)
            << layout.what;
    }
}
