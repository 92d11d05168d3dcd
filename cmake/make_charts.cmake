# Makes charts.js and charts-licences.txt of what npm fetches; at once where they are made of the same already:
#
#   cmake -DFOLDER=... [-DNPM=...] [-DSECONDS=...] -P make_charts.cmake
#
# SECONDS: how long fetching and bundling may each take.
get_filename_component(sources ${CMAKE_CURRENT_LIST_DIR}/../packaging/charts ABSOLUTE)
set(inputs package.json package-lock.json charts.mjs build.mjs)
set(results charts.js charts-licences.txt)
if(NOT NPM)
  set(NPM npm)
endif()
if(SECONDS)
  set(limit TIMEOUT ${SECONDS})
endif()

# The archive of the sources has them ready.
if(EXISTS ${sources}/charts.js)
  list(TRANSFORM results PREPEND ${sources}/)
  file(COPY ${results} DESTINATION ${FOLDER})
  return()
endif()

list(TRANSFORM results PREPEND ${FOLDER}/)
set(made_of "")
set(looks_old OFF)
foreach(input IN LISTS inputs)
  if(${sources}/${input} IS_NEWER_THAN ${FOLDER}/charts.js)
    set(looks_old ON)
  endif()
  file(SHA256 ${sources}/${input} hash)
  string(APPEND made_of "${hash} ${input}\n")
  file(COPY ${sources}/${input} DESTINATION ${FOLDER})
endforeach()
set(record ${FOLDER}/made-of.txt)
if(EXISTS ${record})
  file(READ ${record} recorded)
  if(recorded STREQUAL made_of)
    if(looks_old)
      file(TOUCH ${results})
    endif()
    return()
  endif()
  file(REMOVE ${record})
endif()

# run(COMMAND...): in FOLDER
function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${FOLDER} ${limit} RESULT_VARIABLE status
    OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${output}\n${status}\nThe chart library could not be made, which takes npm and, once, a network. "
      "To go on, set MARROWBENCH_CHARTS_BUNDLE to a charts.js made elsewhere, or MARROWBENCH_CHARTS=OFF.")
  endif()
endfunction()

# No script of a package is run: none is needed.
run(${NPM} ci --ignore-scripts --prefer-offline --no-audit --no-fund --loglevel=error)
run(${NPM} run --silent bundle)
file(REMOVE_RECURSE ${FOLDER}/node_modules)
file(WRITE ${record} "${made_of}")
