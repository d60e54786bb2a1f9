# Every C and C++ file stands as clang-format lays it out. Usage: format_test.sh SOURCE_FOLDER
set -eu
cd "$1"
find protocol src platform client qvpctl virtual-camera bench tests -name '*.h' -o -name '*.cpp' -o -name '*.c' | sort >"${TMPDIR:-/tmp}/format.$$"
trap 'rm -f "${TMPDIR:-/tmp}/format.$$"' EXIT
echo "$(wc -l <"${TMPDIR:-/tmp}/format.$$") files"
xargs clang-format --dry-run --Werror <"${TMPDIR:-/tmp}/format.$$"
