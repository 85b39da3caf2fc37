#include "tools/picture_fonts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace halvex {
namespace {

// fonts-dejavu-core, the package the README's commands install for this.
constexpr const char* kFontFolder = "/usr/share/fonts/truetype/dejavu";
constexpr const char* kFontFiles[] = {
    "DejaVuSans.ttf",          "DejaVuSans-Bold.ttf", "DejaVuSansMono.ttf",
    "DejaVuSansMono-Bold.ttf", "DejaVuSerif.ttf",     "DejaVuSerif-Bold.ttf",
};

// Only the fonts linked into FOLDER exist for fontconfig. The rendering rules
// are Debian's defaults, written out so that a machine's own choices in
// /etc/fonts change nothing either: slight hinting, antialiasing, the default
// LCD filter, and no hinting below 7.5 pixels for DejaVu. The families the
// pages ask for by name end in the generic family of their kind, any other
// in sans-serif, and each generic family is its DejaVu.
QString configuration(const QString& folder) {
    return QStringLiteral(R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <dir>%1/fonts</dir>
  <cachedir>%1/cache</cachedir>
  <match target="pattern">
    <edit name="hintstyle" mode="append"><const>hintslight</const></edit>
    <edit name="antialias" mode="append"><bool>true</bool></edit>
    <edit name="lcdfilter" mode="append"><const>lcddefault</const></edit>
  </match>
  <match target="font">
    <test name="pixelsize" compare="less"><double>7.5</double></test>
    <edit name="hinting"><bool>false</bool></edit>
  </match>
  <alias binding="same"><family>Sans Serif</family><accept><family>sans-serif</family></accept></alias>
  <alias binding="same"><family>Courier New</family><accept><family>monospace</family></accept></alias>
  <alias binding="same"><family>Courier</family><accept><family>monospace</family></accept></alias>
  <match target="pattern">
    <test qual="all" name="family" compare="not_eq"><string>sans-serif</string></test>
    <test qual="all" name="family" compare="not_eq"><string>serif</string></test>
    <test qual="all" name="family" compare="not_eq"><string>monospace</string></test>
    <edit name="family" mode="append_last"><string>sans-serif</string></edit>
  </match>
  <alias binding="same"><family>sans-serif</family><prefer><family>DejaVu Sans</family></prefer></alias>
  <alias binding="same"><family>serif</family><prefer><family>DejaVu Serif</family></prefer></alias>
  <alias binding="same"><family>monospace</family><prefer><family>DejaVu Sans Mono</family></prefer></alias>
</fontconfig>
)")
        .arg(folder.toHtmlEscaped());
}

}  // namespace

QString pinPictureFonts() {
    // Lives as long as the process: fontconfig reads the folder when the
    // toolkit first asks for a font, and may look again later.
    static QTemporaryDir scratch;
    if (!scratch.isValid()) {
        return QStringLiteral("no scratch folder for the fonts: %1").arg(scratch.errorString());
    }
    const QString folder = scratch.path();
    if (!QDir(folder).mkpath(QStringLiteral("fonts"))) {
        return QStringLiteral("cannot make %1/fonts").arg(folder);
    }
    for (const char* name : kFontFiles) {
        const QString source =
            QStringLiteral("%1/%2").arg(QLatin1String(kFontFolder), QLatin1String(name));
        if (!QFileInfo::exists(source)) {
            return QStringLiteral("%1 is missing (package fonts-dejavu-core)").arg(source);
        }
        const QString link = QStringLiteral("%1/fonts/%2").arg(folder, QLatin1String(name));
        if (!QFileInfo::exists(link) && !QFile::link(source, link)) {
            return QStringLiteral("cannot link %1 to %2").arg(link, source);
        }
    }
    QFile file(QStringLiteral("%1/fonts.conf").arg(folder));
    const QByteArray text = configuration(folder).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        return QStringLiteral("cannot write %1").arg(file.fileName());
    }
    file.close();
    qputenv("FONTCONFIG_FILE", file.fileName().toLocal8Bit());
    return {};
}

}  // namespace halvex
