# The version and its day stand in one place, the first heading of CHANGELOG.md: "## 1.2.3 (2026-01-31)".
# Sets ZIB_VERSION, ZIB_RELEASE_DATE and ZIB_RELEASE_NOTES, the list under that heading.
set(changes ${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changes})
file(READ ${changes} text)
if(NOT text MATCHES "\n## ([0-9]+\\.[0-9]+\\.[0-9]+) \\(([0-9-]+)\\)\n\n(.*)")
    message(FATAL_ERROR "CHANGELOG.md has no heading like \"## 1.2.3 (2026-01-31)\".")
endif()
set(ZIB_VERSION ${CMAKE_MATCH_1})
set(ZIB_RELEASE_DATE ${CMAKE_MATCH_2})
string(REGEX REPLACE "\n## .*" "" ZIB_RELEASE_NOTES "${CMAKE_MATCH_3}")
string(STRIP "${ZIB_RELEASE_NOTES}" ZIB_RELEASE_NOTES)

# What the about window shows is a constant of the sources, so that a new release does not compile everything anew in
# daily work; a build with two numbers is refused.
file(READ ${CMAKE_CURRENT_LIST_DIR}/../src/common/Texts.h text)
string(REGEX MATCH "kVersionMajor = ([0-9]+);.*kVersionMinor = ([0-9]+);.*kVersionRevision = ([0-9]+);" found "${text}")
if(NOT ZIB_VERSION STREQUAL "${CMAKE_MATCH_1}.${CMAKE_MATCH_2}.${CMAKE_MATCH_3}")
    message(FATAL_ERROR "CHANGELOG.md and src/common/Texts.h name different releases.")
endif()
