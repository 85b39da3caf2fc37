// The camera transmit string: the bytes of the pass-through command, the
// rewritten box and the messages that refuse a text.

#include "camera/transmit_string.h"

#include <gtest/gtest.h>

#include <algorithm>

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

Bytes withHeader(std::uint8_t lengthByte, const Bytes& data) {
    // Sized first: GCC 12 at -O2 misreads an insert after a two-byte list.
    Bytes command(2 + data.size());
    command[0] = kCameraPassThrough;
    command[1] = lengthByte;
    std::copy(data.begin(), data.end(), command.begin() + 2);
    return command;
}

Bytes repeated(std::size_t count, std::uint8_t value) {
    return Bytes(count, value);
}

TEST(TransmitString, AcceptedTextsGiveTheCommandAndTheRewrittenBox) {
    const struct {
        const char* what;
        QString text;
        TransmitMode mode;
        bool cr;
        int camera;
        Bytes command;
        QString box;
    } cases[] = {
        {"empty box", "", kAscii, false, 0, {0x62, 0}, ""},
        {"empty box to camera 2", "", kAscii, false, 1, {0x62, 0x80}, ""},
        {"empty box with CR", "", kAscii, true, 0, {0x62, 1, 13}, ""},
        {"hex spaces only", "    ", kHex, false, 0, {0x62, 0}, ""},
        {"hex digits split by spaces", "1 2 3 4", kHex, false, 0, {0x62, 2, 0x12, 0x34}, "12 34 "},
        {"lower-case hex", "ff", kHex, false, 0, {0x62, 1, 0xFF}, "FF "},
        {"hex with leading zeros kept", "0a 00", kHex, false, 0, {0x62, 2, 0x0A, 0x00}, "0A 00 "},
        {"VISCA zoom tele to camera 2",
         "81 01 04 07 02 FF",
         kHex,
         false,
         1,
         {0x62, 0x86, 0x81, 0x01, 0x04, 0x07, 0x02, 0xFF},
         "81 01 04 07 02 FF "},
        {"ASCII keeps spaces",
         " a b ",
         kAscii,
         false,
         0,
         {0x62, 5, ' ', 'a', ' ', 'b', ' '},
         " a b "},
        {"ASCII with CR to camera 2",
         "#Z99",
         kAscii,
         true,
         1,
         {0x62, 0x85, '#', 'Z', '9', '9', 13},
         "#Z99"},
        {"ASCII Latin-1 letters",
         "\u00E9\u00FF",
         kAscii,
         false,
         0,
         {0x62, 2, 0xE9, 0xFF},
         "\u00E9\u00FF"},
        {"ASCII control characters pass",
         QString(QChar(0)) + "\t",
         kAscii,
         false,
         0,
         {0x62, 2, 0, 9},
         QString(QChar(0)) + "\t"},
        {"20 ASCII bytes to camera 2", QString(20, 'x'), kAscii, false, 1,
         withHeader(0x94, repeated(20, 'x')), QString(20, 'x')},
        {"80 ASCII bytes", QString(80, 'x'), kAscii, false, 0, withHeader(80, repeated(80, 'x')),
         QString(80, 'x')},
        {"79 ASCII bytes and CR make 80", QString(79, 'x'), kAscii, true, 0,
         [] {
             Bytes data = repeated(79, 'x');
             data.push_back(13);
             return withHeader(80, data);
         }(),
         QString(79, 'x')},
        {"80 hex bytes to camera 2", QString(160, 'A'), kHex, false, 1,
         withHeader(0x80 | 80, repeated(80, 0xAA)), QString("AA ").repeated(80)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TransmitString result = buildTransmitString(c.text, c.mode, c.cr, c.camera);
        EXPECT_FALSE(result.refused()) << result.messageText.toStdString();
        EXPECT_EQ(result.command, c.command);
        EXPECT_EQ(result.boxText, c.box);
    }
}

TEST(TransmitString, RefusedTextsGiveTheirMessageAndNoBytes) {
    const struct {
        const char* what;
        QString text;
        TransmitMode mode;
        bool cr;
        const char* title;
        QString message;
    } cases[] = {
        {"three hex digits", "123", kHex, false, "Bad Hex TX String", kOddHex},
        {"odd count once spaces are gone", "12 3", kHex, false, "Bad Hex TX String", kOddHex},
        {"odd count is found before a bad digit", "1g3", kHex, false, "Bad Hex TX String", kOddHex},
        {"a pair holding g", "1g", kHex, false, "Bad Hex TX String", kBadHex},
        {"a bad first digit", "g1", kHex, false, "Bad Hex TX String", kBadHex},
        {"tabs are not spaces", "12\t3", kHex, false, "Bad Hex TX String", kBadHex},
        {"full-width digits", "\uFF11\uFF12", kHex, false, "Bad Hex TX String", kBadHex},
        {"a ligature is not two letters", "\uFB00", kHex, false, "Bad Hex TX String", kOddHex},
        {"a ligature in a pair", "\uFB000", kHex, false, "Bad Hex TX String", kBadHex},
        {"81 ASCII bytes", QString(81, 'x'), kAscii, false, "TX String Too Long", kTooLong},
        {"81 ASCII bytes with CR", QString(81, 'x'), kAscii, true, "TX String Too Long", kTooLong},
        {"80 ASCII bytes with CR", QString(80, 'x'), kAscii, true, "TX String Too Long",
         kTooLongWithCr},
        {"81 hex bytes", QString(162, '0'), kHex, false, "TX String Too Long", kTooLong},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (int camera : {0, 1}) {
            const TransmitString result = buildTransmitString(c.text, c.mode, c.cr, camera);
            EXPECT_TRUE(result.refused());
            EXPECT_EQ(result.messageTitle, QString::fromLatin1(c.title));
            EXPECT_EQ(result.messageText, c.message);
            EXPECT_TRUE(result.command.empty());
            EXPECT_TRUE(result.boxText.isEmpty());
        }
    }
}

TEST(TransmitString, AsciiRefusesCharactersOutsideLatin1AndNamesThem) {
    const struct {
        QString text;
        QString named;
    } cases[] = {
        {"Price 5\u20AC", "\"\u20AC\" (U+20AC)"},
        {"ok \U0001F600 then more", "\"\U0001F600\" (U+1F600)"},
        {QString("x") + QChar(0xD800) + "y", "U+D800"},
        {"line\u2028break", "U+2028"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        const TransmitString result = buildTransmitString(c.text, kAscii, true, 0);
        EXPECT_EQ(result.messageTitle, "Bad ASCII TX String");
        EXPECT_TRUE(result.messageText.contains(c.named)) << result.messageText.toStdString();
        EXPECT_TRUE(result.command.empty());
        EXPECT_TRUE(result.boxText.isEmpty());
    }
}

TEST(TransmitString, VeryLongTextsGetTheLengthMessage) {
    const QString ascii(100000, 'A');
    EXPECT_EQ(buildTransmitString(ascii, kAscii, false, 0).messageText, kTooLong);
    EXPECT_EQ(buildTransmitString(ascii, kHex, true, 1).messageText, kTooLong);
    EXPECT_EQ(buildTransmitString(ascii + "A", kHex, false, 0).messageText, kOddHex);
    // The whole text is checked before its length, so a bad character far
    // beyond the 80th byte is still the reason given.
    EXPECT_EQ(buildTransmitString(ascii + "\u20AC", kAscii, false, 0).messageTitle,
              "Bad ASCII TX String");
    EXPECT_EQ(buildTransmitString(ascii + "GG", kHex, false, 0).messageText, kBadHex);
}

}  // namespace
}  // namespace halvex
