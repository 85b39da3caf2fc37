#pragma once

// Where the console finds its control lists (*.CCL) and help files (*.RTF).

#include <QString>

namespace halvex {

// The program's own folder when it holds any of the data files (a build tree,
// or a copy unpacked in one folder); otherwise <program folder>/../share/halvex
// when that exists (an installed copy); otherwise the program's own folder.
QString dataFolder();

// The same choice for a program that lives in appDir.
QString dataFolderFor(const QString& appDir);

// fileName inside dataFolder().
QString dataFilePath(const QString& fileName);

}  // namespace halvex
