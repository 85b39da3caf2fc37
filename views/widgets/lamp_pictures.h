#pragma once

#include <QIcon>

namespace halvex {

// The link lamp shown on the start button: green when the last reply was
// good, red after a fault. Drawn, so no image files are needed.
QIcon goodLinkPicture();   // Picture1
QIcon faultLinkPicture();  // Picture2
QIcon idleLinkPicture();   // before anything was exchanged

}  // namespace halvex
