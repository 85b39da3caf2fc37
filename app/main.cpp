#include <QApplication>
#include <QCommandLineParser>

#include "ui/messages.h"
#include "ui/vornixu.h"

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("halvex"));
    QApplication::setApplicationVersion(QStringLiteral("2.0"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Operator console for Halvex pan & tilt units"));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);

    halvex::VornixU window;
    const QString settingsError = window.Form_Load();
    window.show();
    if (!settingsError.isEmpty()) {
        halvex::Messages::exclamation(&window, QStringLiteral("Settings File"), settingsError);
    }
    return QApplication::exec();
}
