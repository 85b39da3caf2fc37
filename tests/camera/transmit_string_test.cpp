// The camera transmit string: the bytes of the pass-through command, the
// rewritten box and the messages that refuse a text.

#include "camera/transmit_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "protocol/vocabulary_camera.h"

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

namespace transmit = vocab::camera_transmit;

// The pass-through command to camera index `camera` with `count` data bytes.
Bytes wire(int camera, int count, const QByteArray& data) {
    // Sized first: GCC 12 misreads an insert after a short list.
    Bytes bytes(transmit::kData + data.size());
    vocab::begin<vocab::CameraTransmit>(bytes);
    vocab::put(bytes, transmit::kCamera, static_cast<std::uint32_t>(camera));
    vocab::put(bytes, transmit::kCount, static_cast<std::uint32_t>(count));
    std::copy(data.begin(), data.end(), bytes.begin() + transmit::kData);
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
        {"", kAscii, false, 1, wire(1, 0, ""), ""},
        {"", kAscii, true, 0, wire(0, 1, "\r"), ""},
        {"0 9af F0", kHex, false, 1, wire(1, 3, "\x09\xAF\xF0"), "09 AF F0 "},
        {QString(QChar(0)) + " \u00FF", kAscii, false, 0, wire(0, 3, QByteArray("\0 \xFF", 3)),
         QString(QChar(0)) + " \u00FF"},
        {"#Z99", kAscii, true, 1, wire(1, 5, "#Z99\r"), "#Z99"},
        {QString(80, 'x'), kAscii, false, 0, wire(0, 80, x80), QString(80, 'x')},
        {QString(79, 'x'), kAscii, true, 0, wire(0, 80, x79cr), QString(79, 'x')},
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

// Random box texts give a well-formed command or a refusal; the rewritten
// box, sent again, gives the same bytes.
TEST(TransmitString, RandomTextsGiveAWellFormedCommandOrARefusal) {
    std::mt19937 random(4711);
    for (int round = 0; round < 5000; ++round) {
        QString text;
        for (auto i = random() % 100; i > 0; --i) {
            text += QChar(u"0123456789abcdefAF g\u00E9\u20AC"[random() % 22]);
        }
        const auto mode = round % 2 ? kHex : kAscii;
        const TransmitString result = buildTransmitString(text, mode, round % 3 == 0, round % 5);
        ASSERT_EQ(result.refused(), result.command.empty());
        if (!result.refused()) {
            ASSERT_LE(result.command.size(), 2u + kMaxTransmitBytes);
            ASSERT_EQ(vocab::get(result.command, transmit::kCamera), round % 5 == 1 ? 1u : 0u);
            ASSERT_EQ(vocab::get(result.command, transmit::kCount),
                      result.command.size() - transmit::kData);
            ASSERT_EQ(buildTransmitString(result.boxText, mode, round % 3 == 0, round % 5).command,
                      result.command);
        }
    }
}

}  // namespace
}  // namespace halvex
