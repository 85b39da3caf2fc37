#pragma once

#include <QString>
#include <vector>

namespace halvex::testing {

// A raw pseudo-terminal: the console opens slavePath() as its serial port,
// the test plays the unit on the master side.
class PtyPair {
  public:
    PtyPair();
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    bool ok() const { return master_ >= 0; }
    const QString& slavePath() const { return slavePath_; }

    void write(const std::vector<unsigned char>& bytes);
    // Reads what is there now (non-blocking).
    std::vector<unsigned char> readAvailable();
    // The unit's side goes away: the console's side hangs up.
    void closeUnitSide();

  private:
    int master_ = -1;
    int slave_ = -1;  // kept open so the line never hangs up between opens
    QString slavePath_;
};

}  // namespace halvex::testing
