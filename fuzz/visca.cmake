# The VISCA bridge's parser: the VISCA over IP header, the packet reader of
# a TCP stream and the packets themselves (bench/fuzz.sh visca). No Qt.
if(HALVEX_FUZZ)
    add_executable(halvex-visca-fuzzer ${CMAKE_CURRENT_LIST_DIR}/visca_fuzzer.cpp)
    target_link_libraries(halvex-visca-fuzzer PRIVATE halvex_visca_protocol)
    target_link_options(halvex-visca-fuzzer PRIVATE -fsanitize=fuzzer)
endif()
