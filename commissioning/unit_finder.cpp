#include "commissioning/unit_finder.h"

#include "commissioning/unit_reader.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

// One address, asked once: a missed reply only leaves the unit out of the
// list, and a search is quickly made again.
std::optional<UnitIdentity> ask(UnitLine& line, int address) {
    AddressScope talkingTo(line.state(), static_cast<Byte>(address));
    if (!line.ask(vocab::blank<vocab::FirmwareRequest>(), {}, 1)) {
        return std::nullopt;
    }
    return readIdentity(line);
}

}  // namespace

UnitSearch findUnits(UnitLine& line, const Progress& progress) {
    UnitSearch search;
    const int total = kLastUnitAddress + 1;
    for (int address = 1; address <= kLastUnitAddress; ++address) {
        if (!line.portOpen()) {
            search.portClosed = true;
            return search;
        }
        if (progress.stopped()) {
            search.cancelled = true;
            return search;
        }
        progress.show(QStringLiteral("Address %1").arg(address), address - 1, total);
        if (const auto identity = ask(line, address)) {
            search.found.push_back(*identity);
        }
    }
    if (search.found.empty() && !progress.stopped()) {
        progress.show(QStringLiteral("Address 0"), kLastUnitAddress, total);
        search.askedZero = true;
        if (const auto identity = ask(line, 0)) {
            search.found.push_back(*identity);
        }
    }
    search.cancelled = progress.stopped();
    progress.show(QStringLiteral("Done"), total, total);
    return search;
}

}  // namespace halvex::commissioning
