#pragma once

// Camera control lists ("*.CCL"): a camera description followed by named
// transmit strings, read with the list-input field rules.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

namespace halvex {

struct CclCommand {
    QString name;
    QString mode;  // only the exact value "H" means hex; anything else is ASCII
    QString text;  // the transmit string as it stands in the file

    bool isHex() const { return mode == QLatin1String("H"); }
};

// One camera's list. Item k of the camera's command list is commands[k], so
// the list shown to the operator must keep file order.
struct ControlList {
    static constexpr int kMaxCommands = 101;

    QString header;
    std::vector<CclCommand> commands;
};

// Files larger than this are refused unread: 101 commands never need it.
inline constexpr qint64 kMaxControlListBytes = 1024 * 1024;

// Replaces `list` with the commands in `bytes`. Returns an empty string on
// success, otherwise one sentence naming `fileName` and the line at fault;
// `list` then keeps what was read before the fault.
QString parseControlList(const QByteArray& bytes, const QString& fileName, ControlList& list);

// Reads the file at `path` as parseControlList does; the messages name the
// file by its bare name, as the operator picked it.
QString loadControlList(const QString& path, ControlList& list);

// Bare names of the ordinary files in `folder` whose names end in ".CCL" in
// any letter case, sorted by name regardless of case. Empty when the folder
// cannot be read.
QStringList listControlListFiles(const QString& folder);

}  // namespace halvex
