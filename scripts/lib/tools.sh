# Sourced by the scripts: installs what is missing.

# install_missing "DEBIAN PACKAGES" "HOMEBREW FORMULAE"
install_missing() {
  if [ "$(uname)" = Darwin ]; then
    install_with_brew $2
  elif command -v apt-get >/dev/null; then
    install_with_apt $1
  else
    echo "This system has no apt-get; please install yourself: $1" >&2
  fi
}

install_with_brew() {
  local formula missing=()
  xcode-select -p >/dev/null 2>&1 || { echo "Please run: xcode-select --install" >&2; exit 1; }
  for formula in "$@"; do
    brew list --formula "$formula" >/dev/null 2>&1 || missing+=("$formula")
  done
  [ ${#missing[@]} -eq 0 ] || brew install "${missing[@]}"
}

install_with_apt() {
  local package missing=() sudo=
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ "$(id -u)" = 0 ] || sudo=sudo
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# npm may have come with node, as no package.
install_npm() {
  command -v npm >/dev/null || install_missing npm node
}

# Only marrowctl needs these.
LIBRARY_PACKAGES="libcli11-dev nlohmann-json3-dev libfmt-dev"
LIBRARY_FORMULAE="cli11 nlohmann-json fmt"
BUILD_PACKAGES="g++ cmake ninja-build $LIBRARY_PACKAGES"
BUILD_FORMULAE="cmake ninja $LIBRARY_FORMULAE"
BENCH_PACKAGES="$BUILD_PACKAGES libbenchmark-dev python3 fio time datamash miller"
BENCH_FORMULAE="$BUILD_FORMULAE google-benchmark fio datamash miller"
TEST_PACKAGES="$BUILD_PACKAGES libgtest-dev libbenchmark-dev python3-pytest python3-fusepy
  python3-jsonschema strace valgrind util-linux mandoc"
TEST_FORMULAE="$BUILD_FORMULAE googletest google-benchmark pytest"
# The page of charts is looked at in it. It is larger than all the others together.
BROWSER_PACKAGES="chromium"
ALL_PACKAGES="$TEST_PACKAGES googletest clang-14 libc++-14-dev libc++abi-14-dev libclang-rt-14-dev
  lld-14 clang-format-14 clang-tidy-14 zsh fish e2fsprogs
  xfsprogs btrfs-progs clustershell pdsh parallel ansible-core python3-yaml python3-kubernetes"
