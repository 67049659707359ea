#!/usr/bin/env bash
# Runs a Windows program of the build under Wine, in a prefix of the build tree's own.
#
#   run_under_wine.sh PROGRAM.exe [ARGUMENT...]
#
# WINEPREFIX and DISPLAY are taken from the environment if they are set there (scripts/test does so). Without a
# display there are no windows, and the tests of windows say so.
set -euo pipefail

command -v wine >/dev/null || { echo "run_under_wine: wine is missing; run: scripts/install windows" >&2; exit 127; }
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/windows/wineprefix}
export WINEDEBUG=${WINEDEBUG:--all}
# Neither of the two is needed, and both would ask the user for a download.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree=;mshtml=}
# To a Windows program, a path that begins with a slash is relative: GoogleTest would write the results elsewhere.
[[ ${GTEST_OUTPUT:-} != xml:/* ]] || export GTEST_OUTPUT=xml:Z:${GTEST_OUTPUT#xml:}
mkdir -p "$(dirname "$WINEPREFIX")"
[[ -f $WINEPREFIX/system.reg ]] || echo "run_under_wine: making a Wine prefix in $WINEPREFIX" >&2
exec wine "$@"
