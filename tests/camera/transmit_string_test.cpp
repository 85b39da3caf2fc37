// The camera transmit string: the bytes for the camera, the rewritten box
// and the messages that refuse a text.

#include "camera/transmit_string.h"

#include <gtest/gtest.h>

namespace halvex {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr auto kAscii = TransmitMode::Ascii;
constexpr auto kHex = TransmitMode::Hex;

Bytes bytes(const QByteArray& data) {
    return Bytes(data.begin(), data.end());
}

TEST(TransmitString, AcceptedTextsGiveTheBytesAndTheRewrittenBox) {
    const QString latin1Ends = QString(QChar(0)) + " \u00FF";
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        Bytes data;
        QString box;
    } cases[] = {
        {"", kAscii, true, {'\r'}, ""},
        {"0 9af F0", kHex, false, {0x09, 0xAF, 0xF0}, "09 AF F0 "},
        {latin1Ends, kAscii, false, {0, ' ', 0xFF}, latin1Ends},
        {QString(80, 'x'), kAscii, false, bytes(QByteArray(80, 'x')), QString(80, 'x')},
        {QString(79, 'x'), kAscii, true, bytes(QByteArray(79, 'x') + '\r'), QString(79, 'x')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        const TransmitString result = buildTransmitString(c.text, c.mode, c.cr);
        EXPECT_FALSE(result.refused()) << result.messageText.toStdString();
        EXPECT_EQ(result.data, c.data);
        EXPECT_EQ(result.boxText, c.box);
    }
}

TEST(TransmitString, RefusedTextsGiveTheirMessageAndNoBytes) {
    const QString oddHex = QStringLiteral(
        "The Hex Transmit String Must Have An EVEN Number Of Characters And Must Include Leading "
        "Zeros.");
    const QString badHex = QStringLiteral(
        "The Hex Transmit String Could Not Be Parsed. Be Sure To Only Use 0-9 and A-F.");
    const QString tooLong = QStringLiteral("The Transmit String Is Greater Than 80 Bytes.");
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        QString message;  // the whole message, or the part that names a character
    } cases[] = {
        {"1g3", kHex, false, oddHex},  // the count is checked before the digits
        {"1g", kHex, false, badHex},
        {"\uFB00", kHex, false, oddHex},  // a ligature is not two letters
        {QString(81, 'x'), kAscii, false, tooLong},
        {QString(80, 'x'), kAscii, true, "With The Added CR " + tooLong},
        // The whole text is checked before its length.
        {QString(100, 'x') + "\u20AC", kAscii, false, "\"\u20AC\" (U+20AC)"},
        {"\u00FF\u0100", kAscii, false, "\"\u0100\" (U+0100)"},  // the first past Latin-1
        {"at the end \U0001F600", kAscii, false, "\"\U0001F600\" (U+1F600)"},
        // What cannot be shown is named by its code alone: an invisible
        // character, a lone surrogate, also as the last one.
        {"a\u200Bb", kAscii, false, "Character U+200B Cannot"},
        {QString("x") + QChar(0xD800) + "y", kAscii, false, "Character U+D800 Cannot"},
        {QString("x") + QChar(0xD83D), kAscii, false, "Character U+D83D Cannot"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        const char* title = c.message.contains("U+")    ? "Bad ASCII TX String"
                            : c.message.contains("Hex") ? "Bad Hex TX String"
                                                        : "TX String Too Long";
        const TransmitString result = buildTransmitString(c.text, c.mode, c.cr);
        EXPECT_TRUE(result.refused());
        EXPECT_EQ(result.messageTitle, title);
        EXPECT_TRUE(result.messageText == c.message ||
                    (c.message.contains("U+") && result.messageText.contains(c.message)))
            << result.messageText.toStdString();
        EXPECT_TRUE(result.data.empty());
        EXPECT_TRUE(result.boxText.isEmpty());
    }
}

}  // namespace
}  // namespace halvex
