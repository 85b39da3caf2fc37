# halvex_forbid_gui(TARGET...) fails the configuration when a target links Qt
# Gui or Widgets, directly or through any target it links: what runs without a
# display must not be able to reach for one by accident. Call it once every
# target is defined.
include(${CMAKE_CURRENT_LIST_DIR}/linked_targets.cmake)

function(halvex_forbid_gui)
    foreach(checked ${ARGN})
        halvex_linked_targets(${checked} linked)
        foreach(library ${linked})
            if(library MATCHES "^Qt6?::(Gui|Widgets)$")
                message(FATAL_ERROR "${checked} must not link Qt Gui or Widgets; it does through ${library}")
            endif()
        endforeach()
    endforeach()
endfunction()
