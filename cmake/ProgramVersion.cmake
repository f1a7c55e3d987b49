set(SETTINGS_HANDLER_COMMIT "" CACHE STRING "The commit that the programs name, for builds without a repository")
mark_as_advanced(SETTINGS_HANDLER_COMMIT)
set(WRITE_PROGRAM_VERSION ${CMAKE_CURRENT_LIST_DIR}/WriteProgramVersion.cmake)

# Gives `target` a source with what `--version` of `program` prints: `const char* versionText()` in `namespace`. Every build looks at the commit; the source is touched when the text changes only.
function(add_program_version target program namespace)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.cpp)
  add_custom_target(${target}_version
    COMMAND ${CMAKE_COMMAND} -D SOURCE=${source} -D FOLDER=${PROJECT_SOURCE_DIR} -D PROGRAM=${program}
            -D VERSION=${PROJECT_VERSION} -D NAMESPACE=${namespace} -D COMMIT=${SETTINGS_HANDLER_COMMIT}
            -P ${WRITE_PROGRAM_VERSION}
    BYPRODUCTS ${source}
    COMMENT "Version of ${program}" VERBATIM)
  target_sources(${target} PRIVATE ${source})
  add_dependencies(${target} ${target}_version)
endfunction()
