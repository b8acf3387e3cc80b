# Libraries that bring no CMake package become imported targets here. Not through pkg-config: Debian's file of
# libresample hands on the flags that the package was built with, and users of an installed tree need none of them.
function(audlmd_find_library target library header)
    find_library(${target}_LIBRARY ${library} REQUIRED)
    find_path(${target}_INCLUDE_DIR ${header} REQUIRED)
    mark_as_advanced(${target}_LIBRARY ${target}_INCLUDE_DIR)
    # Global, because audlmd_add_inlined is called in other folders.
    add_library(${target}::${target} UNKNOWN IMPORTED GLOBAL)
    set_target_properties(${target}::${target} PROPERTIES
        IMPORTED_LOCATION ${${target}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${${target}_INCLUDE_DIR})
endfunction()

audlmd_find_library(Ebur128 ebur128 ebur128.h)
audlmd_find_library(Hwy hwy hwy/highway.h)
set_target_properties(Hwy::Hwy PROPERTIES INTERFACE_COMPILE_DEFINITIONS HWY_SHARED_DEFINE)
audlmd_find_library(PortAudio portaudio portaudio.h)
audlmd_find_library(Resample resample libresample.h)
audlmd_find_library(SndFile sndfile sndfile.h)
audlmd_find_library(Soxr soxr soxr.h)
audlmd_find_library(Zlib z zlib.h)
find_package(Threads REQUIRED)
find_package(nlohmann_json REQUIRED)
