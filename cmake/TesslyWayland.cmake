# tessly_add_wayland_protocols(name SIDE client|server FOLDER folder PROTOCOLS ...)
#
# A library of the marshalling code of the descriptions in a folder, which is generated from them in C,
# with the headers of one side.
function(tessly_add_wayland_protocols name)
    cmake_parse_arguments(PARSE_ARGV 1 WAYLAND "" "SIDE;FOLDER" "PROTOCOLS")
    pkg_get_variable(scanner wayland-scanner wayland_scanner)
    set(sources)
    foreach(protocol ${WAYLAND_PROTOCOLS})
        set(description "${WAYLAND_FOLDER}/${protocol}.xml")
        set(header "${CMAKE_CURRENT_BINARY_DIR}/${protocol}-${WAYLAND_SIDE}-protocol.h")
        set(code "${CMAKE_CURRENT_BINARY_DIR}/${protocol}-${WAYLAND_SIDE}-protocol.c")
        add_custom_command(
            OUTPUT "${header}" "${code}"
            COMMAND "${scanner}" --strict ${WAYLAND_SIDE}-header
                "${description}" "${header}"
            COMMAND "${scanner}" --strict private-code "${description}" "${code}"
            DEPENDS "${description}"
            VERBATIM)
        list(APPEND sources "${header}" "${code}")
    endforeach()
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTOUIC OFF)
    target_include_directories(${name} SYSTEM PUBLIC "${CMAKE_CURRENT_BINARY_DIR}")
    string(TOUPPER "${WAYLAND_SIDE}" side)
    target_link_libraries(${name} PUBLIC PkgConfig::WAYLAND_${side})
endfunction()
