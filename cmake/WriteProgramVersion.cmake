# Writes SOURCE, unless it says the same already. FOLDER counts as a repository only if it is one itself: an unpacked
# archive may lie in somebody else's.
set(origin "unknown commit")
if(COMMIT)
  set(origin "commit ${COMMIT}")
elseif(EXISTS ${FOLDER}/.git)
  find_program(GIT git)
  if(GIT)
    execute_process(COMMAND ${GIT} describe --always --abbrev=7 --exclude=* "--dirty=, with changes"
      WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE description OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failure)
    if(NOT failure)
      set(origin "commit ${description}")
    endif()
  endif()
endif()
file(CONFIGURE OUTPUT ${SOURCE} @ONLY CONTENT [[
namespace @NAMESPACE@ {

const char* versionText();

const char* versionText() {
    return "@PROGRAM@ @VERSION@ (@origin@)";
}

}  // namespace @NAMESPACE@
]])
