# What the scripts share. Sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

say() { echo "== $*"; }

die() { # status, text
  echo "$(basename "$0"): $2" >&2
  exit "$1"
}

# The presets that a script may be given, in the order in which they run.
known_presets="native asan tsan windows"

check_presets() {
  local preset
  for preset in "$@"; do
    [[ " $known_presets " == *" $preset "* ]] || die 2 "unknown preset '$preset'; there are: $known_presets"
  done
}
