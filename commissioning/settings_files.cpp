#include "commissioning/settings_files.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include "commissioning/settings_text.h"

namespace halvex::commissioning {

SettingsFileRead loadSettingsFile(const QString& path) {
    SettingsFileRead result;
    const QString name = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.problem = QStringLiteral("%1 cannot be read: %2.").arg(name, file.errorString());
        return result;
    }
    // One byte past the limit is enough to know the file is too large.
    const QByteArray bytes = file.read(static_cast<qint64>(kMostBytes) + 1);
    SettingsRead read = readSettingsText(std::string_view(bytes.constData(), bytes.size()));
    if (!read.settings) {
        result.problem = QStringLiteral("%1 was refused, and nothing was sent: %2.")
                             .arg(name, QString::fromStdString(read.problem));
        return result;
    }
    result.settings = std::move(read.settings);
    return result;
}

QString saveSettingsFile(const QString& path, const UnitSettings& settings) {
    QSaveFile file(path);
    const std::string text = writeSettingsText(settings);
    // Unbuffered: a buffered write that the disk cuts short still commits.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) ||
        file.write(text.data(), static_cast<qint64>(text.size())) !=
            static_cast<qint64>(text.size()) ||
        !file.commit()) {
        return QStringLiteral("%1 cannot be written: %2.")
            .arg(QFileInfo(path).fileName(), file.errorString());
    }
    return {};
}

std::string savedNow() {
    return QDateTime::currentDateTime()
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
        .toStdString();
}

QString unitDescription(const UnitIdentity& identity) {
    return QStringLiteral("unit %1 (controller type %2, firmware %3)")
        .arg(identity.address)
        .arg(identity.controllerType)
        .arg(QString::fromStdString(firmwareText(identity)));
}

}  // namespace halvex::commissioning
