# Makes charts.js and charts-licences.txt of what npm fetches:
#
#   cmake -DFOLDER=... [-DNPM=...] -P make_charts.cmake
get_filename_component(sources ${CMAKE_CURRENT_LIST_DIR}/../packaging/charts ABSOLUTE)
if(NOT NPM)
  set(NPM npm)
endif()
file(COPY ${sources}/package.json ${sources}/package-lock.json ${sources}/charts.mjs ${sources}/build.mjs
  DESTINATION ${FOLDER})

# run(COMMAND...): in FOLDER
function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${FOLDER} RESULT_VARIABLE status
    OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${output}\nThe chart library could not be made, which takes npm and, once, a network. "
      "To go on, set MARROWBENCH_CHARTS_BUNDLE to a charts.js made elsewhere, or MARROWBENCH_CHARTS=OFF.")
  endif()
endfunction()

# No script of a package is run: none is needed.
run(${NPM} ci --ignore-scripts --prefer-offline --no-audit --no-fund --loglevel=error)
run(${NPM} run --silent bundle)
file(REMOVE_RECURSE ${FOLDER}/node_modules)
