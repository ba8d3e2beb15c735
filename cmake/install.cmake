# What a stranger's program builds against: headers, the libraries, a CMake package and pkg-config files.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ribkit)
# The C++ interface: the layouts of all messages, and what reads and writes bytes by their names.
set(ribkit_cxx_headers bytes.h layout.h row.h size.h view.h writer.h)
list(TRANSFORM ribkit_cxx_headers PREPEND ${CMAKE_SOURCE_DIR}/codec/)
install(FILES ${ribkit_cxx_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ribkit/codec)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/codec/messages DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ribkit/codec)
# Each library has its own file of targets, so that packages can have them apart; CMake's package takes those that are there.
install(TARGETS ribkit ribkit_static EXPORT ribkit-targets)
install(TARGETS ribkit_platform ribkit_platform_static EXPORT ribkit-platform-targets)
install(TARGETS ribkit_catalogue_shared ribkit_catalogue_static EXPORT ribkit-catalogue-targets)
foreach(library IN ITEMS ribkit ribkit-platform ribkit-catalogue)
    install(EXPORT ${library}-targets NAMESPACE ribkit:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ribkit)
endforeach()
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/ribkit-config.cmake.in ${CMAKE_BINARY_DIR}/ribkit-config.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ribkit)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ribkit-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ribkit-config.cmake ${CMAKE_BINARY_DIR}/ribkit-config-version.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ribkit)
# pkg-config files find the prefix from where they are themselves, however deep the libraries' folder is.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE RIBKIT_PC_INCLUDES)
# What a program that links the static libraries has to add.
list(TRANSFORM LIBNATS_LIBRARIES PREPEND " -l" OUTPUT_VARIABLE RIBKIT_NATS_FLAG)
foreach(file IN ITEMS ribkit.pc ribkit-platform.pc ribkit-catalogue.pc)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/${file}.in ${CMAKE_BINARY_DIR}/${file} @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
