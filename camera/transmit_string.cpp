#include "camera/transmit_string.h"

namespace halvex {

namespace {

constexpr std::uint8_t kCarriageReturn = 13;

TransmitString refuse(const char* title, const QString& text) {
    TransmitString result;
    result.messageTitle = QString::fromLatin1(title);
    result.messageText = text;
    return result;
}

int hexDigit(QChar c) {
    if (c >= u'0' && c <= u'9') {
        return c.unicode() - u'0';
    }
    if (c >= u'A' && c <= u'F') {
        return c.unicode() - u'A' + 10;
    }
    return -1;
}

// Only ASCII letters are upper-cased: a full Unicode upper-casing would turn
// some characters into several (the ligature "ff" into "FF") and let them
// pass as hex digits.
QString hexDigitsOf(const QString& text) {
    QString digits;
    digits.reserve(text.size());
    for (QChar c : text) {
        if (c == u' ') {
            continue;
        }
        digits.append(c >= u'a' && c <= u'z' ? QChar(c.unicode() - (u'a' - u'A')) : c);
    }
    return digits;
}

QString notLatin1Message(char32_t codePoint) {
    const QString code =
        QStringLiteral("U+%1").arg(static_cast<uint>(codePoint), 4, 16, QLatin1Char('0')).toUpper();
    const bool showable = QChar::isPrint(codePoint) && !QChar::isSurrogate(codePoint);
    const QString named =
        showable ? QStringLiteral("\"%1\" (%2)").arg(QString::fromUcs4(&codePoint, 1), code) : code;
    return QStringLiteral(
               "The Character %1 Cannot Be Sent As ASCII: Only Characters With A Single-Byte "
               "Code (Latin-1) Can Be Sent. Use Hex Mode For Other Bytes.")
        .arg(named);
}

}  // namespace

TransmitString buildTransmitString(const QString& boxText, TransmitMode mode, bool appendCr) {
    // Every byte is counted, but only one more than the limit is kept, so a
    // pasted novel costs no memory before the length check refuses it.
    std::vector<std::uint8_t> data;
    qsizetype count = 0;
    const auto store = [&](int value) {
        if (data.size() <= static_cast<std::size_t>(kMaxTransmitBytes)) {
            data.push_back(static_cast<std::uint8_t>(value));
        }
        ++count;
    };

    if (mode == TransmitMode::Hex) {
        const QString digits = hexDigitsOf(boxText);
        if (digits.size() % 2 != 0) {
            return refuse("Bad Hex TX String",
                          QStringLiteral("The Hex Transmit String Must Have An EVEN Number Of "
                                         "Characters And Must Include Leading Zeros."));
        }
        for (qsizetype i = 0; i < digits.size(); i += 2) {
            const int high = hexDigit(digits[i]);
            const int low = high < 0 ? -1 : hexDigit(digits[i + 1]);
            if (low < 0) {
                return refuse("Bad Hex TX String",
                              QStringLiteral("The Hex Transmit String Could Not Be Parsed. Be "
                                             "Sure To Only Use 0-9 and A-F."));
            }
            store(high * 16 + low);
        }
    } else {
        for (qsizetype i = 0; i < boxText.size(); ++i) {
            const QChar c = boxText[i];
            if (c.unicode() <= 0xFF) {
                store(c.unicode());
                continue;
            }
            char32_t codePoint = c.unicode();
            if (c.isHighSurrogate() && i + 1 < boxText.size() && boxText[i + 1].isLowSurrogate()) {
                codePoint = QChar::surrogateToUcs4(c, boxText[i + 1]);
            }
            return refuse("Bad ASCII TX String", notLatin1Message(codePoint));
        }
    }

    if (count > kMaxTransmitBytes) {
        return refuse("TX String Too Long",
                      QStringLiteral("The Transmit String Is Greater Than 80 Bytes."));
    }
    if (appendCr && count == kMaxTransmitBytes) {
        return refuse(
            "TX String Too Long",
            QStringLiteral("With The Added CR The Transmit String Is Greater Than 80 Bytes."));
    }

    TransmitString result;
    if (mode == TransmitMode::Hex) {
        for (std::uint8_t value : data) {
            result.boxText += QStringLiteral("%1 ").arg(value, 2, 16, QLatin1Char('0')).toUpper();
        }
    } else {
        result.boxText = QString::fromLatin1(reinterpret_cast<const char*>(data.data()),
                                             static_cast<qsizetype>(data.size()));
    }
    if (appendCr) {
        data.push_back(kCarriageReturn);
    }
    result.data = std::move(data);
    return result;
}

}  // namespace halvex
