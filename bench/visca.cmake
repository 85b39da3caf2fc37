# From a VISCA controller's datagram to the frame it makes on the line
# (README: VISCA bridge), with the virtual unit in the process at the real
# tick.
add_executable(halvex-visca-latency ${CMAKE_CURRENT_LIST_DIR}/visca_latency.cpp
                                    ${CMAKE_SOURCE_DIR}/tests/support/recording_peer.cpp)
target_link_libraries(halvex-visca-latency PRIVATE halvex_remote_visca halvex_session
                                                   halvex_sim_model)
