#include "tests/support/console_rig.h"
#include <gtest/gtest.h>

#include <QAbstractButton>

#include "tests/support/finish.h"

namespace halvex::testing {

ConsoleRig::ConsoleRig(const sim::UnitOptions& options, int tickMs, int unitTimeScale)
    : previousDirectory(QDir::currentPath()),
      unit(options),
      line(unit, unitTimeScale),
      port(new TestPort(&line)) {
    QDir::setCurrent(directory.path());
    window = std::make_unique<VornixU>(
        port,
        [this](QWidget*, const Message& message) {
            shown.push_back(message);
            return presenterAnswer;
        },
        tickMs);
    window->Form_Load();
    window->show();
}

ConsoleRig::~ConsoleRig() {
    window.reset();
    QDir::setCurrent(previousDirectory);
}

bool ConsoleRig::connect() {
    click(QStringLiteral("StartBut"));
    return waitFor([this] { return window->windowTitle().endsWith(QStringLiteral(" Online")); },
                   20000);
}

void ConsoleRig::click(const QString& buttonName) {
    auto* button = window->findChild<QAbstractButton*>(buttonName);
    if (button == nullptr) {
        ADD_FAILURE() << "no button " << buttonName.toStdString();
        return;
    }
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
}

}  // namespace halvex::testing
