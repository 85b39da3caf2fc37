# The video source and the lens table an operator types for the live video
# (bench/fuzz.sh video-source). Qt Core only, no GStreamer.
if(HALVEX_FUZZ)
    add_executable(halvex-video-source-fuzzer ${CMAKE_CURRENT_LIST_DIR}/video_source_fuzzer.cpp)
    target_link_libraries(halvex-video-source-fuzzer PRIVATE halvex_video_source)
    target_link_options(halvex-video-source-fuzzer PRIVATE -fsanitize=fuzzer)
endif()
