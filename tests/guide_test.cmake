# Checks that the guide shows the hosts in samples/hosts unchanged.
file(READ "${SOURCE}/docs/host-guide.md" guide)
foreach(host convert.c convert.cpp convert.py)
    file(READ "${SOURCE}/samples/hosts/${host}" text)
    string(FIND "${guide}" "\n${text}```" place)
    if(place LESS 0)
        message(SEND_ERROR "docs/host-guide.md doesn't show samples/hosts/${host} as it is")
    endif()
endforeach()
