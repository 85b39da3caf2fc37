// Random box texts either give a well-formed pass-through command or one of
// the known refusals; and the rewritten box, sent again, gives the same bytes.

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "camera/transmit_string.h"

namespace halvex {
namespace {

class TextMaker {
  public:
    explicit TextMaker(unsigned start) : random_(start) {}

    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    QString text() {
        static const char16_t hexish[] = u"0123456789abcdefABCDEF   g";
        const int length = pick(10) == 0 ? pick(3000) : pick(120);
        const int flavour = pick(4);
        QString s;
        s.reserve(length);
        for (int i = 0; i < length; ++i) {
            switch (flavour == 3 ? pick(3) : flavour) {
                case 0:
                    s.append(QChar(hexish[pick(static_cast<int>(std::size(hexish)) - 1)]));
                    break;
                case 1:
                    s.append(QChar(static_cast<char16_t>(pick(256))));
                    break;
                default:
                    s.append(QChar(static_cast<char16_t>(pick(0x10000))));
                    break;
            }
        }
        return s;
    }

  private:
    std::mt19937 random_;
};

TEST(TransmitStringFuzz, EveryTextGivesAWellFormedCommandOrAKnownRefusal) {
    const std::set<QString> titles{"Bad Hex TX String", "Bad ASCII TX String",
                                   "TX String Too Long"};
    TextMaker maker(4711);
    int accepted = 0;
    for (int round = 0; round < 100000; ++round) {
        const QString text = maker.text();
        const auto mode = maker.pick(2) ? TransmitMode::Hex : TransmitMode::Ascii;
        const bool cr = maker.pick(3) == 0;
        const int camera = maker.pick(2);
        const TransmitString result = buildTransmitString(text, mode, cr, camera);
        if (result.refused()) {
            ASSERT_TRUE(titles.count(result.messageTitle)) << result.messageTitle.toStdString();
            ASSERT_TRUE(result.command.empty());
            ASSERT_TRUE(result.boxText.isEmpty());
            continue;
        }
        ++accepted;
        const auto& command = result.command;
        ASSERT_GE(command.size(), 2u);
        ASSERT_LE(command.size(), 2u + kMaxTransmitBytes);
        ASSERT_EQ(command[0], kCameraPassThrough);
        ASSERT_EQ(command[1] & 0x7F, command.size() - 2);
        ASSERT_EQ((command[1] & 0x80) != 0, camera == 1);
        if (cr) {
            ASSERT_EQ(command.back(), 13);
        }
        // The rewritten box is the normalised form: sending it again changes
        // nothing.
        const TransmitString again = buildTransmitString(result.boxText, mode, cr, camera);
        ASSERT_EQ(again.command, command);
        ASSERT_EQ(again.boxText, result.boxText);
    }
    EXPECT_GT(accepted, 10000);
}

}  // namespace
}  // namespace halvex
