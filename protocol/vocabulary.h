#pragma once

// The protocol's vocabulary: every message's code and lengths and where each
// of its fields lies, as constants that the senders, the decoders, the
// virtual unit and the protocol table all use, so that a layout is written
// once. Names and value names for people are added by the protocol table.

#include "protocol/vocabulary_alignment.h"
#include "protocol/vocabulary_camera.h"
#include "protocol/vocabulary_motion.h"
#include "protocol/vocabulary_presets.h"
#include "protocol/vocabulary_setup.h"
#include "protocol/vocabulary_tours.h"
#include "protocol/vocabulary_video.h"
#include "protocol/vocabulary_words.h"
