# Sourced by the scripts that build marrowctl: the library that draws the charts of its page comes from npm.

# charts_options: what CMake is to be told.
charts_options=(-DMARROWBENCH_CHARTS=OFF)

# make_charts: fetches the library into build/charts, once for all builds. Fails where it can't be had, and says why.
make_charts() {
  # The archive of the sources holds it.
  [ -f packaging/charts/charts.js ] || install_npm
  # A registry that does not answer must not take the time of all tests.
  cmake -DFOLDER="$PWD/build/charts" -DSECONDS=300 -P cmake/make_charts.cmake || return
  charts_options=(-DMARROWBENCH_CHARTS=ON "-DMARROWBENCH_CHARTS_BUNDLE=$PWD/build/charts/charts.js")
}
