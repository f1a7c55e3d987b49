# Builds GoogleTest together with the project, for targets that no package of it is made for.
# Give this file as CMAKE_PROJECT_SettingsHandler_INCLUDE, and the sources as SETTINGS_HANDLER_GOOGLETEST_SOURCE.
set(SETTINGS_HANDLER_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest; Debian's package googletest has them here")
if(NOT EXISTS ${SETTINGS_HANDLER_GOOGLETEST_SOURCE}/CMakeLists.txt)
  message(FATAL_ERROR "There is no GoogleTest in ${SETTINGS_HANDLER_GOOGLETEST_SOURCE}. `scripts/install-packages target` installs it; "
          "another place is named by SETTINGS_HANDLER_GOOGLETEST_SOURCE.")
endif()

set(INSTALL_GTEST OFF)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_SUPPRESS_DEVELOPER_WARNINGS ON)
add_subdirectory(${SETTINGS_HANDLER_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
# What is installed refers to a package of GoogleTest, which this is not.
set(SETTINGS_HANDLER_INSTALL OFF)

# What find_package(GTest) finds from now on.
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/GTestConfig.cmake "set(GTest_FOUND TRUE)\n")
