# What `cmake --install` puts where, by component: library, development, kit, host, settingsctl, and each bridge. Everything lies below the
# prefix, and nothing but the units of systemd and the activation file of D-Bus holds its name, so that an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/settings-handler-${PROJECT_VERSION_MAJOR})
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/SettingsHandler)
set(pkg_config_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

function(settings_handler_install_headers component)
  install(DIRECTORY ${ARGN} DESTINATION ${header_folder} COMPONENT ${component} FILES_MATCHING PATTERN "*.h")
endfunction()

# A description of `name` for pkg-config. REQUIRES names others like it, or another's.
function(settings_handler_install_pkg_config component name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "DESCRIPTION;REQUIRES;LIBS" "")
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${pkg_config_folder}
             OUTPUT_VARIABLE prefix_from_here)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/pkgconfig/library.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc DESTINATION ${pkg_config_folder} COMPONENT ${component})
endfunction()

settings_handler_install_headers(development
  interfaces/ SettingsHandler/include/ platform/VessaLogger/include/ platform/Metrics/include/)
install(TARGETS SettingsHandler SettingsHandlerVessaLogger SettingsHandlerUtils SettingsHandlerMetrics
                SettingsHandlerDeviceAbstractionLayer SettingsHandlerInterfaces SettingsHandlerPlatform
  EXPORT SettingsHandlerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${header_folder})
install(EXPORT SettingsHandlerTargets NAMESPACE SettingsHandler:: DESTINATION ${package_folder} COMPONENT development)
get_property(kit_libraries GLOBAL PROPERTY SETTINGS_HANDLER_KIT_LIBRARIES)
list(JOIN kit_libraries " " kit_libraries)
configure_package_config_file(cmake/SettingsHandlerConfig.cmake.in ${PROJECT_BINARY_DIR}/SettingsHandlerConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SettingsHandlerConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/SettingsHandlerConfig.cmake ${PROJECT_BINARY_DIR}/SettingsHandlerConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

install(FILES SettingsHandler/catalogue.json DESTINATION ${CMAKE_INSTALL_DATADIR}/settings-handler COMPONENT development)

settings_handler_install_pkg_config(development SettingsHandler
  DESCRIPTION "${PROJECT_DESCRIPTION}" REQUIRES RapidJSON LIBS -lSettingsHandler)
set(components VessaLogger Utils Metrics DeviceAbstractionLayer)
foreach(component IN LISTS components)
  # Twice, as for CMake (platform/CMakeLists.txt), and in one word, which nothing reorders.
  set(library -lSettingsHandler${component})
  settings_handler_install_pkg_config(development SettingsHandler${component}
    DESCRIPTION "Reference component of SettingsHandler: ${component}" REQUIRES RapidJSON
    LIBS "${library} -Wl,--push-state,--no-as-needed,${library},--pop-state")
endforeach()
list(TRANSFORM components PREPEND SettingsHandler)
list(JOIN components ", " components)
settings_handler_install_pkg_config(development SettingsHandlerPlatform
  DESCRIPTION "All reference components of SettingsHandler" REQUIRES ${components})

if(TARGET SettingsHandlerTesting)
  settings_handler_install_headers(development testing/include/)
  install(TARGETS SettingsHandlerTesting SettingsHandlerTestingPlatform EXPORT SettingsHandlerTestingTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${header_folder})
  install(EXPORT SettingsHandlerTestingTargets NAMESPACE SettingsHandler:: DESTINATION ${package_folder} COMPONENT development)
  settings_handler_install_pkg_config(development SettingsHandlerTesting
    DESCRIPTION "Doubles of what SettingsHandler works with" REQUIRES "RapidJSON, gmock")
  settings_handler_install_pkg_config(development SettingsHandlerTestingPlatform
    DESCRIPTION "Doubles of the reference components of SettingsHandler" REQUIRES SettingsHandlerTesting
    LIBS -lSettingsHandlerTestingPlatform)
endif()

# The client library. It needs neither the library nor its headers.
if(SETTINGS_HANDLER_CLIENT)
  settings_handler_install_headers(development clients/connection/include/)
  install(TARGETS SettingsHandlerClient EXPORT SettingsHandlerClientTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${header_folder})
  install(EXPORT SettingsHandlerClientTargets NAMESPACE SettingsHandler:: DESTINATION ${package_folder} COMPONENT development)
  settings_handler_install_pkg_config(development SettingsHandlerClient
    DESCRIPTION "Client of a host of SettingsHandler" LIBS -lSettingsHandlerClient)
endif()

# The kit. Each archive names what it needs, so that nobody has to ask for what static libraries need.
if(SETTINGS_HANDLER_KIT)
  settings_handler_install_headers(kit kit/include/)
  if(TARGET SettingsHandlerTesting)
    settings_handler_install_headers(kit testing/kit/include/)
  endif()
  foreach(archive Wire KitService KitHandler KitStorage KitServer)
    set(target SettingsHandler${archive})
    get_target_property(requires ${target} SETTINGS_HANDLER_REQUIRES)
    install(TARGETS ${target} EXPORT SettingsHandlerKitTargets
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kit
      INCLUDES DESTINATION ${header_folder})
    list(JOIN requires ", " requires)
    get_target_property(libraries ${target} SETTINGS_HANDLER_LIBRARIES)
    list(TRANSFORM libraries PREPEND -l)
    list(JOIN libraries " " libraries)
    settings_handler_install_pkg_config(kit ${target}
      DESCRIPTION "Component for services around SettingsHandler: ${archive}" REQUIRES "${requires}" LIBS "-l${target} ${libraries}")
  endforeach()
  install(EXPORT SettingsHandlerKitTargets NAMESPACE SettingsHandler:: DESTINATION ${package_folder} COMPONENT kit)
endif()

if(SETTINGS_HANDLER_HOST)
  include(cmake/InstallPrograms.cmake)
endif()
