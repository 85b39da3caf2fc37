// The camera transmit string: the bytes of the pass-through command, the
// rewritten box and the messages that refuse a text.

#include "camera/transmit_string.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <algorithm>
#include <array>
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

// The pass-through command: its code, the length byte (bit 7 for camera 2)
// and the data.
Bytes wire(int lengthByte, const QByteArray& data) {
    Bytes bytes(2 + data.size());  // sized first: GCC 12 misreads an insert after a short list
    bytes[0] = kCameraPassThrough;
    bytes[1] = static_cast<std::uint8_t>(lengthByte);
    std::copy(data.begin(), data.end(), bytes.begin() + 2);
    return bytes;
}

TEST(TransmitString, AcceptedTextsGiveTheCommandAndTheRewrittenBox) {
    const QByteArray x80(80, 'x');
    const QByteArray x79cr = QByteArray(79, 'x') + '\r';
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        int camera;
        Bytes command;
        QString box;
    } cases[] = {
        {"", kAscii, false, 0, wire(0, ""), ""},
        {"", kAscii, false, 1, wire(0x80, ""), ""},
        {"", kAscii, true, 0, wire(1, "\r"), ""},
        {"    ", kHex, false, 0, wire(0, ""), ""},
        {"1 2 3 4", kHex, false, 0, wire(2, "\x12\x34"), "12 34 "},
        {"ff", kHex, false, 0, wire(1, "\xFF"), "FF "},
        {"0a 00", kHex, false, 0, wire(2, QByteArray("\x0A\x00", 2)), "0A 00 "},
        {"81 01 04 07 02 FF", kHex, false, 1, wire(0x86, "\x81\x01\x04\x07\x02\xFF"),
         "81 01 04 07 02 FF "},
        {" a b ", kAscii, false, 0, wire(5, " a b "), " a b "},
        {"#Z99", kAscii, true, 1, wire(0x85, "#Z99\r"), "#Z99"},
        {"\u00E9\u00FF", kAscii, false, 0, wire(2, "\xE9\xFF"), "\u00E9\u00FF"},
        {QString(QChar(0)) + "\t", kAscii, false, 0, wire(2, QByteArray("\0\t", 2)),
         QString(QChar(0)) + "\t"},
        {QString(20, 'x'), kAscii, false, 1, wire(0x94, x80.left(20)), QString(20, 'x')},
        {QString(80, 'x'), kAscii, false, 0, wire(80, x80), QString(80, 'x')},
        {QString(79, 'x'), kAscii, true, 0, wire(80, x79cr), QString(79, 'x')},
        {QString(160, 'A'), kHex, false, 1, wire(0x80 | 80, QByteArray(80, '\xAA')),
         QString("AA ").repeated(80)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        const TransmitString result = buildTransmitString(c.text, c.mode, c.cr, c.camera);
        EXPECT_FALSE(result.refused()) << result.messageText.toStdString();
        EXPECT_EQ(result.command, c.command);
        EXPECT_EQ(result.boxText, c.box);
    }
}

TEST(TransmitString, RefusedTextsGiveTheirMessageAndNoBytes) {
    const QString huge(100000, 'A');
    const struct {
        QString text;
        TransmitMode mode;
        bool cr;
        QString message;  // the whole message, or the part that names a character
    } cases[] = {
        {"123", kHex, false, kOddHex},
        {"12 3", kHex, false, kOddHex},  // odd once spaces are gone
        {"1g3", kHex, false, kOddHex},   // the count is checked before the digits
        {"1g", kHex, false, kBadHex},
        {"g1", kHex, false, kBadHex},
        {"12\t3", kHex, false, kBadHex},         // tabs are not spaces
        {"\uFF11\uFF12", kHex, false, kBadHex},  // full-width digits
        {"\uFB00", kHex, false, kOddHex},        // a ligature is not two letters
        {"\uFB000", kHex, false, kBadHex},
        {QString(81, 'x'), kAscii, false, kTooLong},
        {QString(81, 'x'), kAscii, true, kTooLong},
        {QString(80, 'x'), kAscii, true, kTooLongWithCr},
        {QString(162, '0'), kHex, false, kTooLong},
        {huge, kAscii, false, kTooLong},
        {huge, kHex, true, kTooLong},
        {huge + "A", kHex, false, kOddHex},
        // The whole text is checked before its length.
        {huge + "GG", kHex, false, kBadHex},
        {huge + "\u20AC", kAscii, false, "\"\u20AC\" (U+20AC)"},
        {"ok \U0001F600 then more", kAscii, true, "\"\U0001F600\" (U+1F600)"},
        {QString("x") + QChar(0xD800) + "y", kAscii, false, "U+D800"},
        {"line\u2028break", kAscii, false, "U+2028"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.left(20).toStdString());
        const char* title = c.message.endsWith(")") || c.message.startsWith("U+")
                                ? "Bad ASCII TX String"
                            : c.message.contains("Hex") ? "Bad Hex TX String"
                                                        : "TX String Too Long";
        for (int camera : {0, 1}) {
            const TransmitString result = buildTransmitString(c.text, c.mode, c.cr, camera);
            EXPECT_TRUE(result.refused());
            EXPECT_EQ(result.messageTitle, title);
            EXPECT_TRUE(result.messageText == c.message ||
                        (c.message.contains("U+") && result.messageText.contains(c.message)))
                << result.messageText.toStdString();
            EXPECT_TRUE(result.command.empty());
            EXPECT_TRUE(result.boxText.isEmpty());
        }
    }
}

// Random box texts give a well-formed pass-through command or one of the
// known refusals; and the rewritten box, sent again, gives the same bytes.
TEST(TransmitString, RandomTextsGiveAWellFormedCommandOrAKnownRefusal) {
    const QStringList titles{"Bad Hex TX String", "Bad ASCII TX String", "TX String Too Long"};
    std::mt19937 random(4711);
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    int accepted = 0;
    for (int round = 0; round < 30000; ++round) {
        const int range = std::array{26, 256, 0x10000}[pick(3)];  // hex-like, Latin-1, anything
        QString text;
        for (int i = pick(pick(10) == 0 ? 3000 : 120); i > 0; --i) {
            text += range == 26 ? QChar(u"0123456789abcdefABCDEF   g"[pick(26)])
                                : QChar(static_cast<char16_t>(pick(range)));
        }
        const auto mode = pick(2) ? kHex : kAscii;
        const bool cr = pick(3) == 0;
        const int camera = pick(2);
        const TransmitString result = buildTransmitString(text, mode, cr, camera);
        if (result.refused()) {
            ASSERT_TRUE(titles.contains(result.messageTitle)) << result.messageTitle.toStdString();
            ASSERT_TRUE(result.command.empty() && result.boxText.isEmpty());
            continue;
        }
        ++accepted;
        const auto& command = result.command;
        ASSERT_GE(command.size(), 2u);
        ASSERT_LE(command.size(), 2u + kMaxTransmitBytes);
        ASSERT_EQ(command[0], kCameraPassThrough);
        ASSERT_EQ(command[1] & 0x7F, command.size() - 2);
        ASSERT_EQ((command[1] & 0x80) != 0, camera == 1);
        ASSERT_TRUE(!cr || command.back() == 13);
        const TransmitString again = buildTransmitString(result.boxText, mode, cr, camera);
        ASSERT_EQ(again.command, command);
        ASSERT_EQ(again.boxText, result.boxText);
    }
    EXPECT_GT(accepted, 3000);
}

}  // namespace
}  // namespace halvex
