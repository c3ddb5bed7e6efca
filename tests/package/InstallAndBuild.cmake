# cmake -D BUILD=... -D SOURCE=... -D FOLDER=... -P InstallAndBuild.cmake
#
# Installs, then builds and runs a host that knows of nothing but the installed tree: with the CMake package and with
# pkg-config. The installed program has to find its library, too.
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${FOLDER}/tree")
run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${FOLDER}/host" -G Ninja -D "CMAKE_PREFIX_PATH=${FOLDER}/tree")
run("${CMAKE_COMMAND}" --build "${FOLDER}/host")
run("${FOLDER}/host/host")

# The example that the project shows first is a whole host as well.
file(READ "${README}" example)
string(FIND "${example}" "```cpp\n" begin)
math(EXPR begin "${begin} + 7")
string(SUBSTRING "${example}" ${begin} -1 example)
string(FIND "${example}" "```" end)
string(SUBSTRING "${example}" 0 ${end} example)
file(WRITE "${FOLDER}/example/main.cpp" "${example}")
file(COPY "${SOURCE}/CMakeLists.txt" DESTINATION "${FOLDER}/example")
run("${CMAKE_COMMAND}" -S "${FOLDER}/example" -B "${FOLDER}/example/build" -G Ninja -D "CMAKE_PREFIX_PATH=${FOLDER}/tree")
run("${CMAKE_COMMAND}" --build "${FOLDER}/example/build")

file(GLOB_RECURSE pc "${FOLDER}/tree/*/tavlo.pc")
get_filename_component(pc_folder "${pc}" DIRECTORY)
run("${CMAKE_COMMAND}" -E env "PKG_CONFIG_PATH=${pc_folder}" pkg-config --exists tavlo)
run("${FOLDER}/tree/bin/tavlo" effects)
