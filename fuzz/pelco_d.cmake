# What a Pelco-D keyboard sends, through the frame assembler and decoder
# (bench/fuzz.sh pelco-d). No Qt: nothing but that code.
if(HALVEX_FUZZ)
    add_executable(halvex-pelco-d-fuzzer pelco_d_fuzzer.cpp)
    target_link_libraries(halvex-pelco-d-fuzzer PRIVATE halvex_pelco_d_frames)
    target_link_options(halvex-pelco-d-fuzzer PRIVATE -fsanitize=fuzzer)
endif()
