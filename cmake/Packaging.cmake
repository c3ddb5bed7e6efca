# What `cmake --install` puts where: component `runtime` (the library and its modules, side by side), `development`
# (headers, CMake package, tavlo.pc) and `host` (the program tavlo).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(tavlo_folder "${CMAKE_INSTALL_LIBDIR}/tavlo")
set(tavlo_package "${CMAKE_INSTALL_LIBDIR}/cmake/Tavlo")

install(TARGETS tavlo EXPORT TavloTargets
    LIBRARY DESTINATION "${tavlo_folder}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS tavlo-headers EXPORT TavloTargets)
install(TARGETS TavloAudioPortModule TavloCUDAUtil TavloCodecAggregationModule TavloCommonModule TavloMpegModule TavloOutputModule
    LIBRARY DESTINATION "${tavlo_folder}" COMPONENT runtime)
file(RELATIVE_PATH tavlo_from_programs "/${CMAKE_INSTALL_BINDIR}" "/${tavlo_folder}")
set_target_properties(tavlo-host PROPERTIES INSTALL_RPATH "$ORIGIN/${tavlo_from_programs}")
install(TARGETS tavlo-host RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT host)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/tavlo" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
    FILES_MATCHING PATTERN "*.h")
install(EXPORT TavloTargets NAMESPACE Tavlo:: DESTINATION "${tavlo_package}" COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/TavloConfig.cmake.in" "${PROJECT_BINARY_DIR}/TavloConfig.cmake"
    INSTALL_DESTINATION "${tavlo_package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TavloConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
file(RELATIVE_PATH tavlo_from_pkgconfig "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${CMAKE_CURRENT_LIST_DIR}/tavlo.pc.in" "${PROJECT_BINARY_DIR}/tavlo.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/TavloConfig.cmake" "${PROJECT_BINARY_DIR}/TavloConfigVersion.cmake"
    DESTINATION "${tavlo_package}" COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/tavlo.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
