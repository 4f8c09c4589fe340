# cpack runs this for each generator. Without dpkg-shlibdeps the package would have no dependencies.
if(CPACK_GENERATOR STREQUAL "DEB")
    find_program(SHLIBDEPS_EXECUTABLE dpkg-shlibdeps)
    if(NOT SHLIBDEPS_EXECUTABLE)
        message(FATAL_ERROR "dpkg-shlibdeps is missing: install dpkg-dev, or run tools/setup.sh build")
    endif()
endif()
