# kxra_extension(name SOURCES ... [LIBRARIES ...] [EXPORT_FOUNDATION]): an SNMP extension library. Its file is
# called after the target, without a prefix, since the base name is the module name. It holds the whole frame; the
# sources supply what Snmp/Frame/Extension.h asks for. It exports the five functions and DllMain, and with
# EXPORT_FOUNDATION the classes of the foundation too.
function(kxra_extension name)
    cmake_parse_arguments(arg "EXPORT_FOUNDATION" "" "SOURCES;LIBRARIES" ${ARGN})
    # A host loads it; what exports the foundation is linked by other modules too, under its own name.
    set(type MODULE)
    if(arg_EXPORT_FOUNDATION)
        set(type SHARED)
    endif()
    add_library(${name} ${type} ${arg_SOURCES})
    kxra_target(${name})
    set_target_properties(${name} PROPERTIES PREFIX "")
    # The objects themselves, so that all of the frame is there; the archives behind them add nothing then.
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:kxra_frame>)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} kxra_frame)
    set(map Extension.map)
    if(arg_EXPORT_FOUNDATION)
        target_sources(${name} PRIVATE $<TARGET_OBJECTS:kxra_vlk>)
        target_link_libraries(${name} PRIVATE kxra_vlk)
        target_compile_features(${name} INTERFACE cxx_std_20)
        # What the foundation's headers need of others, and the headers themselves without the archives behind them.
        find_package(Boost REQUIRED COMPONENTS filesystem system)
        find_package(pugixml REQUIRED)
        if(WIN32)
            target_compile_definitions(${name} INTERFACE VLK_IMPORT)
        endif()
        target_link_libraries(${name} INTERFACE Threads::Threads Boost::filesystem Boost::system pugixml::pugixml)
        target_include_directories(
            ${name} INTERFACE $<BUILD_INTERFACE:$<TARGET_PROPERTY:kxra_vlk,INTERFACE_INCLUDE_DIRECTORIES>>
                              $<BUILD_INTERFACE:$<TARGET_PROPERTY:kxra_platform,INTERFACE_INCLUDE_DIRECTORIES>>
                              $<INSTALL_INTERFACE:${KXRA_HEADER_DIRECTORY}>)
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
