# The quelmar program, its line editing and what an install puts beside it.
# Included from src/, so that the program is built as src/quelmar.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBEDIT REQUIRED IMPORTED_TARGET libedit)

file(GLOB quelmar_SRCS CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
add_executable(quelmar ${quelmar_SRCS})
target_link_libraries(quelmar PRIVATE Quelmar::Tools PkgConfig::LIBEDIT)
target_compile_definitions(quelmar PRIVATE QUELMAR_VERSION="${PROJECT_VERSION}")

include(GNUInstallDirs)
install(FILES ${PROJECT_SOURCE_DIR}/quelmar.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/quelmar.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quelmar)
