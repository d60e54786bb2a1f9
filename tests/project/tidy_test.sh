# clang-tidy finds nothing in the files of a folder. Usage: tidy_test.sh SOURCE_FOLDER DATABASE_FOLDER FOLDER
set -eu
cd "$1"
status=0
for file in "$3"/*.cpp; do # a process each: what one file leaves behind makes this clang-tidy see faults in the next
    echo "$file"
    clang-tidy --quiet -p "$2" "$PWD/$file" || status=1
done
exit "$status"
