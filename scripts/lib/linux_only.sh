# Sourced by scripts that need Linux: ends those on another system.
if [ "$(uname)" != Linux ]; then
  echo "$0: skipped, needs Linux"
  exit 0
fi
