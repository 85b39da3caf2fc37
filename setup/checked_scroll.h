#pragma once

#include <QScrollBar>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary_words.h"

namespace halvex {

// Puts a value from the unit into a scroll bar. A value outside the bar's
// range is a range fault of the control (the bar is left as it was), never
// a silent clamp.
void setScrollChecked(QScrollBar* scroll, long value);

// The bar's value as a two-byte word, two's complement; beyond +-32767 is a
// range fault.
std::uint32_t wordOf(const QScrollBar* scroll);

// The bar's value into a two-byte field of a message.
template <class M>
void putWord(std::vector<Byte>& message, vocab::Field<M> field, const QScrollBar* scroll) {
    vocab::put(message, field, wordOf(scroll));
}

// The bar's value as one byte; above 255 is a range fault.
Byte byteOf(const QScrollBar* scroll);

}  // namespace halvex
