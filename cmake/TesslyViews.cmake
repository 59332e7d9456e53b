# tessly_add_view_module(name URI uri SHOWS rooms ... SOURCES ... QML ... [RESOURCES ...] [DEPENDS ...])
#
# A QML module as a static library. It takes the headers of the rooms below that it shows, but carries
# none of their code: the views' plugin finds it in the program that loads it. Tests link both.
function(tessly_add_view_module name)
    cmake_parse_arguments(PARSE_ARGV 1 VIEW "" "URI" "SHOWS;SOURCES;QML;RESOURCES;DEPENDS")
    qt_add_library(${name} STATIC ${VIEW_SOURCES})
    target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_link_libraries(${name}
        PUBLIC Qt6::Quick QCoro6::Core ${VIEW_DEPENDS}
        PRIVATE tessly_options)
    target_precompile_headers(${name} REUSE_FROM tessly_support)
    foreach(room ${VIEW_SHOWS})
        target_include_directories(${name}
            PUBLIC $<TARGET_PROPERTY:${room},INTERFACE_INCLUDE_DIRECTORIES>)
        # What the QML module has to know of the room's types.
        get_target_property(metatypes ${room} INTERFACE_QT_META_TYPES_BUILD_FILE)
        if(metatypes)
            set_source_files_properties("${metatypes}" PROPERTIES GENERATED TRUE HEADER_FILE_ONLY TRUE)
            target_sources(${name} PRIVATE "${metatypes}")
        endif()
        add_dependencies(${name} ${room})
    endforeach()

    string(REPLACE "." "/" path "${VIEW_URI}")
    qt_add_qml_module(${name}
        URI ${VIEW_URI}
        VERSION 1.0
        RESOURCE_PREFIX /qt/qml
        OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml/${path}"
        IMPORT_PATH "${CMAKE_BINARY_DIR}/qml"
        NO_PLUGIN
        QML_FILES ${VIEW_QML}
        RESOURCES ${VIEW_RESOURCES})
endfunction()
