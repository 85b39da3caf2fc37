// Random, generated and mutated RTF never crashes or hangs the reader, and the
// document it builds never outgrows its input.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTextDocument>
#include <random>

#include "help/rtf_reader.h"

namespace halvex {
namespace {

std::vector<QByteArray> shippedHelp() {
    std::vector<QByteArray> files;
    for (const char* name : {"Camera Help.RTF", "Tour Help.RTF"}) {
        QFile file(QDir(QStringLiteral(HALVEX_DATA_OUT)).filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        files.push_back(file.readAll());
    }
    return files;
}

class RtfMaker {
  public:
    explicit RtfMaker(unsigned start) : random_(start) {}

    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    // A window of a real file, so that inputs stay small but carry its tables
    // and formatting; whole files are mutated now and then as well.
    QByteArray sliceOf(const QByteArray& file) {
        if (pick(200) == 0) {
            return file;
        }
        const int from = pick(static_cast<int>(file.size()));
        QByteArray head = file.left(pick(3) == 0 ? 400 : 6);
        return head + file.mid(from, 1 + pick(500));
    }

    QByteArray mutate(QByteArray bytes) {
        static const char* const tokens[] = {
            "{",     "}",     "\\",       "\\'",  "\\'e9",        "\\u",       "\\u-",       "\\uc",
            "\\uc0", "\\bin", "\\bin99 ", "\\*",  "\\pict",       "\\par",     "\\fs",       "\\cf",
            "\\f",   "\\b0",  "\\li-",    "\\fi", "\\tab",        "\\fonttbl", "\\colortbl", ";",
            "\\red", "?",     "\r\n",     " ",    "9999999999999"};
        const int edits = 1 + pick(6);
        for (int e = 0; e < edits; ++e) {
            const int where = bytes.isEmpty() ? 0 : pick(static_cast<int>(bytes.size()));
            switch (pick(4)) {
                case 0:
                    if (!bytes.isEmpty()) {
                        bytes[where] = static_cast<char>(random_());
                    }
                    break;
                case 1:
                    bytes.insert(where, tokens[pick(std::size(tokens))]);
                    break;
                case 2:
                    bytes.remove(where, 1 + pick(30));
                    break;
                default:
                    bytes.truncate(where);
                    break;
            }
        }
        return bytes;
    }

    // Tokens strung together at random: deep groups, odd parameters.
    QByteArray generated() {
        static const char* const words[] = {
            "b",   "i",  "ul", "par",  "line",  "tab",  "fs",   "cf", "f",       "u",       "uc",
            "bin", "li", "qc", "pard", "plain", "pict", "info", "zz", "fonttbl", "colortbl"};
        QByteArray bytes = "{\\rtf1";
        const int count = pick(200);
        for (int i = 0; i < count; ++i) {
            switch (pick(5)) {
                case 0:
                    bytes += QByteArray(1 + pick(pick(10) == 0 ? 300 : 3), '{');
                    break;
                case 1:
                    bytes += QByteArray(1 + pick(3), '}');
                    break;
                case 2:
                    bytes += '\\';
                    bytes += words[pick(std::size(words))];
                    if (pick(2)) {
                        bytes += QByteArray::number(pick(2) ? pick(100) : -pick(70000));
                    }
                    bytes += pick(2) ? " " : "";
                    break;
                default:
                    bytes += "text ";
                    break;
            }
        }
        return bytes;
    }

    QByteArray randomBytes() {
        QByteArray bytes = pick(2) ? "{\\rtf" : "";
        const int length = pick(300);
        for (int i = 0; i < length; ++i) {
            bytes += static_cast<char>(random_());
        }
        return bytes;
    }

  private:
    std::mt19937 random_;
};

TEST(RtfReaderFuzz, RandomGeneratedAndMutatedInputsStayBounded) {
    const std::vector<QByteArray> files = shippedHelp();
    ASSERT_FALSE(files.empty());
    RtfMaker maker(1998);
    QTextDocument document;
    int read = 0;
    for (int round = 0; round < 100000; ++round) {
        QByteArray input;
        switch (round % 4) {
            case 0:
                input = maker.randomBytes();
                break;
            case 1:
                input = maker.mutate(maker.generated());
                break;
            default:
                input = maker.mutate(maker.sliceOf(
                    files[static_cast<std::size_t>(maker.pick(static_cast<int>(files.size())))]));
                break;
        }
        const bool rtf = input.startsWith("{\\rtf");
        ASSERT_EQ(readRtf(input, document), rtf);
        if (rtf) {
            ++read;
            // Every character and paragraph costs at least one input byte.
            ASSERT_LE(document.characterCount(), input.size() + 1);
            ASSERT_LE(document.blockCount(), input.size() + 1);
        }
    }
    EXPECT_GT(read, 50000);
}

}  // namespace
}  // namespace halvex
