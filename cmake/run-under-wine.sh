#!/bin/sh
# Runs a Windows program with its output in a file: the services and programs that it starts outlive
# it and would hold a pipe open for ever. The file has no name any more, so that none is ever left.
#
# Tests empty folders of the Windows that they run in: never in one that is not named for them.
export WINEPREFIX="${CAIXORA_WINEPREFIX:?execute os testes com scripts/test.sh}"
output=$(mktemp) || exit
exec 3>"$output" 4<"$output"
rm "$output"
wine "$@" >&3 2>&1 </dev/null 3>&- 4<&-
status=$?
cat <&4
exit $status
