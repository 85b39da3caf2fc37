# halvex_qt_test: Qt Test, for the suite, the screenshot tool and the
# benchmarks, without the two folder names Qt Test defines for QFINDTESTDATA,
# which nothing here uses. They differ in every folder, and a precompiled
# header holds only where the macros are the same, so each folder's tests
# would need their own.
find_package(Qt6 REQUIRED COMPONENTS Test)
add_library(halvex_qt_test INTERFACE)
target_link_libraries(halvex_qt_test INTERFACE $<LINK_ONLY:Qt6::Test> Qt6::Core)
target_include_directories(halvex_qt_test SYSTEM INTERFACE
                           $<TARGET_PROPERTY:Qt6::Test,INTERFACE_INCLUDE_DIRECTORIES>)
target_compile_definitions(halvex_qt_test INTERFACE QT_TESTLIB_LIB)
