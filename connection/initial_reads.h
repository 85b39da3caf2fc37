#pragma once

#include <string>
#include <vector>

#include "console/console_context.h"

namespace halvex {

// The "Get" handlers the connection sequence runs, in its order, with the
// bare request each sends when its page has not registered a handler.
struct InitialRead {
    std::string handler;
    std::vector<Byte> request;
};

const std::vector<InitialRead>& setupReads();
const std::vector<InitialRead>& cameraReads();

// Runs the registered handler, or sends the bare request.
void runInitialRead(ConsoleContext& context, const InitialRead& read);

}  // namespace halvex
