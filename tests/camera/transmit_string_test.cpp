// The camera transmit string: the bytes for the camera, the rewritten box
// and the messages that refuse a text.

#include "camera/transmit_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace halvex {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr auto kAscii = TransmitMode::Ascii;
constexpr auto kHex = TransmitMode::Hex;

const QString kOddHex = QStringLiteral(
    "The Hex Transmit String Must Have An EVEN Number Of Characters And Must Include Leading "
    "Zeros.");
const QString kBadHex =
    QStringLiteral("The Hex Transmit String Could Not Be Parsed. Be Sure To Only Use 0-9 and A-F.");
const QString kTooLong = QStringLiteral("The Transmit String Is Greater Than 80 Bytes.");
const QString kTooLongWithCr =
    QStringLiteral("With The Added CR The Transmit String Is Greater Than 80 Bytes.");

Bytes bytes(const QByteArray& data) {
    return Bytes(data.begin(), data.end());
}

TEST(TransmitString, AcceptedTextsGiveTheBytesAndTheRewrittenBox) {
    const QByteArray x80(80, 'x');
    const QByteArray x79cr = QByteArray(79, 'x') + '\r';
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        Bytes data;
        QString box;
    } cases[] = {
        {"", kAscii, false, {}, ""},
        {"", kAscii, true, {'\r'}, ""},
        {"0 9af F0", kHex, false, {0x09, 0xAF, 0xF0}, "09 AF F0 "},
        {QString(QChar(0)) + " \u00FF",
         kAscii,
         false,
         {0, ' ', 0xFF},
         QString(QChar(0)) + " \u00FF"},
        {"#Z99", kAscii, true, bytes("#Z99\r"), "#Z99"},
        {QString(80, 'x'), kAscii, false, bytes(x80), QString(80, 'x')},
        {QString(79, 'x'), kAscii, true, bytes(x79cr), QString(79, 'x')},
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
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        QString message;  // the whole message, or the part that names a character
    } cases[] = {
        {"1g3", kHex, false, kOddHex},  // the count is checked before the digits
        {"1g", kHex, false, kBadHex},
        {"g1", kHex, false, kBadHex},
        {"\uFB00", kHex, false, kOddHex},  // a ligature is not two letters
        {QString(81, 'x'), kAscii, false, kTooLong},
        {QString(80, 'x'), kAscii, true, kTooLongWithCr},
        {QString(162, '0'), kHex, false, kTooLong},
        // The whole text is checked before its length.
        {QString(100, 'x') + "\u20AC", kAscii, false, "\"\u20AC\" (U+20AC)"},
        {"\u00FF\u0100", kAscii, false, "\"\u0100\" (U+0100)"},  // the first past Latin-1
        {"ok \U0001F600 then more", kAscii, true, "\"\U0001F600\" (U+1F600)"},
        {QString("x") + QChar(0xD800) + "y", kAscii, false, "U+D800"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        const char* title = c.message.endsWith(")") || c.message.startsWith("U+")
                                ? "Bad ASCII TX String"
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

// Random box texts give at most 80 bytes (and the CR) or a refusal; the
// rewritten box, sent again, gives the same bytes.
TEST(TransmitString, RandomTextsGiveBytesThatFitOrARefusal) {
    std::mt19937 random(4711);
    for (int round = 0; round < 5000; ++round) {
        QString text;
        for (auto i = random() % 100; i > 0; --i) {
            text += QChar(u"0123456789abcdefAF g\u00E9\u20AC"[random() % 22]);
        }
        const auto mode = round % 2 ? kHex : kAscii;
        const bool cr = round % 3 == 0;
        const TransmitString result = buildTransmitString(text, mode, cr);
        if (result.refused()) {
            ASSERT_TRUE(result.data.empty());
        } else {
            ASSERT_LE(result.data.size(), static_cast<std::size_t>(kMaxTransmitBytes));
            if (cr) {
                ASSERT_FALSE(result.data.empty());
                ASSERT_EQ(result.data.back(), '\r');
            }
            ASSERT_EQ(buildTransmitString(result.boxText, mode, cr).data, result.data);
        }
    }
}

}  // namespace
}  // namespace halvex
