# How each file is compiled for itself, for clang-tidy: nothing joined, and nothing that the compiler has precompiled.
# Usage: tidy_database.sh SOURCE_FOLDER DATABASE_FOLDER
set -eu
cmake -G Ninja -S "$1" -B "$2" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_BUILD_TYPE=Release -DQVP_JOIN_FOLDERS=OFF
sed -i 's/ -Winvalid-pch//; s/ -include [^ ]*cmake_pch.hxx//' "$2/compile_commands.json"
