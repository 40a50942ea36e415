# kxra_extension(name SOURCES ... [LIBRARIES ...] [EXPORT_FOUNDATION]): an SNMP extension library. Its file is
# called after the target, without a prefix, since the base name is the module name. It holds the whole frame; the
# sources supply what Snmp/Frame/Extension.h asks for. It exports the five functions and DllMain, and with
# EXPORT_FOUNDATION the classes of the foundation too.
function(kxra_extension name)
    cmake_parse_arguments(arg "EXPORT_FOUNDATION" "" "SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${arg_SOURCES})
    kxra_target(${name})
    set_target_properties(${name} PROPERTIES PREFIX "")
    target_link_libraries(${name} PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,kxra_frame> ${arg_LIBRARIES})
    # Where another library brings the frame in, it is this same whole one.
    set_target_properties(${name} PROPERTIES LINK_LIBRARY_OVERRIDE_kxra_frame WHOLE_ARCHIVE)
    set(map Extension.map)
    if(arg_EXPORT_FOUNDATION)
        target_link_libraries(${name} PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,kxra_vlk>)
        set_target_properties(${name} PROPERTIES LINK_LIBRARY_OVERRIDE_kxra_vlk WHOLE_ARCHIVE)
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
