# halvex_precompile_headers() gives every target under the source tree that
# uses Qt precompiled headers: Qt Core's most used headers, Qt Widgets' when
# it links them, QCoro's task and GoogleTest when it links those.
#
# A precompiled header holds for a file compiled with the same options and
# with every macro the header was made with: GCC and clang both refuse one
# made with a macro that the file lacks. A macro that only the file defines
# is fine as long as no header in it reads that macro (-Winvalid-pch, an
# error here, says so when one does). So the targets that precompile the same
# headers with the same options share one: the target with the fewest macros
# makes it, and every target whose macros include all of the maker's reuses
# it, unless it links that target. That keeps the build to a handful of them, each about 160 MB with GCC.
# Libraries and programs share them, as Qt has both compiled
# position-independent. Call it last, once every target has its definitions
# and options.
include(${CMAKE_CURRENT_LIST_DIR}/linked_targets.cmake)

function(_halvex_targets_under dir out)
    get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(subdirectories DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
    foreach(subdirectory ${subdirectories})
        _halvex_targets_under(${subdirectory} more)
        list(APPEND targets ${more})
    endforeach()
    set(${out} ${targets} PARENT_SCOPE)
endfunction()

# _halvex_gathered(TARGET LINKED OWN INTERFACE OUT): TARGET's OWN property
# and the INTERFACE property of every target in LINKED, as one list.
function(_halvex_gathered target linked own interface out)
    get_target_property(values ${target} ${own})
    if(NOT values)
        set(values "")
    endif()
    foreach(library ${linked})
        if(TARGET ${library})
            get_target_property(more ${library} ${interface})
            if(more)
                list(APPEND values ${more})
            endif()
        endif()
    endforeach()
    list(REMOVE_DUPLICATES values)
    set(${out} "${values}" PARENT_SCOPE)
endfunction()

function(halvex_precompile_headers)
    set(precompiled ${CMAKE_SOURCE_DIR}/cmake/precompiled)
    _halvex_targets_under(${CMAKE_SOURCE_DIR} targets)
    set(keys "")
    foreach(target ${targets})
        get_target_property(type ${target} TYPE)
        if(NOT type MATCHES "^(STATIC_LIBRARY|EXECUTABLE)$")
            continue()
        endif()
        halvex_linked_targets(${target} linked)
        if(NOT "Qt6::Core" IN_LIST linked)
            continue()
        endif()
        set(headers ${precompiled}/qt_core.h)
        if("Qt6::Widgets" IN_LIST linked)
            list(APPEND headers ${precompiled}/qt_widgets.h)
        endif()
        if("QCoro6::Coro" IN_LIST linked)
            list(APPEND headers <QCoro/QCoroTask>)
        endif()
        if("GTest::gtest" IN_LIST linked)
            list(APPEND headers <gtest/gtest.h>)
        endif()
        # Warnings do not change what a header holds; every other option does.
        _halvex_gathered(${target} "${linked}" COMPILE_OPTIONS INTERFACE_COMPILE_OPTIONS options)
        list(FILTER options EXCLUDE REGEX "(^|:)-W")
        string(MD5 key "${headers};${options}")
        _halvex_gathered(${target} "${linked}" COMPILE_DEFINITIONS INTERFACE_COMPILE_DEFINITIONS
                         macros_${target})
        set(linked_${target} ${linked})
        # Fewest macros first, so that a maker's macros are all in the
        # others'; among equals, what links least, so that a library makes
        # the header before the programs that link it could.
        list(LENGTH macros_${target} macro_count)
        list(LENGTH linked link_count)
        math(EXPR order "${macro_count} * 1000 + ${link_count}")
        list(APPEND keys ${key})
        list(APPEND members_${key} "${order}:${target}")
        set(headers_${key} ${headers})
    endforeach()
    list(REMOVE_DUPLICATES keys)
    foreach(key ${keys})
        list(SORT members_${key} COMPARE NATURAL)
        set(makers "")
        foreach(member ${members_${key}})
            string(REGEX REPLACE "^[0-9]+:" "" target ${member})
            set(maker "")
            foreach(candidate ${makers})
                # Reusing a header waits for its maker, which must not wait for
                # this target in turn.
                if(target IN_LIST linked_${candidate})
                    continue()
                endif()
                set(missing ${macros_${candidate}})
                if(macros_${target})
                    list(REMOVE_ITEM missing ${macros_${target}})
                endif()
                if(NOT missing)
                    set(maker ${candidate})
                    break()
                endif()
            endforeach()
            if(maker)
                target_precompile_headers(${target} REUSE_FROM ${maker})
            else()
                target_precompile_headers(${target} PRIVATE ${headers_${key}})
                list(APPEND makers ${target})
            endif()
        endforeach()
    endforeach()
endfunction()
