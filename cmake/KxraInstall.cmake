# What an installation consists of, and where its parts lie. The rooms hand their targets in; the rest stands here.
# Places are relative to the prefix, which is known for sure when the installation runs (cmake --install --prefix).

include(CMakePackageConfigHelpers)
set(KXRA_PACKAGE_DIRECTORY ${CMAKE_INSTALL_LIBDIR}/cmake/KXRA)
set(KXRA_HEADER_DIRECTORY ${CMAKE_INSTALL_INCLUDEDIR}/kxra)
set(KXRA_SHARE_DIRECTORY ${CMAKE_INSTALL_DATADIR}/kestrix)
set(KXRA_MIB_DIRECTORY ${CMAKE_INSTALL_DATADIR}/snmp/mibs)
set(KXRA_UNIT_DIRECTORY lib/systemd/system)
set(KXRA_SYSUSERS_DIRECTORY lib/sysusers.d)
set(KXRA_INSTALL_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/install)
set(KXRA_INSTALL_STAGE ${CMAKE_BINARY_DIR}/install)

# kxra_install_library(target component): a library of a component of the package, with its headers.
function(kxra_install_library target component)
    get_target_property(header_sets ${target} INTERFACE_HEADER_SETS)
    set(headers "")
    if(header_sets)
        set(headers FILE_SET HEADERS DESTINATION ${KXRA_HEADER_DIRECTORY})
    endif()
    install(
        TARGETS ${target}
        EXPORT KXRA${component}Targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ${headers})
    get_property(components GLOBAL PROPERTY KXRA_INSTALLED_COMPONENTS)
    if(NOT component IN_LIST components)
        set_property(GLOBAL APPEND PROPERTY KXRA_INSTALLED_COMPONENTS ${component})
    endif()
endfunction()

# kxra_install_begin(): stands before everything that is installed.
function(kxra_install_begin)
    configure_file(${KXRA_INSTALL_SCRIPTS}/Begin.cmake.in ${KXRA_INSTALL_STAGE}/Begin.cmake @ONLY)
    install(SCRIPT ${KXRA_INSTALL_STAGE}/Begin.cmake)
endfunction()

# kxra_install_end(): the package's own files, and what needs the prefix. Stands behind everything that is installed.
function(kxra_install_end)
    write_basic_package_version_file(${KXRA_INSTALL_STAGE}/KXRAConfigVersion.cmake COMPATIBILITY SameMajorVersion)
    configure_package_config_file(${KXRA_INSTALL_SCRIPTS}/KXRAConfig.cmake.in ${KXRA_INSTALL_STAGE}/KXRAConfig.cmake
                                  INSTALL_DESTINATION ${KXRA_PACKAGE_DIRECTORY})
    install(FILES ${KXRA_INSTALL_STAGE}/KXRAConfig.cmake ${KXRA_INSTALL_STAGE}/KXRAConfigVersion.cmake
            DESTINATION ${KXRA_PACKAGE_DIRECTORY})
    get_property(components GLOBAL PROPERTY KXRA_INSTALLED_COMPONENTS)
    foreach(component IN LISTS components)
        install(EXPORT KXRA${component}Targets NAMESPACE KXRA:: DESTINATION ${KXRA_PACKAGE_DIRECTORY})
    endforeach()

    set(KXRA_INSTALL_SERVICE FALSE)
    if(TARGET kxra-snmpd AND TARGET KXRA_MIB)
        set(KXRA_INSTALL_SERVICE TRUE)
    endif()
    set(KXRA_INSTALL_PKGCONFIG TRUE)
    if(WIN32) # what it asks for are a Linux system's libraries
        set(KXRA_INSTALL_PKGCONFIG FALSE)
    endif()
    configure_file(${KXRA_INSTALL_SCRIPTS}/End.cmake.in ${KXRA_INSTALL_STAGE}/End.cmake @ONLY)
    install(SCRIPT ${KXRA_INSTALL_STAGE}/End.cmake)

    # The installation's own copy of the script does the same without this build.
    cmake_path(ABSOLUTE_PATH KXRA_SHARE_DIRECTORY BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE share)
    add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DKXRA_SHARE=${share} -P ${KXRA_INSTALL_SCRIPTS}/uninstall.cmake
                      VERBATIM USES_TERMINAL)
endfunction()
