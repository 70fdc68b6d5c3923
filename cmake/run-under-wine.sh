#!/bin/sh
# Runs a Windows program with its output in a file: the services and programs that it starts outlive
# it and would hold a pipe open for ever.
output=$(mktemp)
wine "$@" >"$output" 2>&1 </dev/null
status=$?
cat "$output"
rm -f "$output"
exit $status
