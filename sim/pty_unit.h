#pragma once

// The virtual unit on a pseudo-terminal: whatever opens the slave device
// talks to the unit as to hardware on a serial port.

#include <QString>

#include "sim/stream_unit.h"

namespace halvex::sim {

class PtyUnit : public StreamUnit {
    Q_OBJECT

  public:
    explicit PtyUnit(const PtyUnitOptions& options, QObject* parent = nullptr);
    ~PtyUnit() override;

    // Creates the pseudo-terminal. False, with a reason, when it cannot.
    bool open(QString* error = nullptr);
    // The device the console opens, e.g. /dev/pts/5; empty before open().
    QString slavePath() const { return slavePath_; }

  protected:
    void lineEnded() override;
    long writeLine(const Byte* bytes, std::size_t count) override;

  private:
    int master_ = -1;
    // Kept open so that the line settings stay raw and the master never
    // sees a hang-up while no console has the device open.
    int slave_ = -1;
    QString slavePath_;
    QTimer resumeTimer_;
};

}  // namespace halvex::sim
