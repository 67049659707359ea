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

xvfb=
end_display() {
  [[ -z ${WINEPREFIX:-} ]] || wineserver -k 2>/dev/null || true
  [[ -z $xvfb ]] || kill "$xvfb" 2>/dev/null || true
}
# A prefix and a screen of our own: what is tested or measured neither needs nor touches the user's.
prepare_wine() {
  trap end_display EXIT
  export WINEPREFIX=$root/build/windows/wineprefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
  local number
  exec 7< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>/dev/null)
  xvfb=$!
  read -r number <&7 || die 1 "Xvfb didn't start"
  export DISPLAY=:$number
  if [[ ! -f $WINEPREFIX/system.reg ]]; then
    say "windows: making a Wine prefix"
    wineboot -i >/dev/null 2>&1 || die 1 "wineboot failed"
    wineserver -w
  fi
  # Wine's own services start with its first program and hold on to that one's output; not to a test's, so.
  wineserver -p
  wine explorer.exe /desktop=root >/dev/null 2>&1 </dev/null &
  wine cmd.exe /c exit >/dev/null 2>&1 </dev/null || die 1 "wine doesn't run"
}
