# The Debian packages. scripts/make-packages makes them; packaging/debian/Stage.cmake adds what only they have.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME settings-handler)
# Otherwise the first line of every package's description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VENDOR "Settings handler developers")
set(CPACK_PACKAGE_CONTACT "Settings handler developers <settings-handler@example.org>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_COMPONENTS_ALL library development kit host settingsctl)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
# Installed with the true prefix below a folder, as every other packager does it.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Headers and archives: to look at each would take most of the time.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_KIT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/SettingsHandler ${PROJECT_BINARY_DIR}/platform)

set(this_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libsettingshandler${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/library/triggers ${PROJECT_BINARY_DIR}/debian/shlibs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "settings of a voice assistant on a television-class device
The library owns the assistant's settings: device and friendly name, locale,
time zone, captions, do-not-disturb, hands-free and the always-on modes,
entitlement status. It answers the requests of settings pages, tells pages
and observers of every change, and takes the device's notifications.

With it come the reference components that a program may replace by its own:
logger, utilities, metrics cache and application table.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsettingshandler-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${this_version}), rapidjson-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake | pkg-config, libgmock-dev, settings-host")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "settings of a voice assistant - development files
The headers of the library that owns a voice assistant's settings and of
everything that it works with, for CMake and for pkg-config.

For tests there are doubles of all that the library works with; they need
GoogleMock. Programs that talk to a service have a client library.")

set(CPACK_DEBIAN_KIT_PACKAGE_NAME libsettingshandlerkit-dev)
set(CPACK_DEBIAN_KIT_PACKAGE_SECTION libdevel)
# The last ones are what the archives are linked with, see kit/CMakeLists.txt; no header of theirs is needed.
string(CONCAT CPACK_DEBIAN_KIT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME} (= ${this_version}), "
  "libseccomp-dev, libsqlite3-dev, libssl-dev, libuv1-dev, libwslay-dev, prometheus-cpp-dev")
set(CPACK_DEBIAN_KIT_PACKAGE_SUGGESTS "settingsctl, settings-host")
set(CPACK_DEBIAN_KIT_DESCRIPTION "settings of a voice assistant - components for services
Static libraries for a service around the library that owns a voice
assistant's settings: a handler that no request can crash, an SQLite storage
with recovery and backups, a server for Unix sockets, WebSocket and settings
pages, logging and a sandbox. A service adds its voice SDK and its device.")

set(CPACK_DEBIAN_HOST_PACKAGE_NAME settings-host)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION utils)
string(CONCAT CPACK_DEBIAN_HOST_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (>= ${PROJECT_VERSION}), "
  "systemd-standalone-sysusers | systemd-sysusers, systemd-standalone-tmpfiles | systemd-tmpfiles")
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS settingsctl)
set(CPACK_DEBIAN_HOST_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/host/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/host/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/host/postrm)
set(CPACK_DEBIAN_HOST_DESCRIPTION "settings of a voice assistant - reference host and pages
A service around the library that owns a voice assistant's settings, with a
database, a simulated device, Unix sockets for clients and a port for settings
pages in a browser. It is for those who develop settings pages or programs
that use the library, and for their tests.

It comes with units for systemd and is not started unless asked to.")

set(CPACK_DEBIAN_SETTINGSCTL_PACKAGE_NAME settingsctl)
set(CPACK_DEBIAN_SETTINGSCTL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_SETTINGSCTL_PACKAGE_SUGGESTS settings-host)
set(CPACK_DEBIAN_SETTINGSCTL_DESCRIPTION "settings of a voice assistant - command-line client
Reads, sets and watches the settings of a voice assistant at the sockets of
settings-host, and drives its simulated device. Keys and known values are
completed in bash and zsh.")

# The package of a bridge. Variables of packages must be set where this file is, hence a macro.
set(bridge_packages "")
macro(package_bridge component name)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(APPEND bridge_packages " ${component}=${name}")
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "systemd-standalone-sysusers | systemd-sysusers")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SUGGESTS "settings-host, settingsctl")
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "")
  # Arguments of a macro are no variables, which the scripts need.
  set(bridge ${name})
  foreach(script postinst prerm postrm)
    configure_file(packaging/debian/bridge/${script}.in debian/${name}/${script} @ONLY)
    list(APPEND CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/${name}/${script})
  endforeach()
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${ARGN}")
endmacro()
if(TARGET settings-dbus)
  package_bridge(dbus settings-dbus "settings of a voice assistant - on D-Bus
Serves the settings of settings-host, or of another service with its wire, on
the system bus, as properties and signals. Members of the group settings-host
change settings, everybody reads those that are not personal.")
  set(CPACK_DEBIAN_DBUS_PACKAGE_DEPENDS "${CPACK_DEBIAN_DBUS_PACKAGE_DEPENDS}, dbus")
endif()
if(TARGET settings-mqtt)
  package_bridge(mqtt settings-mqtt "settings of a voice assistant - on MQTT
Publishes the settings of settings-host, or of another service with its wire,
at an MQTT broker, and carries out commands for one device, for groups and for
all. Operators of many devices and Home Assistant use it. Personal settings
are not offered unless asked for.")
endif()

# Packages that are built with the library will depend on this version of it, or a newer one.
set(shlibs "")
foreach(library SettingsHandler SettingsHandlerVessaLogger SettingsHandlerUtils SettingsHandlerMetrics SettingsHandlerDeviceAbstractionLayer)
  string(APPEND shlibs "lib${library} ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
endforeach()
file(CONFIGURE OUTPUT debian/shlibs CONTENT "${shlibs}")
configure_file(packaging/debian/changelog.in debian/changelog @ONLY)
configure_file(packaging/debian/Stage.cmake.in debian/Stage.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/debian/Stage.cmake)
include(CPack)
