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

file(GLOB_RECURSE pc "${FOLDER}/tree/*/tavlo.pc")
get_filename_component(pc_folder "${pc}" DIRECTORY)
run("${CMAKE_COMMAND}" -E env "PKG_CONFIG_PATH=${pc_folder}" pkg-config --exists tavlo)
run("${FOLDER}/tree/bin/tavlo" effects)
