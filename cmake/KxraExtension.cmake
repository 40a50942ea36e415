# kxra_extension(name SOURCES ... [LIBRARIES ...] [EXPORT_FOUNDATION]): an SNMP extension library. Its file is
# called after the target, without a prefix, since the base name is the module name. It holds the whole frame; the
# sources supply what Snmp/Frame/Extension.h asks for. It exports the five functions and DllMain, and with
# EXPORT_FOUNDATION the classes of the foundation too.
function(kxra_extension name)
    cmake_parse_arguments(arg "EXPORT_FOUNDATION" "" "SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${arg_SOURCES})
    kxra_target(${name})
    set_target_properties(${name} PROPERTIES PREFIX "")
    # The objects themselves, so that all of the frame is there; the archives behind them add nothing then.
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:kxra_frame>)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} kxra_frame)
    set(map Extension.map)
    if(arg_EXPORT_FOUNDATION)
        target_sources(${name} PRIVATE $<TARGET_OBJECTS:kxra_vlk>)
        target_link_libraries(${name} PRIVATE kxra_vlk)
        set(map ExtensionWithFoundation.map)
    endif()
    if(NOT WIN32)
        target_link_options(${name} PRIVATE LINKER:--version-script=${CMAKE_SOURCE_DIR}/cmake/${map})
        set_target_properties(${name} PROPERTIES LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/${map})
        # A symbol that is missing shows at the build and not at the load. Sanitizers' own come with the program.
        if(NOT KXRA_SANITIZE)
            target_link_options(${name} PRIVATE LINKER:--no-undefined)
        endif()
    endif()
endfunction()
