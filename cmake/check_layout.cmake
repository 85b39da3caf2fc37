cmake_minimum_required(VERSION 3.25)
# Fails when a file includes a header from a folder above its own, so the
# arrows of the layout stay true: app -> window -> recorder, input -> features ->
# views -> console -> session -> protocol, window -> remote -> session and window ->
# live_video -> session. Features (commissioning among them) never
# include each other. Run with
#   cmake -DSOURCE_DIR=<top> -P cmake/check_layout.cmake
set(below_protocol protocol)
set(below_session ${below_protocol} session)
set(below_console ${below_session} console)
set(below_views ${below_console} views)
set(feature_base ${below_views})

set(allowed_protocol ${below_protocol})
set(allowed_session ${below_session})
set(allowed_console ${below_console})
set(allowed_views ${below_views})
set(allowed_connection ${feature_base} connection)
set(allowed_positioning ${feature_base} positioning)
set(allowed_camera ${feature_base} camera help)
set(allowed_setup ${feature_base} setup)
set(allowed_video ${feature_base} video)
set(allowed_commissioning ${feature_base} commissioning)
set(allowed_help help)
set(allowed_network network)
set(allowed_remote ${below_session} network remote)
set(allowed_live_video ${below_session} live_video)
set(allowed_recorder ${feature_base} recorder)
set(allowed_input ${feature_base} input)
set(allowed_window ${feature_base} connection positioning camera setup video help network remote recorder
    commissioning input live_video window)
set(allowed_sim sim protocol)

set(failures "")
foreach(folder protocol session console views connection positioning camera setup video commissioning help
               network remote recorder input live_video window sim)
    file(GLOB_RECURSE sources ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cpp)
    foreach(source ${sources})
        file(STRINGS ${source} includes REGEX "^#include \"[a-z_]+/")
        foreach(line ${includes})
            string(REGEX REPLACE "^#include \"([a-z_]+)/.*" "\\1" target "${line}")
            if(NOT target IN_LIST allowed_${folder})
                file(RELATIVE_PATH where ${SOURCE_DIR} ${source})
                string(APPEND failures "  ${where}: ${line}\n")
            endif()
        endforeach()
    endforeach()
endforeach()
if(failures)
    message(FATAL_ERROR "Includes against the direction of the layout:\n${failures}")
endif()
