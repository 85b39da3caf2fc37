#pragma once

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

    void registerDecoders();
    void registerReads(ReadHandlers& reads);

    void CurrIDScroll_Change(int value);
    void SetIDBut_Click();
    void BSetIDBut_Click();
    void GetIDBut_Click();
    void SetTOBut_Click();
    void GetTOBut_Click();
    void HeatOp_Click(int index);
    void GetHeatBut_Click();
    void RevBut_Click();
    void PassEntBut_Click();

    // "Rev 2.03  15/06/2011": revision and clock date in the short date form
    // of the system. A date the calendar rejects is a range fault.
    static QString revisionCaption(Byte major, Byte minor, Byte day, Byte month, Byte year);

  private:
    void connectControls();
    void send(const std::vector<Byte>& message);
    void decodeAddress();
    void decodeCommTimeout();
    void decodeHeater();
    void decodeFirmware();

    ConsoleContext& context_;
    SetupPage& page_;
    FactoryPage& factory_;
    // False while a reply selects the heater option, so that nothing is sent.
    bool HeaterEcho = true;
};

}  // namespace halvex
