# Sourced by scripts that need Linux: ends those on another system.
if [ "$(uname)" != Linux ]; then
  echo "$0: left out, needs Linux" >&2
  exit 77
fi
