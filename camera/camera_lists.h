#pragma once

#include <QObject>
#include <array>
#include <functional>

#include "camera/control_list.h"
#include "console/console_context.h"

namespace halvex {

class CameraPage;

// The control lists of the two cameras: "Set Cam n CCL" lists the *.CCL
// files of the data folder, picking a file loads its commands, picking a
// command fills the camera's transmit box. Nothing is sent from here.
class CameraLists : public QObject {
    Q_OBJECT
  public:
    // `folder` names the folder that holds the lists, asked on every click.
    CameraLists(ConsoleContext& context, CameraPage& page, std::function<QString()> folder,
                QObject* parent = nullptr);

    void CamTypeBut_Click(int camera);
    void CamTypeCombo_Click(int camera, int index);

    // True while the camera's list shows file names, false once it holds commands.
    bool listsFiles(int camera) const { return CclListMode[index(camera)] == -1; }
    const ControlList& list(int camera) const { return lists_[index(camera)]; }

  private:
    static std::size_t index(int camera) { return camera == 1 ? 1 : 0; }
    void loadFile(int camera, const QString& fileName);
    void pickCommand(int camera, int record);

    ConsoleContext& context_;
    CameraPage& page_;
    std::function<QString()> folder_;
    std::array<int, 2> CclListMode{-1, -1};
    std::array<ControlList, 2> lists_;
};

}  // namespace halvex
