# Compares the export table of a DLL with src/mcl3ds20.def: the same functions with the same numbers, and no others.
# -DDLL=FILE -DOBJDUMP=PROGRAM -DDEF=FILE
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${DEF} definitions REGEX "@[0-9]+")
set(expected)
foreach(line ${definitions})
    string(REGEX REPLACE "^ *([A-Za-z0-9_]+) *@([0-9]+).*$" "\\2 \\1" entry "${line}")
    list(APPEND expected "${entry}")
endforeach()

# The name table counts from 0, export numbers count from the ordinal base. The address table has an entry for each
# number, with or without a name.
string(REGEX MATCH "Ordinal Base[ \t]*([0-9]+)" base "${table}")
set(base ${CMAKE_MATCH_1})
string(REGEX MATCHALL "\\[ *[0-9]+\\] [+]base\\[ *[0-9]+\\] [0-9a-f]+ Export RVA" addresses "${table}")
string(REGEX REPLACE "^.*\\[Ordinal/Name Pointer\\] Table" "" names "${table}")
string(REGEX REPLACE "\n[ \t]*\n.*$" "\n" names "${names}")
string(REGEX MATCHALL "\\[ *[0-9]+\\] ([+]base\\[ *[0-9]+\\] +[0-9a-f]+ )?[A-Za-z_][A-Za-z0-9_]*" names "${names}")
set(found)
foreach(line ${names})
    string(REGEX REPLACE "^\\[ *([0-9]+)\\].*[ ]([A-Za-z_][A-Za-z0-9_]*)$" "\\1;\\2" entry "${line}")
    list(GET entry 0 index)
    list(GET entry 1 name)
    math(EXPR number "${index} + ${base}")
    list(APPEND found "${number} ${name}")
endforeach()

list(SORT expected COMPARE NATURAL)
list(SORT found COMPARE NATURAL)
list(LENGTH addresses addressed)
list(LENGTH expected count)
if(count EQUAL 0 OR NOT found STREQUAL expected OR NOT addressed EQUAL count)
    message(FATAL_ERROR "${DLL} has ${addressed} export numbers and exports ${found}; expected are ${expected}")
endif()
