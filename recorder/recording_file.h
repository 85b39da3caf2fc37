#pragma once

#include <QFile>
#include <QString>

#include "protocol/line_record.h"

namespace halvex {

// A recording being written: the pcapng header when it opens, then one block
// a record, each handed to the system at once, so a console that dies
// leaves every frame before it in the file.
class RecordingFile {
  public:
    // Opens (or replaces) the file; an error sentence when it cannot.
    QString open(const QString& path, const QString& lineName);
    bool isOpen() const { return file_.isOpen(); }
    QString path() const { return file_.fileName(); }
    quint64 records() const { return records_; }

    // False when the write failed; the file is then closed.
    bool write(const recording::LineRecord& record);
    void close();

  private:
    QFile file_;
    quint64 records_ = 0;
};

}  // namespace halvex
