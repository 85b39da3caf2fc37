#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>

#include "console/console_context.h"

namespace halvex {

class SetupPage;
class FactoryPage;

// Which unit the console talks to and the unit's own address, its
// communication time-out, heater mode, firmware revision and clock date,
// and the access code that uncovers the factory controls.
class Identity : public QObject {
    Q_OBJECT
  public:
    Identity(ConsoleContext& context, SetupPage& page, FactoryPage& factory,
             QObject* parent = nullptr);

    void CurrIDScroll_Change(int value);
    QCoro::Task<> SetIDBut_Click();
    QCoro::Task<> BSetIDBut_Click();
    QCoro::Task<> GetIDBut_Click();
    QCoro::Task<> SetTOBut_Click();
    QCoro::Task<> GetTOBut_Click();
    // The option buttons act when they are checked, not when they clear.
    QCoro::Task<> HeatOp_Click(int index, bool on);
    QCoro::Task<> GetHeatBut_Click();
    QCoro::Task<> RevBut_Click();
    void PassEntBut_Click();

    // "Rev 2.03  15/06/2011": revision and clock date in the short date form
    // of the system. A date the calendar rejects is a range fault.
    static QString revisionCaption(const FirmwareRevision& revision);

  private:
    void connectControls();
    // The unit's replies, shown without sending anything. A value a control
    // cannot show is a range fault of the receive handler.
    void showAddress(int address);
    void showCommTimeout(int seconds);
    void showHeaterMode(int mode);
    void showFirmware(const FirmwareRevision& revision);

    ConsoleContext& context_;
    SetupPage& page_;
    FactoryPage& factory_;
    // False while a reply selects the heater option, so that nothing is sent.
    bool HeaterEcho = true;
};

}  // namespace halvex
