# GStreamer, for the console's live video and the virtual unit's video
# outputs, found through pkg-config: PkgConfig::GST (the core, appsrc and
# appsink, video frames) and PkgConfig::GST_RTSP_SERVER.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GST REQUIRED IMPORTED_TARGET gstreamer-1.0 gstreamer-app-1.0 gstreamer-video-1.0)
pkg_check_modules(GST_RTSP_SERVER REQUIRED IMPORTED_TARGET gstreamer-rtsp-server-1.0)

# GLib's pkg-config asks for -pthread when compiling, which only defines
# _REENTRANT (glibc needs nothing for threads); with it the files could not
# share the console's precompiled headers. Linking keeps the flag.
foreach(target PkgConfig::GST PkgConfig::GST_RTSP_SERVER)
    get_target_property(options ${target} INTERFACE_COMPILE_OPTIONS)
    if(options)
        list(REMOVE_ITEM options -pthread)
        set_target_properties(${target} PROPERTIES INTERFACE_COMPILE_OPTIONS "${options}")
    endif()
endforeach()
