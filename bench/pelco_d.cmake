# From a Pelco-D keyboard's frame on TCP to its jog message on the line
# (halvex-pelco-d-latency [SAMPLES]).
add_executable(halvex-pelco-d-latency pelco_d_latency.cpp
                                      ${CMAKE_SOURCE_DIR}/tests/support/recording_peer.cpp)
target_link_libraries(halvex-pelco-d-latency PRIVATE halvex_remote_pelco_d halvex_sim_model)
