#include "camera/camera_lists.h"

#include <QDir>

#include "console/handler_wiring.h"
#include "views/pages/camera_page.h"

namespace halvex {

CameraLists::CameraLists(ConsoleContext& context, CameraPage& page, std::function<QString()> folder,
                         QObject* parent)
    : QObject(parent), context_(context), page_(page), folder_(std::move(folder)) {
    for (int camera = 0; camera < 2; ++camera) {
        const std::size_t c = index(camera);
        onEvent(context_.state, page_.CamTypeBut[c], &QPushButton::clicked, this,
                "CamTypeBut_Click", [this, camera] { CamTypeBut_Click(camera); });
        onEvent(context_.state, page_.CamTypeCombo[c], &QComboBox::activated, this,
                "CamTypeCombo_Click",
                [this, camera](int item) { CamTypeCombo_Click(camera, item); });
    }
}

void CameraLists::CamTypeBut_Click(int camera) {
    const std::size_t c = index(camera);
    CclListMode[c] = -1;
    QComboBox* combo = page_.CamTypeCombo[c];
    combo->clear();
    const QStringList files = listControlListFiles(folder_());
    if (files.isEmpty()) {
        page_.Label26[c]->setText(QStringLiteral("No CCL Files Found"));
        combo->setEnabled(false);
        return;
    }
    combo->addItems(files);
    combo->setCurrentIndex(-1);  // nothing is picked until the operator picks
    combo->setEnabled(true);
    page_.Label26[c]->setText(QStringLiteral("Select CCL File"));
}

void CameraLists::CamTypeCombo_Click(int camera, int item) {
    const std::size_t c = index(camera);
    if (item < 0 || item >= page_.CamTypeCombo[c]->count()) {
        return;
    }
    if (CclListMode[c] == -1) {
        loadFile(camera, page_.CamTypeCombo[c]->itemText(item));
    } else {
        pickCommand(camera, item);
    }
}

void CameraLists::loadFile(int camera, const QString& fileName) {
    const std::size_t c = index(camera);
    ControlList& list = lists_[c];
    const QString error = loadControlList(QDir(folder_()).filePath(fileName), list);
    if (!error.isEmpty()) {
        context_.messages.exclamation(QStringLiteral("Camera Control List"), error);
        if (list.header.isEmpty() && list.commands.empty()) {
            CamTypeBut_Click(camera);  // nothing read: offer the files again
            return;
        }
    }
    // What was read before a fault stays usable.
    QComboBox* combo = page_.CamTypeCombo[c];
    combo->clear();
    for (const CclCommand& command : list.commands) {
        combo->addItem(command.name);
    }
    combo->setCurrentIndex(-1);
    page_.Label26[c]->setText(list.header);
    CclListMode[c] = 0;
}

void CameraLists::pickCommand(int camera, int record) {
    const std::size_t c = index(camera);
    // The combo holds one item per command, and its click handler has
    // checked the item against it.
    const CclCommand& command = lists_[c].commands[static_cast<std::size_t>(record)];
    if (command.isHex()) {
        page_.HexOp1[c]->setChecked(true);  // which clears the CR box
    } else {
        page_.AscOp1[c]->setChecked(true);
    }
    page_.TXBox[c]->setText(command.text);
}

}  // namespace halvex
