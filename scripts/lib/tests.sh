# Sourced by the scripts that run the tests of a build.

# run_tests FOLDER [CTEST ARGUMENT...]: runs them, shows their figures, and names those that this machine
# left out, with the reason: ctest itself shows neither of tests that passed.
# Eight at a time on two processors: many wait, for a minute to begin or for a lock.
run_tests() {
  ctest --test-dir "$1" --no-tests=error --output-on-failure -j 8 "${@:2}"
  grep -hE '^(FIGURE|SKIPPED) ' "$1/Testing/Temporary/LastTest.log" || true
}
