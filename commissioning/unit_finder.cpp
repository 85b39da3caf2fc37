#include "commissioning/unit_finder.h"

#include "commissioning/unit_reader.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

// One address, asked once: a missed reply only leaves the unit out of the
// list, and a search is quickly made again.
QCoro::Task<std::optional<UnitIdentity>> askAddress(UnitLine& line, int address) {
    AddressScope talkingTo(line.state(), static_cast<Byte>(address));
    const auto firmware = co_await line.ask(vocab::blank<vocab::FirmwareRequest>(), {}, 1);
    if (!firmware) {
        co_return std::nullopt;
    }
    co_return co_await readIdentity(line);
}

}  // namespace

QCoro::Task<UnitSearch> findUnits(UnitLine& line, Progress progress) {
    UnitSearch search;
    const int total = kLastUnitAddress + 1;
    for (int address = 1; address <= kLastUnitAddress; ++address) {
        if (!line.portOpen()) {
            search.portClosed = true;
            co_return search;
        }
        if (progress.stopped()) {
            search.cancelled = true;
            co_return search;
        }
        progress.show(QStringLiteral("Address %1").arg(address), address - 1, total);
        const auto identity = co_await askAddress(line, address);
        if (identity) {
            search.found.push_back(*identity);
        }
    }
    if (search.found.empty() && !progress.stopped()) {
        progress.show(QStringLiteral("Address 0"), kLastUnitAddress, total);
        search.askedZero = true;
        const auto identity = co_await askAddress(line, 0);
        if (identity) {
            search.found.push_back(*identity);
        }
    }
    search.cancelled = progress.stopped();
    progress.show(QStringLiteral("Done"), total, total);
    co_return search;
}

}  // namespace halvex::commissioning
