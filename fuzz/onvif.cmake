# What an ONVIF client sends: the HTTP request reader and the SOAP envelope
# reader (bench/fuzz.sh onvif).
if(HALVEX_FUZZ)
    add_executable(halvex-onvif-fuzzer ${CMAKE_CURRENT_LIST_DIR}/onvif_fuzzer.cpp)
    target_link_libraries(halvex-onvif-fuzzer PRIVATE halvex_onvif_http halvex_onvif_soap)
    target_link_options(halvex-onvif-fuzzer PRIVATE -fsanitize=fuzzer)
endif()
