# The package that find_package(Quelmar) reads: exported targets, a config
# that finds the dependencies again, and a version file.
include(CMakePackageConfigHelpers)

set(QUELMAR_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quelmar)

install(EXPORT QuelmarTargets NAMESPACE Quelmar::
    DESTINATION ${QUELMAR_INSTALL_CMAKEDIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuelmarConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/QuelmarConfig.cmake
    INSTALL_DESTINATION ${QUELMAR_INSTALL_CMAKEDIR})
# Before 1.0 a minor version may break the interface
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuelmarConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/QuelmarConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/QuelmarConfigVersion.cmake
    DESTINATION ${QUELMAR_INSTALL_CMAKEDIR})
