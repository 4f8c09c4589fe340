# The installed files and the Debian package. All paths in installed files are relative, so that the folder
# can be moved as a whole.
include(CMakePackageConfigHelpers)

set(installed_targets MCL3DS20)
set(installed_headers include/mcl3ds20.h)
if(MC3DS_HAVE_MCLMODEL)
    list(APPEND installed_targets mcl20)
    list(APPEND installed_headers platform/mcl20/mclib.h platform/mcl20/mclmodel.h)
endif()
install(TARGETS ${installed_targets} EXPORT MCL3DS20Targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${installed_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET 3ds2mcx)
    install(TARGETS 3ds2mcx RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES host/3ds2mcx.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES host/3ds2mcx.bash RENAME 3ds2mcx
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
endif()
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/mcl3ds20)
install(FILES LICENSE README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${doc_dir})
install(DIRECTORY docs DESTINATION ${doc_dir})
install(DIRECTORY samples/hosts DESTINATION ${doc_dir}/samples)

# The libraries are installed in one folder. Another Meshcaster library is loaded from where it was linked.
set_target_properties(${installed_targets} PROPERTIES
    INSTALL_RPATH "$ORIGIN" INSTALL_RPATH_USE_LINK_PATH ON)
if(TARGET 3ds2mcx)
    set_target_properties(3ds2mcx PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
endif()

# ---- The CMake package, find_package(MCL3DS20)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/MCL3DS20)
install(EXPORT MCL3DS20Targets NAMESPACE MCL3DS20:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/MCL3DS20Config.cmake.in
    ${PROJECT_BINARY_DIR}/MCL3DS20Config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/MCL3DS20ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/MCL3DS20Config.cmake ${PROJECT_BINARY_DIR}/MCL3DS20ConfigVersion.cmake
    DESTINATION ${package_dir})

# ---- pkg-config

set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
foreach(dir libdir includedir)
    string(TOUPPER CMAKE_INSTALL_${dir} given)
    if(IS_ABSOLUTE "${${given}}")
        set(pc_${dir} "${${given}}")
    else()
        set(pc_${dir} "\${prefix}/${${given}}")
    endif()
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/mcl3ds20.pc.in ${PROJECT_BINARY_DIR}/mcl3ds20.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mcl3ds20.pc DESTINATION ${pc_dir})

# ---- Packages

set(CPACK_PACKAGE_NAME mcl3ds20)
set(CPACK_PACKAGE_CONTACT "The MCL3DS20 authors <authors@mcl3ds20.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# This also runs ldconfig when the package is installed or removed.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/CheckPackaging.cmake)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform/mcl20)
if(PROJECT_IS_TOP_LEVEL)
    if(WIN32)
        set(CPACK_GENERATOR ZIP)
    elseif(NOT CPACK_GENERATOR)
        set(CPACK_GENERATOR DEB)
    endif()
    include(CPack)
endif()
