#pragma once

#include <vector>

#include "console/console_context.h"

namespace halvex {

// The "Get" handlers the connection sequence runs, in its order. Each page
// registers its own in the context's read handlers, so the bytes of every
// request live with the page that decodes the reply.
const std::vector<const char*>& setupReads();
const std::vector<const char*>& cameraReads();

// Runs the registered handler; a missing one is reported, never skipped
// without a word.
void runInitialRead(ConsoleContext& context, const char* handler);

}  // namespace halvex
