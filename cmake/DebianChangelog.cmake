# The version is written once: in the newest entry of debian/changelog, where the package build
# reads it. Sets VEXET_CHANGELOG_VERSION (X.Y.Z, for project()) and VEXET_RELEASE_DATE (the
# entry's date as YYYY-MM-DD, for the manual pages and the metainfo).
set(vexet_changelog ${CMAKE_CURRENT_LIST_DIR}/../debian/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${vexet_changelog})

file(STRINGS ${vexet_changelog} vexet_changelog_top LIMIT_COUNT 1)
if(NOT vexet_changelog_top MATCHES "^vexet \\(([0-9]+\\.[0-9]+\\.[0-9]+)(-[^)]+)?\\) ")
    message(FATAL_ERROR "debian/changelog does not begin with \"vexet (X.Y.Z) …\": ${vexet_changelog_top}")
endif()
set(VEXET_CHANGELOG_VERSION ${CMAKE_MATCH_1})

# The entry's trailer line: " -- NAME <ADDRESS>  Tue, 24 Nov 2026 00:50:00 +0000".
file(STRINGS ${vexet_changelog} vexet_changelog_trailer REGEX "^ -- " LIMIT_COUNT 1)
if(NOT vexet_changelog_trailer MATCHES ">  [A-Z][a-z][a-z], ([0-9]+) ([A-Z][a-z][a-z]) ([0-9][0-9][0-9][0-9]) ")
    message(FATAL_ERROR "debian/changelog: no date in the newest entry's trailer: ${vexet_changelog_trailer}")
endif()
set(vexet_day ${CMAKE_MATCH_1})
set(vexet_year ${CMAKE_MATCH_3})
set(vexet_months Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
list(FIND vexet_months ${CMAKE_MATCH_2} vexet_month)
math(EXPR vexet_month "${vexet_month} + 1")
if(vexet_month EQUAL 0)
    message(FATAL_ERROR "debian/changelog: an unknown month in ${vexet_changelog_trailer}")
endif()
math(EXPR vexet_month "100 + ${vexet_month}")
math(EXPR vexet_day "100 + ${vexet_day}")
string(SUBSTRING ${vexet_month} 1 2 vexet_month)
string(SUBSTRING ${vexet_day} 1 2 vexet_day)
set(VEXET_RELEASE_DATE ${vexet_year}-${vexet_month}-${vexet_day})
