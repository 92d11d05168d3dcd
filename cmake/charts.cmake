# The chart library inside marrowctl's page, one file: charts_bundle, or empty where there is none.

set(MARROWBENCH_CHARTS AUTO CACHE STRING
    "marrowctl writes pages with charts: AUTO, where npm is found; ON, without it an error; OFF")
set_property(CACHE MARROWBENCH_CHARTS PROPERTY STRINGS AUTO ON OFF)
set(charts_sources ${PROJECT_SOURCE_DIR}/packaging/charts)
set(ready_bundle "")
if(EXISTS ${charts_sources}/charts.js)  # as the archive of the sources has it
  set(ready_bundle ${charts_sources}/charts.js)
endif()
set(MARROWBENCH_CHARTS_BUNDLE "${ready_bundle}" CACHE FILEPATH
    "The chart library, made elsewhere by packaging/charts/build.mjs; empty: made by npm")

set(charts_bundle "")
if(NOT MARROWBENCH_CHARTS STREQUAL AUTO AND NOT MARROWBENCH_CHARTS)
  return()
endif()
if(MARROWBENCH_CHARTS_BUNDLE)
  if(NOT EXISTS ${MARROWBENCH_CHARTS_BUNDLE})
    message(FATAL_ERROR "MARROWBENCH_CHARTS_BUNDLE is missing: ${MARROWBENCH_CHARTS_BUNDLE}")
  endif()
  set(charts_bundle ${MARROWBENCH_CHARTS_BUNDLE})
  return()
endif()

find_program(MARROWBENCH_NPM npm)
if(NOT MARROWBENCH_NPM)
  string(CONCAT how_to_go_on "install npm (Debian) or node (Homebrew), or set MARROWBENCH_CHARTS_BUNDLE "
    "to a charts.js made elsewhere, or MARROWBENCH_CHARTS=OFF to do without")
  if(MARROWBENCH_CHARTS STREQUAL AUTO)
    message(NOTICE "Left out: the page of marrowctl report --html. Its charts need npm: ${how_to_go_on}.")
    return()
  endif()
  message(FATAL_ERROR "The charts of marrowctl report --html need npm: ${how_to_go_on}")
endif()

set(charts_folder ${PROJECT_BINARY_DIR}/charts)
set(charts_bundle ${charts_folder}/charts.js)
set(charts_inputs package.json package-lock.json charts.mjs build.mjs)
list(TRANSFORM charts_inputs PREPEND ${charts_sources}/)
add_custom_command(OUTPUT ${charts_bundle} ${charts_folder}/charts-licences.txt
  COMMAND ${CMAKE_COMMAND} -DNPM=${MARROWBENCH_NPM} -DFOLDER=${charts_folder}
    -P ${PROJECT_SOURCE_DIR}/cmake/make_charts.cmake
  DEPENDS ${charts_inputs} ${PROJECT_SOURCE_DIR}/cmake/make_charts.cmake
  COMMENT "Fetching and bundling the chart library" VERBATIM)
add_custom_target(charts DEPENDS ${charts_bundle})
