# Installs the build tree BUILD, renames the folder to a name with a blank, and builds the hosts of
# samples/hosts in each way that users can. Each host must find the libraries and convert SCENE to the same
# script.
set(first "${WORK}/first")
set(prefix "${WORK}/moved away")
set(ENV{LD_LIBRARY_PATH})
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK}" RESULT_VARIABLE status
        OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}: ${status}\n${said}")
    endif()
    set(said "${said}" PARENT_SCOPE)
endfunction()

# Converts the scene with a host and compares the script with that of the installed program.
function(convert host)
    file(RENAME "${WORK}/scene.mcx" "${WORK}/before.mcx")
    run("${host}" "${SCENE}" scene.mcx)
    run(${CMAKE_COMMAND} -E compare_files scene.mcx before.mcx)
endfunction()

function(build_with_cmake source build)
    run(${CMAKE_COMMAND} -S "${source}" -B "${build}" -G ${GENERATOR} -D CMAKE_BUILD_TYPE=Debug
        -D CMAKE_C_COMPILER=${C_COMPILER} -D CMAKE_CXX_COMPILER=${CXX_COMPILER} "-DCMAKE_C_FLAGS=${C_FLAGS}"
        "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_CXX_STANDARD_LIBRARIES=${CXX_LIBRARIES}" ${ARGN})
    run(${CMAKE_COMMAND} --build "${build}")
    foreach(host convert_c convert_cpp)
        file(GLOB_RECURSE made "${WORK}/${build}/*/${host}" "${WORK}/${build}/${host}")
        convert("${made}")
    endforeach()
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD}" --prefix "${first}")
file(RENAME "${first}" "${prefix}")
foreach(file ${BINDIR}/3ds2mcx include/mclib.h include/mclmodel.h ${LIBDIR}/libMCL3DS20.so.3)
    if(NOT EXISTS "${prefix}/${file}")
        message(FATAL_ERROR "not installed: ${file}")
    endif()
endforeach()
file(GLOB_RECURSE package_files "${prefix}/${LIBDIR}/*.cmake" "${prefix}/${LIBDIR}/*.pc")
foreach(file ${package_files})
    file(READ "${file}" text)
    foreach(folder "${first}" "${BUILD}" "${SOURCE}")
        string(FIND "${text}" "${folder}" place)
        if(NOT place EQUAL -1)
            message(FATAL_ERROR "${file} names ${folder}, which users don't have")
        endif()
    endforeach()
endforeach()
run("${prefix}/${BINDIR}/3ds2mcx" "${SCENE}" -o scene.mcx)

build_with_cmake("${SOURCE}/samples/hosts" by_package "-DCMAKE_PREFIX_PATH=${prefix}")

file(WRITE "${WORK}/tree/CMakeLists.txt" "cmake_minimum_required(VERSION 3.22)\nproject(tree C CXX)\n"
    "add_subdirectory(\"${SOURCE}\" library)\nadd_subdirectory(\"${SOURCE}/samples/hosts\" hosts)\n")
build_with_cmake(tree by_subdirectory)
run(${CMAKE_COMMAND} --install by_subdirectory --prefix "${WORK}/nothing")
if(EXISTS "${WORK}/nothing/include")
    message(FATAL_ERROR "as a part of another project, the library installs its files with that one's")
endif()

if(PKG_CONFIG)
    set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
    run(${PKG_CONFIG} --cflags --libs mcl3ds20)
    separate_arguments(flags UNIX_COMMAND "${said} ${CXX_FLAGS}")
    list(APPEND flags "-Wl,-rpath,${prefix}/${LIBDIR}")
    run(${C_COMPILER} "${SOURCE}/samples/hosts/convert.c" -o by_pkg_config_c ${flags})
    convert("${WORK}/by_pkg_config_c")
    run(${CXX_COMPILER} -std=c++17 "${SOURCE}/samples/hosts/convert.cpp" -o by_pkg_config_cpp ${flags})
    convert("${WORK}/by_pkg_config_cpp")
endif()
