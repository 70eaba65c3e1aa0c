# cmake --install: header, library, tool, sample installer, CMake package and pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(FILES source/frame/pikel.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pikel)
if(NOT WIN32)
    # The system types that the public header needs where there are no Windows headers.
    install(FILES source/platform/pikel_types.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/pikel)
endif()
target_include_directories(pikel_library INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/pikel>)
set_target_properties(pikel_library PROPERTIES EXPORT_NAME pikel)
install(TARGETS pikel_library EXPORT pikelTargets)
install(TARGETS pikel_tool RUNTIME)
install(EXPORT pikelTargets NAMESPACE pikel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/pikel)

write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/pikelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/pikelConfig.cmake "include(\"\${CMAKE_CURRENT_LIST_DIR}/pikelTargets.cmake\")\n")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pikelConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/pikelConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/pikel)

configure_file(${CMAKE_CURRENT_LIST_DIR}/pikel.pc.in ${CMAKE_CURRENT_BINARY_DIR}/pikel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pikel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
