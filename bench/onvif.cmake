# From an ONVIF client's SOAP request over the server's port to its frame on
# the line, at the real tick with the virtual unit in process.
add_executable(halvex-onvif-latency ${CMAKE_CURRENT_LIST_DIR}/onvif_latency.cpp
                                    ${CMAKE_SOURCE_DIR}/tests/support/recording_peer.cpp)
target_link_libraries(halvex-onvif-latency PRIVATE halvex_remote_onvif halvex_sim_model)
