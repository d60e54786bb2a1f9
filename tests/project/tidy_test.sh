# clang-tidy finds nothing in the daemon, the reference platform and the tool. Usage: tidy_test.sh SOURCE_FOLDER BUILD_FOLDER
set -eu
cd "$1"
run-clang-tidy -quiet -p "$2" -j "$(nproc)" "^$PWD/(src|platform|qvpctl)/"
