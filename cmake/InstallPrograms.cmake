# The host with its pages and units, the client, and the bridges.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE libraries_from_programs)
set_target_properties(settings-host PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_from_programs})
install(TARGETS settings-host RUNTIME COMPONENT host)
install(TARGETS settingsctl RUNTIME COMPONENT settingsctl)
install(FILES packaging/man/settings-host.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT host)
install(FILES packaging/man/settingsctl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT settingsctl)

install(FILES clients/settingsctl/completion/settingsctl.bash RENAME settingsctl
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT settingsctl)
install(FILES clients/settingsctl/completion/_settingsctl
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT settingsctl)

# The pages are built by scripts/build-pages, not by this build, so whether there are any shows now only.
set(pages_folder ${CMAKE_INSTALL_DATADIR}/settings-host/pages)
install(CODE "
  if(NOT EXISTS ${PROJECT_SOURCE_DIR}/pages/dist/index.html)
    message(WARNING \"The settings pages are not built, so the host is installed without them. Run scripts/build-pages and install again.\")
  endif()" COMPONENT host)
install(DIRECTORY pages/dist/ DESTINATION ${pages_folder} COMPONENT host OPTIONAL)
install(DIRECTORY host/scenarios DESTINATION ${CMAKE_INSTALL_DATADIR}/settings-host COMPONENT host)

install(DIRECTORY packaging/systemd/ DESTINATION lib/systemd/system COMPONENT host
  FILES_MATCHING PATTERN "*.socket" PATTERN "*.d" EXCLUDE)
install(FILES packaging/systemd/sysusers.d/settings-host.conf DESTINATION lib/sysusers.d COMPONENT host)
install(FILES packaging/systemd/tmpfiles.d/settings-host.conf DESTINATION lib/tmpfiles.d COMPONENT host)
# Installs a file that names programs where a package puts them; here that is wherever the prefix is, which is known now only.
function(install_with_prefix component source destination)
  install(CODE "
    file(READ ${PROJECT_SOURCE_DIR}/packaging/${source} text)
    string(REPLACE /usr/bin/ \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\" text \"\${text}\")
    message(STATUS \"Installing: \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}\")
    file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}\" \"\${text}\")
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${CMAKE_INSTALL_PREFIX}/${destination}\")" COMPONENT ${component})
endfunction()
install_with_prefix(host systemd/settings-host.service lib/systemd/system/settings-host.service)

# A bridge. Its options are completed as --help lists them.
function(install_bridge component name)
  install(TARGETS ${name} RUNTIME COMPONENT ${component})
  install(FILES packaging/man/${name}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  install(FILES packaging/systemd/sysusers.d/${name}.conf DESTINATION lib/sysusers.d COMPONENT ${component})
  install_with_prefix(${component} systemd/${name}.service lib/systemd/system/${name}.service)
  file(CONFIGURE OUTPUT completion/${name} CONTENT "complete -F _longopt ${name}\n")
  file(CONFIGURE OUTPUT completion/_${name} CONTENT "#compdef ${name}\n_gnu_generic\n")
  install(FILES ${PROJECT_BINARY_DIR}/completion/${name}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/completion/_${name} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT ${component})
endfunction()
if(TARGET settings-dbus)
  install_bridge(dbus settings-dbus)
  set(bus_name org.settingshandler.Settings1)
  install(FILES packaging/dbus/${bus_name}.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT dbus)
  install_with_prefix(dbus dbus/${bus_name}.service ${CMAKE_INSTALL_DATADIR}/dbus-1/system-services/${bus_name}.service)
endif()
if(TARGET settings-mqtt)
  install_bridge(mqtt settings-mqtt)
endif()
