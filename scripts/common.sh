# shellcheck shell=bash
# What the scripts here share. Source it; it sets ROOT and gives the functions below.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

ALL_PRESETS=(native asan tsan fuzz windows bench)

# Says why on standard error and ends the script. fail STATUS TEXT
fail() {
  echo "$(basename "$0"): $2" >&2
  exit "$1"
}

# Ends the script with status 2 unless each name is a preset's. require_presets NAME...
require_presets() {
  local name
  for name in "$@"; do
    [[ " ${ALL_PRESETS[*]} " == *" $name "* ]] ||
      fail 2 "unknown preset '$name'; there are: ${ALL_PRESETS[*]}"
    grep -q "\"name\": \"$name\"" "$ROOT/CMakePresets.json" || fail 2 "preset '$name' isn't in CMakePresets.json"
  done
}

# The packages that a preset needs, one a line. packages_of PRESET
packages_of() {
  local -a names=(g++ cmake ninja-build googletest libgtest-dev libgmock-dev
    libasio-dev libcli11-dev nlohmann-json3-dev libdxflib-dev)
  case $1 in
    # The sanitizers' reports name functions only with llvm-symbolizer there.
    asan | tsan | fuzz) names+=(clang libclang-rt-dev llvm) ;;
    windows) names+=(g++-mingw-w64-x86-64-posix wine wine64 xvfb xauth xz-utils) ;;
    bench) names+=(libbenchmark-dev libspdlog-dev libinih-dev libglm-dev valgrind) ;;
  esac
  printf '%s\n' "${names[@]}"
}

# Of the packages named, those that aren't installed.
missing_packages() {
  local name
  for name in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || echo "$name"
  done
}

# Runs a command as root.
as_root() {
  if ((EUID == 0)); then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    fail 1 "installing packages needs root or sudo"
  fi
}
