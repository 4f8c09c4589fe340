# The interface target mc3ds_options: compile options of all targets of the project.
add_library(mc3ds_options INTERFACE)
# The bytes of outputs are guaranteed, so no fused multiply-add, and on 32-bit x86 no 80-bit registers.
if(MSVC)
    target_compile_options(mc3ds_options INTERFACE /W4 /fp:precise /utf-8)
    target_compile_definitions(mc3ds_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(mc3ds_options INTERFACE -Wall -Wextra -Wshadow -Wconversion -ffp-contract=off)
endif()
if(NOT MSVC AND CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86|AMD64|amd64")
    target_compile_options(mc3ds_options INTERFACE -msse2 -mfpmath=sse)
endif()
# gcc 12 falsely reports overlaps in "text" + std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(mc3ds_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(MC3DS_WERROR)
    target_compile_options(mc3ds_options INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
endif()
# Makes the offsets of fopen, fseeko and the like 64-bit on every system.
target_compile_definitions(mc3ds_options INTERFACE _FILE_OFFSET_BITS=64)
