#!/bin/sh
# Runs a Windows program under Wine, with the prefix of the build tree that the program lies in.
#
#   run_under_wine.sh PROGRAM [ARGUMENT...]
#
# WINEPREFIX, if set, names another prefix. One must be there: Wine would make one quietly, in the middle of a test.
set -eu

fail() {
  echo "run_under_wine.sh: $1" >&2
  exit 127
}

[ $# -gt 0 ] || fail "no program given"
[ -f "$1" ] || fail "no program at $1"
command -v wine >/dev/null || fail "Wine isn't installed; scripts/install windows does it"

if [ -z "${WINEPREFIX:-}" ]; then
  folder=$(cd "$(dirname "$1")" && pwd)
  while [ "$folder" != / ] && [ ! -d "$folder/wineprefix" ]; do
    folder=$(dirname "$folder")
  done
  [ -d "$folder/wineprefix" ] ||
    fail "no Wine prefix in the build tree of $1; scripts/test windows makes one"
  WINEPREFIX=$folder/wineprefix
fi
[ -f "$WINEPREFIX/system.reg" ] || fail "$WINEPREFIX is no Wine prefix; scripts/test windows makes one"

export WINEPREFIX
export WINEDEBUG="${WINEDEBUG:--all}"
exec wine "$@"
