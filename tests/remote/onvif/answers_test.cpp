// Every question a client asks before it moves anything (the device, its
// services, profiles, nodes, configurations, status and presets), and a
// fault as a client reads it, against the answers kept in answers.txt, whole. Clients read many
// fields that no other test names; this keeps each answer as it was checked.
//
// After a deliberate change, write the answers again with
// HALVEX_WRITE_ONVIF_ANSWERS=1 and read the difference before keeping it.

#include <QTimeZone>
#include <QXmlStreamReader>
#include <map>

#include "tests/remote/onvif/onvif_rig.h"
#include "tests/support/kept_text.h"

namespace halvex::testing {
namespace {

// The envelope one element to a line, indented, with the prefixes as sent,
// so that a difference shows where it is.
QString indented(const QByteArray& xml) {
    QXmlStreamReader in(xml);
    QStringList lines;
    QString indent;
    QString text;  // of the element just opened
    bool open = false;
    while (!in.atEnd()) {
        in.readNext();
        if (in.isStartElement()) {
            QString line = indent + QLatin1Char('<') + in.qualifiedName().toString();
            for (const QXmlStreamNamespaceDeclaration& d : in.namespaceDeclarations()) {
                line += QStringLiteral(" xmlns:%1=\"%2\"").arg(d.prefix(), d.namespaceUri());
            }
            for (const QXmlStreamAttribute& a : in.attributes()) {
                line += QStringLiteral(" %1=\"%2\"")
                            .arg(a.qualifiedName(), a.value().toString().toHtmlEscaped());
            }
            lines << line + QLatin1Char('>');
            indent += QLatin1Char(' ');
            text.clear();
            open = true;
        } else if (in.isCharacters() && !in.isWhitespace()) {
            text += in.text().toString().toHtmlEscaped();
        } else if (in.isEndElement()) {
            indent.chop(1);
            const QString end = QStringLiteral("</%1>").arg(in.qualifiedName());
            if (open && text.isEmpty()) {
                lines.last().insert(lines.last().size() - 1, QLatin1Char('/'));
            } else if (open) {
                lines.last() += text + end;  // <tt:Min>-170</tt:Min> on one line
            } else {
                lines << indent + end;
            }
            open = false;
        }
    }
    return in.hasError() ? QStringLiteral("unreadable: ") + in.errorString() : lines.join('\n');
}

TEST_F(OnvifTest, EveryQuestionIsAnsweredAsTheKeptAnswersSay) {
    unit.state().presets.at(9) = {-8500, 4250, {200, 10, 50, 20}};  // each lens apart
    ASSERT_TRUE(connect());
    ASSERT_TRUE(finish(session.reloadPresets()).isDone());
    server.setAnonymousAllowed(true);
    server.services().setClock(
        [] { return QDateTime(QDate(2026, 11, 25), QTime(10, 20, 30), QTimeZone::utc()); });
    // Each to the service of its prefix.
    const char* questions[] = {
        "<tds:GetDeviceInformation/>",
        "<tds:GetCapabilities/>",
        "<tds:GetServices/>",
        "<tds:GetSystemDateAndTime/>",
        "<tds:GetScopes/>",
        "<trt:GetProfiles/>",
        "<trt:GetProfile><trt:ProfileToken>profile2</trt:ProfileToken></trt:GetProfile>",
        "<trt:GetVideoSources/>",
        "<tptz:GetNodes/>",
        "<tptz:GetNode><tptz:NodeToken>unit</tptz:NodeToken></tptz:GetNode>",
        "<tptz:GetConfigurations/>",
        "<tptz:GetConfiguration><tptz:PTZConfigurationToken>ptz2"
        "</tptz:PTZConfigurationToken></tptz:GetConfiguration>",
        "<tptz:GetConfigurationOptions><tptz:ConfigurationToken>ptz1"
        "</tptz:ConfigurationToken></tptz:GetConfigurationOptions>",
        "<tptz:GetStatus><tptz:ProfileToken>profile2</tptz:ProfileToken></tptz:GetStatus>",
        "<tptz:GetPresets><tptz:ProfileToken>profile1</tptz:ProfileToken></tptz:GetPresets>",
        "<tptz:GotoPreset><tptz:ProfileToken>profile1</tptz:ProfileToken>"
        "<tptz:PresetToken>31</tptz:PresetToken></tptz:GotoPreset>"};
    const std::map<QByteArray, QByteArray> services = {
        {"tds", "device_service"}, {"trt", "media_service"}, {"tptz", "ptz_service"}};
    QString now;
    for (const char* question : questions) {
        const QByteArray path = "/onvif/" + services.at(QByteArray(question).mid(1).split(':')[0]);
        const QByteArray response =
            post(envelope(QLatin1String(question), QString()), path.constData());
        now += QStringLiteral("> %1 %2\n< %3\n")
                   .arg(QLatin1String(path), QLatin1String(question),
                        QString::number(statusOf(response)))
                   .append(indented(bodyOf(response)))
                   .append(QLatin1Char('\n'));
    }

    expectAsKept(now.toStdString(), HALVEX_ONVIF_TEST_DATA "/answers.txt",
                 "HALVEX_WRITE_ONVIF_ANSWERS");
}

}  // namespace
}  // namespace halvex::testing
