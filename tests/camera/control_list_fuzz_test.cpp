// Random and mutated control lists never crash the reader, and what it keeps
// stays within the limits: at most 101 commands, fields cut from the input.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <random>

#include "camera/control_list.h"

namespace halvex {
namespace {

std::vector<QByteArray> sampleFiles() {
    std::vector<QByteArray> result;
    const QDir data(QStringLiteral(HALVEX_DATA_OUT));
    for (const QString& name : data.entryList({"*.CCL"}, QDir::Files)) {
        QFile file(data.filePath(name));
        if (file.open(QIODevice::ReadOnly)) {
            result.push_back(file.readAll());
        }
    }
    result.push_back("\"Odd, quoted\"\r\n  Name  ,H  , 01 02 \r\n\"Open,A,\"x\"\r\"\",,\n");
    return result;
}

class Mutator {
  public:
    explicit Mutator(unsigned start) : random_(start) {}

    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    QByteArray mutate(QByteArray bytes) {
        static const char interesting[] = {',', '"', '\r', '\n', ' ', 'H', '\0', '\xEF', '\xC3'};
        const int edits = 1 + pick(8);
        for (int e = 0; e < edits; ++e) {
            const int where = bytes.isEmpty() ? 0 : pick(static_cast<int>(bytes.size()));
            switch (pick(5)) {
                case 0:
                    if (!bytes.isEmpty()) {
                        bytes[where] = static_cast<char>(random_());
                    }
                    break;
                case 1:
                    bytes.insert(where, interesting[pick(sizeof interesting)]);
                    break;
                case 2:
                    bytes.remove(where, 1 + pick(20));
                    break;
                case 3:  // repeats a stretch, so some files pass 101 commands
                    if (bytes.size() < 8000) {
                        const QByteArray stretch = bytes.mid(where, 1 + pick(400));
                        bytes.insert(where, stretch.repeated(1 + pick(10)));
                    }
                    break;
                default:
                    bytes.truncate(where);
                    break;
            }
        }
        return bytes;
    }

    QByteArray randomBytes() {
        QByteArray bytes(pick(300), '\0');
        for (char& c : bytes) {
            c = static_cast<char>(random_());
        }
        return bytes;
    }

  private:
    std::mt19937 random_;
};

TEST(ControlListFuzz, RandomAndMutatedFilesStayWithinBounds) {
    const std::vector<QByteArray> starts = sampleFiles();
    ASSERT_GE(starts.size(), 3u);
    Mutator mutator(20240607);
    int faults = 0;
    int full = 0;
    for (int round = 0; round < 100000; ++round) {
        const QByteArray input = round % 4 == 0
                                     ? mutator.randomBytes()
                                     : mutator.mutate(starts[static_cast<std::size_t>(
                                           mutator.pick(static_cast<int>(starts.size())))]);
        ControlList list;
        const QString error = parseControlList(input, QStringLiteral("FUZZ.CCL"), list);
        ASSERT_LE(list.commands.size(), static_cast<std::size_t>(ControlList::kMaxCommands));
        qsizetype kept = list.header.size();
        for (const CclCommand& command : list.commands) {
            kept += command.name.size() + command.mode.size() + command.text.size();
        }
        ASSERT_LE(kept, input.size()) << "fields are pieces of the input";
        if (!error.isEmpty()) {
            ASSERT_TRUE(error.contains("\"FUZZ.CCL\"")) << error.toStdString();
            ++faults;
        }
        full += list.commands.size() == static_cast<std::size_t>(ControlList::kMaxCommands);
    }
    // The inputs reach the fault paths and the limit, not only the easy path.
    EXPECT_GT(faults, 1000);
    EXPECT_GT(full, 100);
}

}  // namespace
}  // namespace halvex
