#include "camera/control_list.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>
#include <optional>
#include <string_view>

namespace halvex {

namespace {

// Lists written on Linux are UTF-8; older ones are in a Western single-byte
// code page, where every byte maps to the Latin-1 character of that value.
QString decode(const QByteArray& bytes) {
    QByteArrayView view(bytes);
    if (view.startsWith("\xEF\xBB\xBF")) {
        view = view.sliced(3);
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(view);
    if (utf8.hasError()) {
        text = QString::fromLatin1(view);
    }
    return text;
}

// Fields are separated by commas or line ends (CR, LF or CR LF). A quoted
// field runs to the next quotation mark; one left open ends with its line, so
// a stray mark cannot swallow the rest of the file.
class FieldReader {
  public:
    explicit FieldReader(const QString& text)
        : text_(reinterpret_cast<const char16_t*>(text.utf16()),
                static_cast<std::size_t>(text.size())) {}

    int line() const { return line_; }

    // Blank lines between records carry nothing; skipping them lets a file end
    // with empty lines and lets records be spaced out.
    void skipBlankLines() {
        std::size_t probe = pos_;
        while (true) {
            while (probe < text_.size() && text_[probe] == u' ') {
                ++probe;
            }
            if (probe >= text_.size()) {
                pos_ = probe;
                return;
            }
            if (!isLineEnd(probe)) {
                return;
            }
            pos_ = probe;
            consumeLineEnd();
            probe = pos_;
        }
    }

    bool atEnd() const { return pos_ >= text_.size(); }

    // The next field, or nothing when the file ends where a field should
    // start. A comma just before the end still announces an (empty) field.
    std::optional<QString> next() {
        while (pos_ < text_.size() && text_[pos_] == u' ') {
            ++pos_;
        }
        if (atEnd()) {
            if (!afterComma_) {
                return std::nullopt;
            }
            afterComma_ = false;
            return QString();
        }
        QString value;
        if (text_[pos_] == u'"') {
            const std::size_t start = ++pos_;
            while (pos_ < text_.size() && text_[pos_] != u'"' && !isLineEnd(pos_)) {
                ++pos_;
            }
            value = slice(start, pos_);
            if (pos_ < text_.size() && text_[pos_] == u'"') {
                ++pos_;
            }
            // Anything between the closing mark and the delimiter is dropped.
            while (pos_ < text_.size() && text_[pos_] != u',' && !isLineEnd(pos_)) {
                ++pos_;
            }
        } else {
            const std::size_t start = pos_;
            while (pos_ < text_.size() && text_[pos_] != u',' && !isLineEnd(pos_)) {
                ++pos_;
            }
            std::size_t end = pos_;
            while (end > start && text_[end - 1] == u' ') {
                --end;
            }
            value = slice(start, end);
        }
        consumeDelimiter();
        return value;
    }

  private:
    QString slice(std::size_t from, std::size_t to) const {
        return QString::fromUtf16(text_.data() + from, static_cast<std::size_t>(to - from));
    }

    bool isLineEnd(std::size_t at) const { return text_[at] == u'\r' || text_[at] == u'\n'; }

    void consumeLineEnd() {
        if (text_[pos_] == u'\r' && pos_ + 1 < text_.size() && text_[pos_ + 1] == u'\n') {
            ++pos_;
        }
        ++pos_;
        ++line_;
    }

    void consumeDelimiter() {
        afterComma_ = false;
        if (atEnd()) {
            return;
        }
        if (text_[pos_] == u',') {
            ++pos_;
            afterComma_ = true;
        } else {
            consumeLineEnd();
        }
    }

    std::u16string_view text_;
    std::size_t pos_ = 0;
    int line_ = 1;
    bool afterComma_ = false;
};

}  // namespace

QString parseControlList(const QByteArray& bytes, const QString& fileName, ControlList& list) {
    list = ControlList{};
    const QString text = decode(bytes);
    FieldReader reader(text);

    reader.skipBlankLines();
    const std::optional<QString> header = reader.next();
    if (!header) {
        return QStringLiteral(
                   "The camera control list \"%1\" is empty: its first line should describe the "
                   "camera.")
            .arg(fileName);
    }
    list.header = *header;

    while (true) {
        reader.skipBlankLines();
        if (reader.atEnd()) {
            return QString();
        }
        const int line = reader.line();
        if (static_cast<int>(list.commands.size()) == ControlList::kMaxCommands) {
            return QStringLiteral(
                       "The camera control list \"%1\" holds more than %2 commands; the commands "
                       "from line %3 on were not loaded.")
                .arg(fileName, QString::number(ControlList::kMaxCommands), QString::number(line));
        }
        std::optional<QString> name = reader.next();
        std::optional<QString> mode = reader.next();
        std::optional<QString> command = reader.next();
        if (!name || !mode || !command) {
            return QStringLiteral(
                       "The command at line %1 of the camera control list \"%2\" is cut short: "
                       "a command needs a name, a mode and a transmit string.")
                .arg(QString::number(line), fileName);
        }
        list.commands.push_back({std::move(*name), std::move(*mode), std::move(*command)});
    }
}

QString loadControlList(const QString& path, ControlList& list) {
    const QString fileName = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        list = ControlList{};
        return QStringLiteral("The camera control list \"%1\" could not be read: %2.")
            .arg(fileName, file.errorString());
    }
    const QByteArray bytes = file.read(kMaxControlListBytes + 1);
    if (bytes.size() > kMaxControlListBytes) {
        list = ControlList{};
        return QStringLiteral(
                   "The camera control list \"%1\" is larger than 1 MB; it cannot be a control "
                   "list and was not read.")
            .arg(fileName);
    }
    if (file.error() != QFileDevice::NoError) {
        list = ControlList{};
        return QStringLiteral("The camera control list \"%1\" could not be read: %2.")
            .arg(fileName, file.errorString());
    }
    return parseControlList(bytes, fileName, list);
}

QStringList listControlListFiles(const QString& folder) {
    QStringList names;
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files);
    for (const QFileInfo& entry : entries) {
        if (entry.fileName().endsWith(QLatin1String(".CCL"), Qt::CaseInsensitive)) {
            names.append(entry.fileName());
        }
    }
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });
    return names;
}

}  // namespace halvex
