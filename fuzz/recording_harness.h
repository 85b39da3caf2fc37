#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace halvex::fuzz {

// One file as the Line Log and halvex-sim --replay read it: every record
// read, each frame described from the protocol table, a replay built from
// the records and asked by a few console frames. Checks that what was read
// writes back as the same records, that the reader stays inside the file,
// and that the replay answers only with replies it was given. Returns what
// is wrong, or an empty string. No Qt.
std::string checkRecording(const std::uint8_t* data, std::size_t size);

}  // namespace halvex::fuzz
