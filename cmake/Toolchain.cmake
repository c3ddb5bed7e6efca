# What every target of the project is compiled with. Targets of ours link `tavlo-options`.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Programs, libraries and modules stand in one folder, as on a host's machine: the engine finds its modules beside itself.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

# Dev: what a developer and the gate run. Optimised, so that threads meet as they do in a show; assertions on.
set(CMAKE_CXX_FLAGS_DEV "-O1 -g1")
set(CMAKE_C_FLAGS_DEV "-O1 -g1")
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Dev)
endif()

find_program(TAVLO_CCACHE ccache)
if(TAVLO_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${TAVLO_CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${TAVLO_CCACHE}")
endif()
find_program(TAVLO_MOLD mold)
if(TAVLO_MOLD)
    add_link_options(-fuse-ld=mold)
endif()

add_library(tavlo-options INTERFACE)
target_compile_options(tavlo-options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>)
target_compile_definitions(tavlo-options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
# GCC 12 takes "text" + std::to_string(...) for an overlapping copy when it inlines it at -O3 (its bug 105329).
target_compile_options(tavlo-options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TAVLO_SANITIZE)
    target_compile_options(tavlo-options INTERFACE -fsanitize=${TAVLO_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(tavlo-options INTERFACE -fsanitize=${TAVLO_SANITIZE})
    if(TAVLO_SANITIZE MATCHES "address")
        target_sources(tavlo-options INTERFACE
            $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${PROJECT_SOURCE_DIR}/tests/support/LeakCheckExit.cpp>)
    endif()
endif()
if(TAVLO_FUZZ)
    target_compile_options(tavlo-options INTERFACE -fsanitize=fuzzer-no-link)
endif()
