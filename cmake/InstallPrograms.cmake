# The host with its pages and units, and the client.
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

install(DIRECTORY packaging/systemd/ DESTINATION lib/systemd/system COMPONENT host
  FILES_MATCHING PATTERN "*.socket" PATTERN "*.d" EXCLUDE)
install(DIRECTORY packaging/systemd/sysusers.d packaging/systemd/tmpfiles.d DESTINATION lib COMPONENT host)
# The unit names the program where a package puts it; here that is wherever the prefix is, which is known now only.
install(CODE "
  set(unit lib/systemd/system/settings-host.service)
  file(READ ${PROJECT_SOURCE_DIR}/packaging/systemd/settings-host.service text)
  string(REPLACE /usr/bin/ \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\" text \"\${text}\")
  message(STATUS \"Installing: \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/\${unit}\")
  file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/\${unit}\" \"\${text}\")
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${CMAKE_INSTALL_PREFIX}/\${unit}\")" COMPONENT host)
