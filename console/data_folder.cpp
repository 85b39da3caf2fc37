#include "console/data_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace halvex {

namespace {

// Name filters match regardless of case unless QDir::CaseSensitive is given,
// so "help.rtf" and "Pelco.ccl" count as well.
bool holdsDataFiles(const QString& folder) {
    const QDir dir(folder, QString(), QDir::NoSort, QDir::Files);
    return !dir.entryList({QStringLiteral("*.RTF"), QStringLiteral("*.CCL")}).isEmpty();
}

}  // namespace

QString dataFolderFor(const QString& appDir) {
    const QString own = QDir::cleanPath(appDir);
    if (holdsDataFiles(own)) {
        return own;
    }
    const QString shared = QDir::cleanPath(own + QStringLiteral("/../share/halvex"));
    if (QFileInfo(shared).isDir()) {
        return shared;
    }
    return own;
}

QString dataFolder() {
    return dataFolderFor(QCoreApplication::applicationDirPath());
}

QString dataFilePath(const QString& fileName) {
    return QDir(dataFolder()).filePath(fileName);
}

}  // namespace halvex
