# shellcheck finds nothing in the scripts. Usage: shellcheck_test.sh SOURCE_FOLDER
set -eu
cd "$1"
grep -rlIE --exclude-dir=build --exclude-dir=.git '^#!/bin/(ba)?sh|^# shellcheck shell=' . | xargs shellcheck
