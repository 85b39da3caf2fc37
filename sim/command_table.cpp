#include "sim/command_table.h"

namespace halvex::sim {

const CommandTable& CommandTable::standard() {
    static const CommandTable table = [] {
        CommandTable built;
        addMotionCommands(built);
        addPresetCommands(built);
        addTourCommands(built);
        addCameraCommands(built);
        addVideoCommands(built);
        addAlignmentCommands(built);
        addSetupCommands(built);
        return built;
    }();
    return table;
}

}  // namespace halvex::sim
