# find_header_package(NAME TARGET HEADER): finds a header-only package and defines its imported target.
# A cross build must not use the package's own include folder, which has all headers of the build system. It
# uses a folder that only has a link to the package's headers.
function(find_header_package name target header)
    if(NOT CMAKE_CROSSCOMPILING)
        find_package(${name} CONFIG QUIET)
        return()
    endif()
    find_path(MC3DS_${name}_INCLUDE_DIR ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH
        DOC "the folder that has ${header}")
    if(MC3DS_${name}_INCLUDE_DIR)
        set(dir ${CMAKE_CURRENT_BINARY_DIR}/headers/${name})
        get_filename_component(folder ${header} DIRECTORY)
        file(MAKE_DIRECTORY ${dir})
        file(CREATE_LINK ${MC3DS_${name}_INCLUDE_DIR}/${folder} ${dir}/${folder} SYMBOLIC)
        add_library(${target} INTERFACE IMPORTED)
        target_include_directories(${target} INTERFACE ${dir})
    endif()
endfunction()
