# tessly_add_view_module(name URI uri SOURCES ... QML ... [RESOURCES ...] [DEPENDS ...])
#
# A QML module as a static library. It takes the headers of the floors below, but carries none of
# their code: the views' plugin finds it in the program that loads it. Tests link both.
function(tessly_add_view_module name)
    cmake_parse_arguments(PARSE_ARGV 1 VIEW "" "URI" "SOURCES;QML;RESOURCES;DEPENDS")
    qt_add_library(${name} STATIC ${VIEW_SOURCES})
    target_include_directories(${name} PUBLIC
        "${CMAKE_CURRENT_SOURCE_DIR}"
        $<TARGET_PROPERTY:tessly_ui,INTERFACE_INCLUDE_DIRECTORIES>)
    target_link_libraries(${name}
        PUBLIC Qt6::Quick QCoro6::Core PkgConfig::XCB ${VIEW_DEPENDS}
        PRIVATE tessly_options)
    target_precompile_headers(${name} REUSE_FROM tessly_support)

    # What the QML module has to know of the types of the floor below.
    get_target_property(metatypes tessly_ui INTERFACE_QT_META_TYPES_BUILD_FILE)
    set_source_files_properties("${metatypes}" PROPERTIES GENERATED TRUE HEADER_FILE_ONLY TRUE)
    target_sources(${name} PRIVATE "${metatypes}")
    add_dependencies(${name} tessly_ui)

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
